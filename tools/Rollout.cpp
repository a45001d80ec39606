#include "Rollout.h"

#include "Failure.h"
#include "Text.h"

#include <algorithm>
#include <memory>

namespace client
{

std::size_t Share::Of(std::size_t all) const
{
    return percent ? std::max<std::size_t>(all * number / 100, 1) : number;
}

Share ParseShare(const std::string& option, const std::string& text)
{
    const bool percent = !text.empty() && text.back() == '%';
    const std::optional<long long> number = Integer(percent ? text.substr(0, text.size() - 1) : text);
    const long long least = percent || option == "--batch" ? 1 : 0;
    if (!number || *number < least || *number > (percent ? 100 : 1000000))
        throw Failure(Exit::Usage, option + ": '" + text + "' is neither a number of hosts from " +
                                       std::to_string(least == 0 ? 0 : 1) +
                                       " on nor a share from 1% to 100%");
    return {static_cast<std::size_t>(*number), percent};
}

Rollout::Rollout(std::size_t hosts, const RolloutOptions& options)
    : m_hosts(hosts), m_options(options), m_fleet(options.jobs)
{
}

std::vector<std::size_t> Rollout::Ends() const
{
    std::vector<std::size_t> ends;
    std::size_t end = std::min(m_options.canary, m_hosts);
    if (end > 0)
        ends.push_back(end);
    const std::size_t step = m_options.batch ? m_options.batch->Of(m_hosts) : m_hosts;
    while (end < m_hosts)
        ends.push_back(end = std::min(end + step, m_hosts));
    return ends;
}

bool Rollout::Run(const Work& work, const Work& left, const Report& report)
{
    // Shared with work that may be given up.
    const auto results = std::make_shared<std::vector<HostResult>>(m_hosts);
    std::vector<bool> reported(m_hosts);
    const auto done = [&](std::size_t host)
    {
        const HostResult result = std::move((*results)[host]);
        reported[host] = true;
        Count(result);
        report(result);
    };
    const Signals signals;
    bool ended = true;
    std::size_t first = 0;
    for (const std::size_t end : Ends())
    {
        const std::size_t failed = m_failed;
        ended = m_fleet.Run(
            signals, first, end, [work, results](std::size_t host) { (*results)[host] = work(host); }, done);
        if (m_fleet.Interrupted())
            End("It was interrupted.");
        else
            Judge(first, failed);
        if (m_fleet.Stopped())
            break;
        first = end;
    }
    for (std::size_t host = 0; host < m_hosts; ++host)
        if (!reported[host])
            report(left(host));
    return ended;
}

void Rollout::Judge(std::size_t first, std::size_t failedBefore)
{
    if (m_failed == failedBefore)
        return;
    if (first == 0 && m_options.canary > 0)
        End("It ended with the canary, of which not all could be done.");
    else if (m_options.batch && !m_options.maxFail)
        End("It ended with the batch of which not all could be done.");
}

void Rollout::Count(const HostResult& result)
{
    if (!result.Bad())
        return;
    ++m_failed;
    if (m_options.maxFail && m_failed > m_options.maxFail->Of(m_hosts))
        End("It ended because " + std::to_string(m_failed) + " failed.");
}

void Rollout::End(const std::string& why)
{
    m_fleet.Stop();
    if (m_ended.empty())
        m_ended = why;
}

} // namespace client
