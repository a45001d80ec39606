#include "Guard.h"

#include "Failure.h"
#include "Text.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace client
{
namespace
{
constexpr std::size_t kFewHosts = 10;
constexpr std::size_t kPercent = 30;
} // namespace

bool Guard::Matters(std::size_t hosts, const PlanOptions& options)
{
    return options.prune || hosts > kFewHosts;
}

void Guard::Count(const HostResult& plan)
{
    if (plan.state == HostState::Unreachable)
        return;
    ++m_hosts;
    const auto deletions =
        std::count_if(plan.steps.begin(), plan.steps.end(),
                      [](const Step& step) { return step.action == Step::Action::Delete; });
    m_deletions += static_cast<std::size_t>(deletions);
    // A profile that is created comes first.
    if (!plan.steps.empty() && plan.steps.front().element != Step::Element::Profile)
        ++m_changed;
}

std::string Guard::Reason() const
{
    if (m_deletions == 0 && (m_hosts <= kFewHosts || m_changed * 100 <= m_hosts * kPercent))
        return "";
    std::string reason =
        "This changes what " + std::to_string(m_changed) + " of " + std::to_string(m_hosts) + " hosts have";
    if (m_deletions > 0)
        reason +=
            ", and deletes " + std::to_string(m_deletions) + (m_deletions == 1 ? " behavior" : " behaviors");
    return reason;
}

void Agree(const std::string& reason)
{
    if (isatty(STDIN_FILENO) != 1)
        throw Failure(Exit::Usage, reason + ". 'plan' shows it; --force does it without being asked");
    std::cerr << reason << ". Type yes to go on: " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (Trimmed(answer) != "yes")
        throw Failure(Exit::Refused, "Nothing has been written");
}

} // namespace client
