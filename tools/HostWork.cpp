#include "HostWork.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Text.h"
#include "Transfer.h"

namespace client
{
namespace
{

void Warn(HostResult& result, const std::string& field, const std::string& text)
{
    result.warnings.push_back({Finding::Level::Warning, 0, field, text});
}

void Fail(HostResult& result, const std::exception& why)
{
    const auto* const failure = dynamic_cast<const Failure*>(&why);
    result.code = failure != nullptr ? failure->Code() : Exit::Refused;
    result.state = result.code == Exit::Unreachable ? HostState::Unreachable : HostState::Failed;
    result.error = Sentence(why.what());
}

// The work on one host, as far as it has come.
class Host
{
  public:
    Host(const Target& target, const Goal& goal)
        : m_goal(goal),
          m_wanted(InFrame(goal.wanted, target.frame)),
          m_service(target.access, Service::Clock::now() + goal.time)
    {
    }

    void Plan(HostResult& result)
    {
        m_found = FindProfile(m_service, m_wanted.name);
        const std::vector<Step> steps = MakePlan(m_wanted, m_found, m_goal.options);
        for (const Misfit& misfit : Misfits(m_service, m_found, steps))
            Warn(result, "/active", misfit.text);
        if (m_goal.strict && !result.warnings.empty())
            throw Failure(Exit::Document, "There is a warning, and --strict takes none. Nothing has been "
                                          "written; change the folder, or leave --strict out");
        result.steps = steps;
        result.state = result.steps.empty() ? HostState::Same : HostState::Differs;
    }

    void Apply(HostResult& result, Trace& trace)
    {
        try
        {
            Perform(m_service, m_found, result.steps, trace.writes);
            result.state = HostState::Changed;
        }
        catch (const std::exception& failure)
        {
            TakeBack(result, trace, failure);
            return;
        }
        Verify(result);
    }

  private:
    // Warns of what the service keeps otherwise than it was sent.
    void Verify(HostResult& result)
    {
        try
        {
            const Found found = FindProfile(m_service, m_wanted.name);
            for (const Step& step : MakePlan(m_wanted, found, m_goal.options))
                Warn(result, "", BehaviorCalled(step.id) + " came back different from what was sent");
        }
        catch (const Failure& failure)
        {
            Warn(result, "", std::string("It couldn't be read once more: ") + failure.what());
        }
    }

    void TakeBack(HostResult& result, const Trace& trace, const std::exception& why)
    {
        result.error = Sentence(why.what());
        if (Restore(m_service, m_wanted.name, m_found))
        {
            result.state = HostState::Restored;
            result.error += " The host has what it had.";
            return;
        }
        result.state = HostState::Failed;
        result.error += " It failed at change " + std::to_string(trace.writes) + " of " +
                        std::to_string(result.steps.size()) +
                        ", and the host couldn't be given back what it had. Apply it again";
        result.error = Sentence(result.error);
    }

    const Goal& m_goal;
    const ProfileDocuments m_wanted;
    Service m_service;
    Found m_found;
};

} // namespace

HostResult PlanHost(const Target& target, const Goal& goal)
{
    HostResult result{.host = target.access.url};
    try
    {
        Host(target, goal).Plan(result);
    }
    catch (const std::exception& failure)
    {
        Fail(result, failure);
    }
    return result;
}

HostResult ApplyHost(const Target& target, const Goal& goal, const Permission& permission, Trace& trace)
{
    HostResult result{.host = target.access.url};
    try
    {
        Host host(target, goal);
        host.Plan(result);
        if (result.state != HostState::Same && !permission(result))
        {
            result.state = HostState::Skipped;
            result.steps.clear();
        }
        if (result.state == HostState::Differs)
            host.Apply(result, trace);
    }
    catch (const std::exception& failure)
    {
        Fail(result, failure);
    }
    return result;
}

HostResult Abandoned(const Target& target, const Trace& trace)
{
    HostResult result{.host = target.access.url};
    if (trace.writes == 0)
        return result;
    result.state = HostState::Failed;
    result.error = "Interrupted at change " + std::to_string(trace.writes) +
                   ", without an answer of the host. Apply it again.";
    return result;
}

} // namespace client
