#include "Plan.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Meaning.h"
#include "Scene.h"
#include "Transfer.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace client
{
namespace
{

// Time to restore what a service had, even if the time for the host has run out.
constexpr std::chrono::seconds kRestore(8);

using Part = Step::Element;
using Action = Step::Action;

std::map<std::string, std::string> ById(const ProfileDocuments& documents)
{
    std::map<std::string, std::string> map;
    for (const ProfileDocuments::Behavior& behavior : documents.behaviors)
        if (!IsIdle(behavior.id, behavior.document.text))
            map.emplace(BehaviorId(BehaviorCalled(behavior.id)), behavior.document.text);
    return map;
}

void PlanBehaviors(const ProfileDocuments& wanted, const ProfileDocuments& found, bool prune,
                   std::vector<Step>& steps)
{
    std::map<std::string, std::string> old = ById(found);
    std::vector<Step> sets;
    for (const auto& [id, document] : ById(wanted))
    {
        const auto before = old.extract(id);
        if (before.empty())
            sets.push_back({Part::Behavior, Action::Create, id, "", document});
        else if (!Differences(id, before.mapped(), document).empty())
            sets.push_back({Part::Behavior, Action::Set, id, before.mapped(), document});
    }
    // Before the others, so that what they leave free is there for those.
    if (prune)
        for (const auto& [id, document] : old)
            steps.push_back({Part::Behavior, Action::Delete, id, document, ""});
    std::move(sets.begin(), sets.end(), std::back_inserter(steps));
}

std::vector<std::string> ActiveIn(const ProfileDocuments& documents)
{
    std::vector<std::string> active;
    for (const auto& [id, document] : ById(documents))
        if (IsActive(id, document))
            active.push_back(id);
    return active;
}

std::string NameOf(const Found& found, int id)
{
    for (const Profile& profile : found.profiles)
        if (profile.id == id)
            return profile.name;
    return "";
}

void Do(Service& service, int profile, const Step& step)
{
    if (step.element == Part::Run)
        service.RunProfile(profile);
    else if (step.element == Part::Scene)
        service.SetScene(profile, step.after);
    else if (step.action == Action::Delete)
        service.DeleteProfileBehavior(profile, step.id);
    else
        service.SetProfileBehavior(profile, step.id, step.after);
}

// The profiles of the name that weren't there before.
std::vector<int> Added(Service& service, const std::string& name, const Found& before)
{
    std::vector<int> added;
    for (const Profile& profile : service.Profiles())
        if (profile.name == name && std::none_of(before.profiles.begin(), before.profiles.end(),
                                                 [&](const Profile& old) { return old.id == profile.id; }))
            added.push_back(profile.id);
    return added;
}

// What the profile has now, as far as there was one before.
Found Now(Service& service, const Found& before)
{
    Found now = before;
    if (before.profile)
        now.documents = Fetch(service, *before.profile);
    return now;
}

void RestoreActive(Service& service, const Found& before)
{
    if (service.ActiveProfile().value_or(-1) == before.Active())
        return;
    if (before.Active() < 0)
        service.StopProfile(std::nullopt);
    else
        service.RunProfile(before.Active());
}

} // namespace

int Found::Active() const
{
    const auto active =
        std::find_if(profiles.begin(), profiles.end(), [](const Profile& one) { return one.active; });
    return active == profiles.end() ? -1 : active->id;
}

Found FindProfile(Service& service, const std::string& name)
{
    Found found;
    found.profiles = service.Profiles();
    for (const Profile& profile : found.profiles)
    {
        if (profile.name != name)
            continue;
        if (found.profile)
            throw Failure(Exit::Refused, "More than one profile is named '" + name +
                                             "'. Delete or rename all but one of them");
        found.profile = profile;
    }
    if (found.profile)
        found.documents = Fetch(service, *found.profile);
    return found;
}

std::vector<Step> MakePlan(const ProfileDocuments& wanted, const Found& found, const PlanOptions& options)
{
    std::vector<Step> steps;
    const std::string& name = wanted.name;
    if (!found.profile)
        steps.push_back({Part::Profile, Action::Create, name, "", name});
    PlanBehaviors(wanted, found.documents, options.prune, steps);
    if (options.run && (!found.profile || !found.profile->active))
        steps.push_back({Part::Run, Action::Run, name, NameOf(found, found.Active()), name});
    const std::optional<Source>& old = found.documents.scene;
    if (wanted.scene && (!old || !Differences(kSceneElement, old->text, wanted.scene->text).empty()))
        steps.push_back({Part::Scene, old ? Action::Set : Action::Create, name, old ? old->text : "",
                         RenamedScene(wanted.scene->text, name)});
    return steps;
}

std::vector<Misfit> Misfits(Service& service, const Found& found, const std::vector<Step>& steps)
{
    std::vector<std::string> kept = ActiveIn(found.documents);
    std::vector<std::string> added;
    for (const Step& step : steps)
    {
        std::erase(kept, step.id);
        if (step.element == Part::Behavior && IsActive(step.id, step.after))
            added.push_back(step.id);
    }
    return Misfits(service, kept, added);
}

int Perform(Service& service, const Found& found, const std::vector<Step>& steps,
            std::atomic<std::size_t>& begun)
{
    int profile = found.profile ? found.profile->id : -1;
    for (const Step& step : steps)
    {
        ++begun;
        if (step.element == Part::Profile)
            profile = service.CreateProfile(step.id);
        else
            Do(service, profile, step);
    }
    return profile;
}

bool Restore(Service& service, const std::string& name, const Found& before)
{
    service.Deadline(Service::Clock::now() + kRestore);
    try
    {
        for (const int profile : Added(service, name, before))
            service.DeleteProfile(profile);
        std::atomic<std::size_t> unused{0};
        const Found broken = Now(service, before);
        if (before.profile)
            Perform(service, broken, MakePlan(before.documents, broken, {.prune = true}), unused);
        RestoreActive(service, before);
        const Found after = Now(service, before);
        return Added(service, name, before).empty() &&
               service.ActiveProfile().value_or(-1) == before.Active() &&
               after.documents.scene.has_value() == before.documents.scene.has_value() &&
               (!before.profile || MakePlan(before.documents, after, {.prune = true}).empty());
    }
    catch (const Failure&)
    {
        return false;
    }
}

} // namespace client
