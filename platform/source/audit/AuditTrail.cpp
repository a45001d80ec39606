#include "audit/AuditTrail.h"

#include <analytics/Settings.h>

#include "files/File.h"
#include "files/StandardError.h"
#include "metrics/Metrics.h"
#include "settings/Configuration.h"
#include "threads/PerPath.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace analytics::platform
{
namespace
{
using Json = nlohmann::ordered_json;

constexpr std::chrono::seconds kTick{1};
constexpr std::size_t kMostBytes = 1024; // of a text
constexpr const char* kAccess = "access";
constexpr const char* kResults[] = {"done", "refused", "failed"};

// JSON lets these stand as they are, and some readers end a line at them.
constexpr std::pair<const char*, const char*> kLineEnds[] = {
    {"\u0085", "\\u0085"}, {"\u2028", "\\u2028"}, {"\u2029", "\\u2029"}};

std::string TimeText(std::chrono::system_clock::time_point time)
{
    const auto whole = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(whole);
    const std::time_t since = std::chrono::system_clock::to_time_t(seconds);
    std::tm utc = {};
    gmtime_r(&since, &utc);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>((whole - seconds).count()));
    return text;
}

// Cut between two characters, and with all that isn't UTF-8 replaced.
std::string Sanitize(std::string text)
{
    if (text.size() > kMostBytes)
    {
        std::size_t end = kMostBytes;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            --end;
        text.resize(end);
    }
    return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

void Put(Json& json, const char* name, const std::string& text)
{
    if (!text.empty())
        json[name] = Sanitize(text);
}

Json ToJson(const AuditEntry& entry, std::chrono::system_clock::time_point time)
{
    Json json;
    json["time"] = TimeText(time);
    if (entry.caller)
    {
        Put(json, "request", entry.caller->request);
        Put(json, "user", entry.caller->name);
        if (entry.change != kAccess)
            json["role"] = NameOf(entry.caller->role);
        Put(json, "peer", entry.caller->peer);
    }
    json["change"] = entry.change;
    if (entry.profile)
        json["profile"] = *entry.profile;
    if (entry.command)
        json["command"] = *entry.command;
    Put(json, "plugin", entry.plugin);
    json["result"] = kResults[static_cast<int>(entry.result)];
    Put(json, "reason", entry.reason);
    if (entry.count > 0)
        json["count"] = entry.count;
    return json;
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& by)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
        text.replace(at, what.size(), by);
}

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

AuditLine FormatAudit(const AuditEntry& entry, std::chrono::system_clock::time_point time)
{
    const Json json = ToJson(entry, time);
    AuditLine line{json.dump(), {}};
    for (const auto& [character, escape] : kLineEnds)
        ReplaceAll(line.text, character, escape);
    for (const auto& [name, value] : json.items())
        line.fields.emplace_back(name, value.is_string() ? value.get<std::string>() : value.dump());
    return line;
}

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

AuditTrail::AuditTrail(std::string target) : m_target(std::move(target)) {}

AuditTrail::~AuditTrail()
{
    m_ticker.reset();
    WriteDue(AccessRefusals::Clock::now() + AccessRefusals::kWindow);
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
        m_ticker.emplace(kTick, [this] { WriteDue(AccessRefusals::Clock::now()); });
}

void AuditTrail::WriteDue(AccessRefusals::Clock::time_point now)
{
    const MutexLock hold(m_lock);
    for (const AuditEntry& entry : m_refusals.Due(now))
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
        {
            Complain(errno);
            gAuditErrors.Add();
        }
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
