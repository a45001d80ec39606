#include "HostWork.h"

#include "Behaviors.h"
#include "Documents.h"
#include "Failure.h"
#include "Transfer.h"

namespace client
{
namespace
{

std::string Sentence(std::string text)
{
    if (text.empty() || text.back() != '.')
        text += '.';
    return text;
}

void Warn(const std::string& host, const std::string& text, bool json)
{
    Tell({host, ""}, {{Finding::Level::Warning, 0, "", text}}, json);
}

void Fail(HostResult& result, const std::exception& why)
{
    const auto* const failure = dynamic_cast<const Failure*>(&why);
    const bool silent = failure != nullptr && failure->Code() == Exit::Unreachable;
    result.state = silent ? HostState::Unreachable : HostState::Failed;
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
        result.steps = MakePlan(m_wanted, m_found, m_goal.options);
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
        Verify(result.host);
    }

  private:
    // Says on standard error what the service keeps otherwise than it was sent.
    void Verify(const std::string& host)
    {
        try
        {
            const Found found = FindProfile(m_service, m_wanted.name);
            for (const Step& step : MakePlan(m_wanted, found, m_goal.options))
                Warn(host, BehaviorCalled(step.id) + " came back different from what was sent", m_goal.json);
        }
        catch (const Failure& failure)
        {
            Warn(host, std::string("It couldn't be read once more: ") + failure.what(), m_goal.json);
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
    HostResult result{target.access.url, HostState::Skipped, {}, ""};
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
    HostResult result{target.access.url, HostState::Skipped, {}, ""};
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
    HostResult result{target.access.url, HostState::Skipped, {}, ""};
    if (trace.writes == 0)
        return result;
    result.state = HostState::Failed;
    result.error = "Interrupted at change " + std::to_string(trace.writes) +
                   ", without an answer of the host. Apply it again.";
    return result;
}

} // namespace client
