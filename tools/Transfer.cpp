#include "Transfer.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Scene.h"
#include "Text.h"

namespace client
{
namespace
{

// Time to take a profile back that couldn't be finished because its time was up.
constexpr std::chrono::seconds kTakeBack(5);

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

void StoreDocuments(Service& service, const ProfileDocuments& profile, Stored& stored)
{
    if (profile.scene)
    {
        service.SetScene(stored.id, RenamedScene(profile.scene->text, profile.name));
        Source sent = *profile.scene;
        sent.text = RenamedScene(sent.text, profile.name);
        Note(stored, ChangesIn(sent, service.Scene(stored.id), kSceneElement), "scene");
    }
    for (const ProfileDocuments::Behavior& behavior : profile.behaviors)
        service.SetProfileBehavior(stored.id, behavior.id, behavior.document.text);
    // Behaviors share analytics engines, so that a later one may have changed an earlier one.
    for (const ProfileDocuments::Behavior& behavior : profile.behaviors)
        Note(stored,
             ChangesIn(behavior.document, service.ProfileBehavior(stored.id, behavior.id), "behavior"),
             BehaviorCalled(behavior.id));
}

[[noreturn]] void TakeBack(Service& service, int id, const Failure& failure)
{
    std::string sentence = failure.what();
    try
    {
        service.Deadline(Service::Clock::now() + kTakeBack);
        service.DeleteProfile(id);
    }
    catch (const Failure&)
    {
        sentence += " The unfinished profile " + std::to_string(id) + " is left there: delete it.";
    }
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
    std::vector<Profile> old;
    if (options.replace)
        old = service.Profiles();
    std::erase_if(old, [&profile](const Profile& one) { return one.name != profile.name; });
    Stored stored;
    stored.id = service.CreateProfile(profile.name);
    try
    {
        StoreDocuments(service, profile, stored);
        stored.runs = options.run;
        for (const Profile& one : old)
            stored.runs = stored.runs || one.active;
        if (stored.runs)
            service.RunProfile(stored.id);
    }
    catch (const Failure& failure)
    {
        TakeBack(service, stored.id, failure);
    }
    for (const Profile& one : old)
    {
        service.DeleteProfile(one.id);
        ++stored.replaced;
    }
    return stored;
}

} // namespace client
