#pragma once

#include "access/BasicCredentials.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <unordered_map>

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
    bool Knows(const std::string& key, Clock::time_point now) const;
    // The one that was found right the longest ago makes room.
    void Remember(const std::string& key, Clock::time_point now);
    void Clear() { m_until.clear(); }

  private:
    std::string m_secret;
    std::unordered_map<std::string, Clock::time_point> m_until;
};

} // namespace tarno::osa
