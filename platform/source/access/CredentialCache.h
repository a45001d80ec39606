#pragma once

#include "access/BasicCredentials.h"
#include "threads/TimedCache.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace tarno::osa
{

// Which credentials were found right a short while ago, so that a slow hash isn't paid at every
// request. What it keeps of them is a hash keyed with a secret of this process. One thread at a time.
class CredentialCache
{
  public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::minutes kLifetime{5};
    static constexpr std::size_t kMost = 256;

    CredentialCache();

    // By what the credentials are known here. `hash`, what they are held against, is a part of it: a
    // changed password makes another key.
    std::string KeyOf(const BasicCredentials& credentials, const std::string& hash) const;
    bool Knows(const std::string& key, Clock::time_point now);
    // The one that was found right the longest ago makes room.
    void Remember(const std::string& key, Clock::time_point now);
    void Clear() { m_known.Clear(); }

  private:
    std::string m_secret;
    analytics::platform::TimedCache<bool, kMost> m_known; // all true
};

} // namespace tarno::osa
