#pragma once

#include <analytics/Faults.h>

#include "files/File.h"
#include "files/StandardError.h"
#include "request/Request.h"
#include "threads/Mutex.h"
#include "threads/Ticker.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace analytics::platform
{

enum class AuditResult
{
    Done,
    Refused, // for something that the client did, or may not do
    Failed
};

// What a line of the audit trail tells. What is empty, or 0 in `count`, is left out.
struct AuditEntry
{
    std::string change; // the call that changes the store, or "access"
    std::optional<int> profile = {};
    std::optional<int> command = {};
    std::string plugin = {};
    AuditResult result = AuditResult::Done;
    std::string reason = {};
    std::size_t count = 0; // of refusals that this line stands for, if it isn't a single one
    // Who is behind it. A role is told of changes alone: who doesn't get in has none.
    std::optional<Caller> caller = {};
};

// A line of an audit trail: the JSON text, and its fields by themselves, as text.
struct AuditLine
{
    std::string text; // no line feed, nor another character that some readers take for the end of a line
    std::vector<std::pair<std::string, std::string>> fields;
};

// Texts are cut to 1,024 bytes; bytes that aren't UTF-8 become U+FFFD.
AuditLine FormatAudit(const AuditEntry& entry, std::chrono::system_clock::time_point time);

// Whether the system's journal has taken the line; false where there is none.
bool SendToJournal(const AuditLine& line);

// Keeps a client that guesses passwords from filling the trail: the first refusal of an address is reported
// at once, further ones together every 10 seconds, with user and reason of the last. Addresses beyond the
// first 1,024 at a time are reported together, without their address. One thread at a time.
class AccessRefusals
{
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kWindow{10};
    static constexpr std::size_t kMost = 1024;

    // What to report at once, if anything.
    std::vector<AuditEntry> Add(AuditEntry entry, Clock::time_point now);
    // What to report now; at the end all that is left, with a time that is kWindow ahead.
    std::vector<AuditEntry> Due(Clock::time_point now);

  private:
    struct Window
    {
        AuditEntry last; // `count`: those not reported yet
        Clock::time_point end;
    };
    std::map<std::string, Window> m_windows; // by address
};

// Where audit lines go: a file, or the system's journal. A line that can't be written is counted,
// reported on standard error as an outage, and lost: no request fails for it. Any thread.
class AuditTrail
{
  public:
    // kJournal, or the path of a file.
    explicit AuditTrail(std::string target);
    // Writes the refusals of access that have not been reported yet.
    ~AuditTrail();
    AuditTrail(const AuditTrail&) = delete;
    AuditTrail& operator=(const AuditTrail&) = delete;

    static constexpr const char* kJournal = "journal";

    // In the file, or at the journal, on return.
    void Write(const AuditEntry& entry);
    void WriteRefusedAccess(const AuditEntry& entry);
    // Makes the file if it is missing, and leaves one that was renamed.
    void Open();

  private:
    void WriteDue(AccessRefusals::Clock::time_point now);
    void WriteLine(const AuditEntry& entry) noexcept ANALYTICS_REQUIRES(m_lock);
    bool IsOpen() ANALYTICS_REQUIRES(m_lock);
    bool OpenFile() ANALYTICS_REQUIRES(m_lock);
    bool Append(const std::string& line) ANALYTICS_REQUIRES(m_lock);
    void Complain(int error) ANALYTICS_REQUIRES(m_lock);

    const std::string m_target;
    Mutex m_lock;
    FileHandle m_file ANALYTICS_GUARDED_BY(m_lock);
    Outage m_outage ANALYTICS_GUARDED_BY(m_lock);
    AccessRefusals m_refusals ANALYTICS_GUARDED_BY(m_lock);
    std::optional<Ticker> m_ticker; // made with the first refusal, under m_lock
};

// The trail that the settings name at this moment is written by these; without one they do nothing. They
// throw nothing.

// Adds who is behind it: the caller of the request that this thread serves.
void Audit(AuditEntry entry) noexcept;
// A request that was refused access, and why, as a sentence. `caller` holds what is known of its sender.
void AuditRefusedAccess(const Caller& caller, const std::string& reason) noexcept;
// At the start, and when files have been renamed.
void OpenAuditTrail() noexcept;

// Runs a change and writes its line before it returns or throws what the change throws. The change may
// complete `entry`.
template <class Change>
void Audited(AuditEntry& entry, Change change)
{
    const auto conclude = [&](AuditResult result, const char* reason)
    {
        entry.result = result;
        entry.reason = reason;
        Audit(entry);
    };
    try
    {
        change();
    }
    catch (const ClientFault& fault)
    {
        conclude(AuditResult::Refused, fault.what());
        throw;
    }
    catch (const std::exception& failure)
    {
        conclude(AuditResult::Failed, failure.what());
        throw;
    }
    conclude(AuditResult::Done, "");
}

} // namespace analytics::platform
