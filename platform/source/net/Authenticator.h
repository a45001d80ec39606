#pragma once

#include "access/Passwords.h"
#include "access/Users.h"
#include "files/File.h"
#include "threads/Mutex.h"

#include <boost/asio/ip/address.hpp>
#include <boost/asio/thread_pool.hpp>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarno::osa
{

// Lets in who sends the name and password of a user. What it knows already costs next to nothing; a
// password that it doesn't know yet is hashed on a thread of its own, a few at a time and a bounded
// number in all. A change of the users file counts from the next check on. Any thread.
class Authenticator
{
  public:
    enum class Verdict
    {
        Allowed,
        Denied,
        TooManyAttempts, // from this address
        Busy             // with passwords of others
    };
    using Decided = std::function<void(Verdict)>;

    static constexpr std::size_t kThreads = 2;
    static constexpr std::size_t kMostPending = 64; // passwords that are hashed or wait for that

    // Throws AccessFault if the file can't be used.
    explicit Authenticator(const std::string& usersFile);
    ~Authenticator(); // stops

    // `authorization` is the value of the HTTP field, empty if there was none. The verdict if it can be
    // had at once; otherwise `decided` gets it later, on a thread of its own, unless that stops.
    std::optional<Verdict> Authenticate(const std::string& authorization,
                                        const boost::asio::ip::address& from, Decided decided);
    // Takes a changed users file over; Authenticate() does so as well.
    void Renew();
    // Drops what isn't decided, and returns when nothing runs any more. No Authenticate() after it.
    void Stop();

  private:
    struct Attempt
    {
        BasicCredentials credentials;
        std::string key; // of the cache
        std::string from;
        std::shared_ptr<const Users> users;
    };
    void RenewUsers() ANALYTICS_REQUIRES(m_lock);
    void HashAt(AttemptThrottle::Time turn, std::shared_ptr<const Attempt> attempt);
    static bool IsRight(const Attempt& attempt);
    void Decide(const Attempt& attempt, bool right);

    analytics::platform::Mutex m_lock;
    analytics::platform::WatchedFile m_file ANALYTICS_GUARDED_BY(m_lock);
    std::shared_ptr<const Users> m_users ANALYTICS_GUARDED_BY(m_lock);
    CredentialCache m_known ANALYTICS_GUARDED_BY(m_lock);
    AttemptThrottle m_throttle ANALYTICS_GUARDED_BY(m_lock);
    // Who waits for which attempt; the same credentials are hashed once for all who send them.
    std::map<std::string, std::vector<Decided>> m_pending ANALYTICS_GUARDED_BY(m_lock);
    boost::asio::thread_pool m_threads{kThreads};
};

} // namespace tarno::osa
