#include "Transfer.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Plan.h"
#include "Scene.h"
#include "Text.h"

#include <algorithm>

namespace client
{
namespace
{

// The document of a behavior; empty if the profile has none. The service says of a profile without any
// behavior that it doesn't know the behavior.
std::string DocumentOf(Service& service, int profile, const std::string& id)
{
    try
    {
        return service.ProfileBehavior(profile, id);
    }
    catch (const Failure& failure)
    {
        if (failure.Code() != Exit::Refused)
            throw;
        service.DefaultBehavior(id); // throws as well if the behavior is unknown indeed
        return "";
    }
}

void Note(Stored& stored, std::vector<Change> changes, const std::string& document)
{
    for (Change& change : changes)
    {
        change.node = document + ": " + change.node;
        stored.changes.push_back(std::move(change));
    }
}

// What came back different. Behaviors share analytics engines, so that a later one may have changed an
// earlier one: they are compared once all are stored.
void NoteChanges(const ProfileDocuments& sent, const ProfileDocuments& found, Stored& stored)
{
    if (sent.scene && found.scene)
    {
        const Source renamed = {sent.scene->name, RenamedScene(sent.scene->text, sent.name)};
        Note(stored, ChangesIn(renamed, found.scene->text, kSceneElement), "scene");
    }
    for (const ProfileDocuments::Behavior& behavior : sent.behaviors)
        for (const ProfileDocuments::Behavior& kept : found.behaviors)
            if (BehaviorCalled(kept.id) == BehaviorCalled(behavior.id))
                Note(stored, ChangesIn(behavior.document, kept.document.text, "behavior"),
                     BehaviorCalled(behavior.id));
}

[[noreturn]] void TakeBack(Service& service, const ProfileDocuments& profile, const Found& before,
                           const Failure& failure)
{
    std::string sentence = failure.what();
    if (!Restore(service, profile.name, before))
        sentence += " An unfinished profile '" + profile.name + "' may be left there: delete it.";
    throw Failure(failure.Code(), sentence);
}

} // namespace

ProfileDocuments Fetch(Service& service, const Profile& profile)
{
    ProfileDocuments documents;
    documents.name = profile.name;
    documents.preset = profile.preset;
    documents.active = profile.active;
    if (const std::optional<std::string> scene = SceneOf(service, profile.id))
        documents.scene = Source{"scene", *scene};
    for (const Behavior& behavior : service.Availability(profile.id))
        if (const std::string text = DocumentOf(service, profile.id, behavior.id); !Trimmed(text).empty())
            documents.behaviors.push_back({behavior.id, {BehaviorCalled(behavior.id), text}});
    return documents;
}

void CheckAll(const ProfileDocuments& profile, bool strict)
{
    // An empty list of documents: a scene's form isn't known without a service, only that it is XML.
    if (profile.scene)
        CheckDocument(*profile.scene, kSceneElement, Model(), strict);
    for (const ProfileDocuments::Behavior& behavior : profile.behaviors)
        CheckBehavior(behavior.document, behavior.id, BehaviorModel(behavior.id, {}), strict);
}

Stored Store(Service& service, const ProfileDocuments& profile, const StoreOptions& options)
{
    const Found before{service.Profiles(), std::nullopt, {}};
    std::vector<Profile> old;
    if (options.replace)
        old = before.profiles;
    std::erase_if(old, [&profile](const Profile& one) { return one.name != profile.name; });
    Stored stored;
    stored.runs =
        options.run || std::any_of(old.begin(), old.end(), [](const Profile& one) { return one.active; });
    try
    {
        std::atomic<std::size_t> unused{0};
        stored.id = Perform(service, before, MakePlan(profile, before, {.run = stored.runs}), unused);
        NoteChanges(profile, Fetch(service, {stored.id, profile.name, "", stored.runs}), stored);
    }
    catch (const Failure& failure)
    {
        TakeBack(service, profile, before, failure);
    }
    for (const Profile& one : old)
    {
        service.DeleteProfile(one.id);
        ++stored.replaced;
    }
    return stored;
}

} // namespace client
