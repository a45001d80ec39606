#include "Transfer.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Plan.h"
#include "Scene.h"
#include "Text.h"
#include "documents/Models.h"

#include <algorithm>

namespace client
{
namespace
{

void Note(Stored& stored, std::vector<Change> changes, const std::string& document)
{
    for (Change& change : changes)
    {
        change.node = document + ": " + change.node;
        stored.changes.push_back(std::move(change));
    }
}

// What the service stored differently. Behaviors share analytics engines, so a later one may have changed an
// earlier one: they are compared once all are stored.
void NoteChanges(const ProfileDocuments& sent, const ProfileDocuments& found, Stored& stored)
{
    if (sent.scene && found.scene)
    {
        std::vector<Change> changes = ChangesIn(&SceneModel(), sent.scene->text, found.scene->text);
        // The profile's name counts, wherever the scene comes from.
        std::erase_if(changes, [](const Change& change) { return change.node.ends_with("/@name"); });
        Note(stored, std::move(changes), "scene");
    }
    for (const ProfileDocuments::Behavior& behavior : sent.behaviors)
        for (const ProfileDocuments::Behavior& kept : found.behaviors)
            if (BehaviorCalled(kept.id) == BehaviorCalled(behavior.id))
                Note(stored, ChangesIn(FindModel(behavior.id), behavior.document.text, kept.document.text),
                     BehaviorCalled(behavior.id));
}

void WarnOf(const std::vector<Misfit>& misfits, const ProfileDocuments& profile, const Checking& checking)
{
    for (const Misfit& misfit : misfits)
        for (const ProfileDocuments::Behavior& behavior : profile.behaviors)
            if (BehaviorCalled(behavior.id) == BehaviorCalled(misfit.id))
            {
                const Findings findings = {{Finding::Level::Warning, 0, "/active", misfit.text}};
                Tell(behavior.document, findings, checking.json);
                Judge(behavior.document, findings, checking);
            }
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
        if (const std::string text = BehaviorOf(service, profile.id, behavior.id); !Trimmed(text).empty())
            documents.behaviors.push_back({behavior.id, {BehaviorCalled(behavior.id), text}});
    return documents;
}

void CheckAll(ProfileDocuments& profile, Checking checking)
{
    checking.frame = profile.frame;
    if (profile.scene)
        profile.scene->text = Checked(*profile.scene, &SceneModel(), checking);
    for (ProfileDocuments::Behavior& behavior : profile.behaviors)
        behavior.document.text = Checked(behavior.document, FindModel(behavior.id), checking);
}

ProfileDocuments InFrame(const ProfileDocuments& profile, const Frame& frame)
{
    ProfileDocuments scaled = profile;
    scaled.frame = frame;
    if (profile.frame == frame)
        return scaled;
    if (scaled.scene)
        scaled.scene->text = Scaled(scaled.scene->text, profile.frame, frame);
    for (ProfileDocuments::Behavior& behavior : scaled.behaviors)
        behavior.document.text = Scaled(behavior.document.text, profile.frame, frame);
    return scaled;
}

Stored Store(Service& service, const ProfileDocuments& profile, const StoreOptions& options,
             const Checking& checking)
{
    const Found before{service.Profiles(), std::nullopt, {}};
    std::vector<Profile> old;
    if (options.replace)
        old = before.profiles;
    std::erase_if(old, [&profile](const Profile& one) { return one.name != profile.name; });
    Stored stored;
    stored.runs =
        options.run || std::any_of(old.begin(), old.end(), [](const Profile& one) { return one.active; });
    const std::vector<Step> steps = MakePlan(profile, before, {.run = stored.runs});
    WarnOf(Misfits(service, before, steps), profile, checking);
    try
    {
        std::atomic<std::size_t> unused{0};
        stored.id = Perform(service, before, steps, unused);
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
