#pragma once

#include "Fleet.h"
#include "HostResult.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace client
{

// A number of hosts, or a share of all.
struct Share
{
    std::size_t number = 0;
    bool percent = false;

    // Of a share at least one.
    std::size_t Of(std::size_t all) const;
};

// Of "8" or "25%". Throws Failure (usage) with the option's name.
Share ParseShare(const std::string& option, const std::string& text);

struct RolloutOptions
{
    std::size_t jobs = 16;
    std::size_t canary = 0;
    std::optional<Share> batch;
    std::optional<Share> maxFail; // once more have failed, no other is begun
};

// One pass over hosts in their order: the canary, then batch after batch, each begun once the one before it
// has ended. A canary that fails ends it, and a batch that fails unless `maxFail` says otherwise.
class Rollout
{
  public:
    using Work = std::function<HostResult(std::size_t)>;
    using Report = std::function<void(const HostResult&)>;

    Rollout(std::size_t hosts, const RolloutOptions& options);

    // Reports each host once, one at a time: its result, or at the end that of `left` for one that wasn't
    // begun or was abandoned. No signal keeps it from that. Returns false if work was abandoned, as
    // Fleet::Run() does.
    bool Run(const Work& work, const Work& left, const Report& report);

    // No other host is begun; the first reason stays.
    void End(const std::string& why);
    const Fleet& Hosts() const { return m_fleet; }
    // Why hosts are left over, as a sentence; empty, if none is.
    const std::string& Ended() const { return m_ended; }

  private:
    // The ends of the canary and the batches.
    std::vector<std::size_t> Ends() const;
    void Judge(std::size_t first, std::size_t failedBefore);
    void Count(const HostResult& result);

    std::size_t m_hosts;
    RolloutOptions m_options;
    Fleet m_fleet;
    std::size_t m_failed = 0;
    std::string m_ended;
};

} // namespace client
