#pragma once

#include "threads/TimedCache.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

// A client's name and password, and how they are verified.
namespace tarno::osa
{

// A name and a password as a client claims them. The password is wiped when it goes.
struct BasicCredentials
{
    BasicCredentials() = default;
    ~BasicCredentials();
    BasicCredentials(BasicCredentials&&) = default;
    BasicCredentials(const BasicCredentials&) = default;

    std::string name;
    std::string password;
};

// Out of the value of the HTTP field "Authorization". Nothing if its scheme isn't Basic, or if no user could
// have what it holds: no name, a NUL, more than crypt(3) takes.
std::optional<BasicCredentials> ParseBasicCredentials(const std::string& authorization);

// Why `hash` can't be used as a password hash of crypt(3); empty if it can. Broken methods (DES, MD5) are
// refused like unknown ones.
std::string WhyNoPasswordHash(const std::string& hash);

// Whether `password` has this hash. Takes as long as the hash was made to cost, whatever the answer.
bool PasswordMatches(const std::string& password, const std::string& hash);

// The credentials that were verified a short while ago, so that not every request pays for a slow hash. They
// are kept as a hash that is keyed with a secret of this process. One thread at a time.
class CredentialCache
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::minutes kLifetime{5};
    static constexpr std::size_t kMost = 256;

    CredentialCache();

    // The key of the credentials. It depends on `hash`, the user's: a changed password makes another key.
    std::string KeyOf(const BasicCredentials& credentials, const std::string& hash) const;
    bool Knows(const std::string& key, Time now) { return m_known.Find(key, now) != nullptr; }
    // When the cache is full, the entry that was verified the longest ago goes.
    void Remember(const std::string& key, Time now) { m_known.Put(key, true, now + kLifetime); }
    void Clear() { m_known.Clear(); }

  private:
    std::string m_secret;
    analytics::platform::TimedCache<bool, kMost> m_known; // all true
};

// Slows down clients that guess passwords. Each attempt counts as failed until it has succeeded, so that many
// at a time don't help. An address never waits for the attempts of another. One thread at a time.
class AttemptThrottle
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr unsigned kFree = 5; // failures without a pause
    static constexpr std::chrono::milliseconds kFirstPause{250};
    static constexpr std::chrono::milliseconds kLongestPause{4000};
    static constexpr std::chrono::seconds kLongestWait{10};
    static constexpr std::chrono::minutes kForgotten{5}; // after the last attempt
    static constexpr std::size_t kMost =
        1024; // addresses; the one that has been quiet the longest goes first

    // When an attempt that arrives `now` may be verified; nothing if it would have to wait too long.
    std::optional<Time> Begin(const std::string& who, Time now);
    // To be called for an attempt that succeeded.
    void Succeeded(const std::string& who);

  private:
    struct Attempts
    {
        unsigned failures = 0;
        Time next;
    };
    analytics::platform::TimedCache<Attempts, kMost> m_attempts;
};

} // namespace tarno::osa
