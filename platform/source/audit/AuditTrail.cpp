#include "audit/AuditTrail.h"

#include <analytics/Settings.h>

#include "audit/Journal.h"
#include "files/FileStamp.h"
#include "files/StandardError.h"
#include "metrics/Metrics.h"
#include "settings/Configuration.h"
#include "threads/PerPath.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace analytics::platform
{

std::vector<AuditEntry> AccessRefusals::Add(AuditEntry entry, Clock::time_point now)
{
    std::vector<AuditEntry> told = Due(now);
    std::string& peer = entry.caller->peer;
    if (m_windows.size() >= kMost && !m_windows.contains(peer))
        peer.clear();
    const auto [place, first] = m_windows.try_emplace(peer, Window{entry, now + kWindow});
    if (first)
    {
        told.push_back(std::move(entry));
        return told;
    }
    entry.count = place->second.last.count + 1;
    place->second.last = std::move(entry);
    return told;
}

std::vector<AuditEntry> AccessRefusals::Due(Clock::time_point now)
{
    std::vector<AuditEntry> told;
    for (auto& [peer, window] : m_windows)
        if (window.end <= now && window.last.count > 0)
        {
            told.push_back(window.last);
            window.last.count = 0;
            window.end = now + kWindow;
        }
    std::erase_if(m_windows, [now](const auto& window) { return window.second.end <= now; });
    return told;
}

std::vector<AuditEntry> AccessRefusals::Rest()
{
    std::vector<AuditEntry> told;
    for (const auto& [peer, window] : m_windows)
        if (window.last.count > 0)
            told.push_back(window.last);
    m_windows.clear();
    return told;
}

namespace
{
constexpr std::chrono::seconds kTick{1};

// None if the settings name none.
std::shared_ptr<AuditTrail> CurrentTrail()
{
    static PerPath<AuditTrail> trails;
    const std::string target = Settings::GetValue("//server/audit");
    if (target.empty())
        return nullptr;
    return trails.At(target == AuditTrail::kJournal ? target : FileBesideSettings(target));
}

template <class Action>
void WithTrail(Action action) noexcept
{
    try
    {
        if (const auto trail = CurrentTrail())
            action(*trail);
    }
    catch (const std::exception&)
    {
        gAuditErrors.Add();
    }
}
} // namespace

AuditTrail::AuditTrail(std::string target) : m_target(std::move(target)) {}

AuditTrail::~AuditTrail()
{
    m_ticker.reset();
    const MutexLock hold(m_lock);
    for (const AuditEntry& entry : m_refusals.Rest())
        WriteLine(entry);
}

void AuditTrail::Write(const AuditEntry& entry)
{
    const MutexLock hold(m_lock);
    WriteLine(entry);
}

void AuditTrail::WriteRefusedAccess(const AuditEntry& entry)
{
    const MutexLock hold(m_lock);
    for (const AuditEntry& told : m_refusals.Add(entry, AccessRefusals::Clock::now()))
        WriteLine(told);
    if (!m_ticker)
        m_ticker.emplace(kTick, [this] { WriteDue(); });
}

void AuditTrail::WriteDue()
{
    const MutexLock hold(m_lock);
    for (const AuditEntry& entry : m_refusals.Due(AccessRefusals::Clock::now()))
        WriteLine(entry);
}

void AuditTrail::Open()
{
    const MutexLock hold(m_lock);
    if (m_target != kJournal && !IsOpen() && !OpenFile())
        Complain(errno);
}

void AuditTrail::WriteLine(const AuditEntry& entry) noexcept
{
    try
    {
        const AuditLine line = FormatAudit(entry, std::chrono::system_clock::now());
        if (m_target == kJournal)
        {
            if (!SendToJournal(line))
                Say(line.text);
        }
        else if ((IsOpen() || OpenFile()) && Append(line.text + '\n'))
            m_outage.End("The audit trail " + m_target + " is written again.");
        else
            Lose(errno);
    }
    catch (const std::exception&) // no memory
    {
        gAuditErrors.Add();
    }
}

bool AuditTrail::IsOpen() { return IsAt(m_file.Get(), m_target); }

// Not to wait for the reader of a pipe.
bool AuditTrail::OpenFile()
{
    m_file = FileHandle(
        open(m_target.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600));
    return static_cast<bool>(m_file);
}

// A part of a line, where there was no more room, would spoil the next one.
bool AuditTrail::Append(const std::string& line)
{
    const ssize_t written = write(m_file.Get(), line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size()))
        return true;
    if (written > 0)
    {
        const off_t end = lseek(m_file.Get(), 0, SEEK_END);
        if (end >= written && ftruncate(m_file.Get(), end - written) != 0)
            m_file = FileHandle();
        errno = ENOSPC;
    }
    return false;
}

void AuditTrail::Lose(int error)
{
    gAuditErrors.Add();
    Complain(error);
}

void AuditTrail::Complain(int error)
{
    m_outage.Begin("The audit trail " + m_target +
                   " can't be written: " + std::generic_category().message(error) +
                   "; lines are lost until it can. Make room there, or make it writable for the service.");
}

void Audit(AuditEntry entry) noexcept
{
    WithTrail(
        [&](AuditTrail& trail)
        {
            if (const Caller* const caller = CurrentCaller())
                entry.caller = *caller;
            trail.Write(entry);
        });
}

void AuditRefusedAccess(const Caller& caller, const std::string& reason) noexcept
{
    WithTrail(
        [&](AuditTrail& trail)
        {
            trail.WriteRefusedAccess(
                {.change = "access", .result = AuditResult::Refused, .reason = reason, .caller = caller});
        });
}

void OpenAuditTrail() noexcept
{
    WithTrail([](AuditTrail& trail) { trail.Open(); });
}

} // namespace analytics::platform
