#include "net/Authenticator.h"

#include "access/AccessSettings.h"
#include "files/StandardError.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <new>
#include <utility>

namespace tarno::osa
{
using analytics::platform::MutexLock;
namespace
{

namespace asio = boost::asio;
using Clock = std::chrono::steady_clock;

// Whoever has one IPv6 address has the 2^64 of its network.
std::string Origin(const asio::ip::address& from)
{
    if (from.is_v4())
        return from.to_string();
    asio::ip::address_v6::bytes_type bytes = from.to_v6().to_bytes();
    if (from.to_v6().is_v4_mapped())
        return asio::ip::make_address_v4(asio::ip::v4_mapped, from.to_v6()).to_string();
    std::fill(bytes.begin() + 8, bytes.end(), static_cast<unsigned char>(0));
    return asio::ip::address_v6(bytes).to_string();
}

} // namespace

Authenticator::Authenticator(const std::string& usersFile) : m_file(usersFile)
{
    const MutexLock hold(m_lock);
    RenewUsers();
}

Authenticator::~Authenticator() { Stop(); }

void Authenticator::Stop()
{
    m_threads.stop();
    m_threads.join();
}

void Authenticator::Renew()
{
    const MutexLock hold(m_lock);
    RenewUsers();
}

void Authenticator::RenewUsers()
{
    if (!m_file.Renew())
        return;
    const bool first = m_users == nullptr;
    try
    {
        const auto users = std::make_shared<const Users>(m_file.Path(), TextOf(m_file));
        if (first && !users->WhyNobody().empty())
            throw AccessFault(users->WhyNobody());
        m_users = users;
    }
    catch (const AccessFault& fault)
    {
        if (first)
            throw;
        return SayNotTakenOver(fault);
    }
    m_known.Clear();
    for (const std::string& mistake : m_users->Mistakes())
        analytics::platform::SayOnce(mistake + ". The line is left out.");
    if (!first)
        SayTakenOver(m_file.Path());
}

std::optional<Authenticator::Verdict>
Authenticator::Authenticate(const std::string& authorization, const asio::ip::address& from, Decided decided)
{
    auto credentials = ParseBasicCredentials(authorization);
    const MutexLock hold(m_lock);
    RenewUsers();
    if (!credentials)
        return Verdict::Denied;
    const Clock::time_point now = Clock::now();
    std::string key = m_known.KeyOf(*credentials, m_users->HashFor(credentials->name));
    if (m_known.Knows(key, now))
        return Verdict::Allowed;
    const auto pending = m_pending.find(key);
    if (pending != m_pending.end())
    {
        pending->second.push_back(std::move(decided));
        return std::nullopt;
    }
    if (m_pending.size() >= kMostPending)
        return Verdict::Busy;
    Attempt attempt{*std::move(credentials), std::move(key), Origin(from), m_users};
    const auto turn = m_throttle.Begin(attempt.from, now);
    if (!turn)
        return Verdict::TooManyAttempts;
    const auto entry = m_pending.emplace(attempt.key, 1).first;
    try
    {
        HashAt(*turn, std::make_shared<const Attempt>(std::move(attempt)));
        entry->second.front() = std::move(decided);
    }
    catch (...)
    {
        m_pending.erase(entry); // No memory: whoever asks next begins anew.
        throw;
    }
    return std::nullopt;
}

void Authenticator::HashAt(AttemptThrottle::Time turn, std::shared_ptr<const Attempt> attempt)
{
    const auto timer = std::make_shared<asio::steady_timer>(m_threads, turn);
    timer->async_wait(
        [this, timer, attempt = std::move(attempt)](const boost::system::error_code& error)
        {
            if (!error)
                Decide(*attempt, IsRight(*attempt));
        });
}

bool Authenticator::IsRight(const Attempt& attempt)
try
{
    const std::string& name = attempt.credentials.name;
    const bool matches = PasswordMatches(attempt.credentials.password, attempt.users->HashFor(name));
    return matches && attempt.users->Has(name);
}
catch (const std::bad_alloc&)
{
    return false; // nobody gets in because memory is short
}

void Authenticator::Decide(const Attempt& attempt, bool right)
try
{
    std::vector<Decided> waiting;
    {
        const MutexLock hold(m_lock);
        const auto entry = m_pending.find(attempt.key);
        waiting = std::move(entry->second);
        m_pending.erase(entry);
        if (right)
            m_throttle.Succeeded(attempt.from);
        // Not after a change of the file, which has made another object.
        if (right && attempt.users == m_users)
            m_known.Remember(attempt.key, Clock::now());
    }
    for (const Decided& decided : waiting)
        decided(right ? Verdict::Allowed : Verdict::Denied);
}
catch (const std::bad_alloc&)
{
    // Whoever hears nothing has a deadline.
}

} // namespace tarno::osa
