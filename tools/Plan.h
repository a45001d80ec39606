#pragma once

#include "ProfileFolder.h"
#include "Reasons.h"
#include "Service.h"

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace client
{

// One write to a service.
struct Step
{
    enum class Element
    {
        Profile,
        Behavior,
        Scene,
        Run
    };
    enum class Action
    {
        Create,
        Set,
        Delete,
        Run
    };

    Element element;
    Action action;
    std::string id;     // of a behavior; else the profile's name
    std::string before; // a document, a name of a profile, or nothing
    std::string after;
};

// What a service has: its profiles, and of one of them the documents.
struct Found
{
    std::vector<Profile> profiles;
    std::optional<Profile> profile; // the profile of that name; nothing: it has to be created
    ProfileDocuments documents;     // of that

    // Whichever runs; -1: none.
    int Active() const;
};

// Looks for the profile of the name. Throws Failure, also if more than one profile bears it.
Found FindProfile(Service& service, const std::string& name);

struct PlanOptions
{
    bool prune = false; // delete the behaviors that aren't wanted
    bool run = false;
};

// The writes that turn `found` into `wanted`, in their order; none if both mean the same. The scene comes
// last, since no operation takes one away.
std::vector<Step> MakePlan(const ProfileDocuments& wanted, const Found& found, const PlanOptions& options);

// The behaviors that the steps make active although the service says that they can't be active together with
// the others of the profile. Throws Failure.
std::vector<Misfit> Misfits(Service& service, const Found& found, const std::vector<Step>& steps);

// Does the steps on the profile that was found, or on the one that they create, and returns its identifier.
// `begun` counts the writes; one that failed is among them. Throws Failure and leaves things as they are
// then.
int Perform(Service& service, const Found& found, const std::vector<Step>& steps,
            std::atomic<std::size_t>& begun);

// Gives the service back what it had of the profile of this name, in a few seconds. Returns whether it has
// it, judged by what it says.
bool Restore(Service& service, const std::string& name, const Found& before);

} // namespace client
