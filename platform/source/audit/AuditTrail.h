#pragma once

#include <analytics/Faults.h>

#include "audit/AccessRefusals.h"
#include "audit/AuditEntry.h"
#include "files/FileHandle.h"
#include "files/Outage.h"
#include "threads/Lock.h"
#include "threads/Ticker.h"

#include <exception>
#include <optional>
#include <string>

namespace analytics::platform
{

// Where audit lines go: a file, or the system's journal. A line that can't be written is counted, told on
// standard error as an outage is, and lost: no request fails for it. Any thread.
class AuditTrail
{
  public:
    // kJournal, or the path of a file.
    explicit AuditTrail(std::string target);
    // Writes what refusals of access are yet to be told.
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
    void WriteDue();
    void WriteLine(const AuditEntry& entry) noexcept ANALYTICS_REQUIRES(m_lock);
    bool IsOpen() ANALYTICS_REQUIRES(m_lock);
    bool OpenFile() ANALYTICS_REQUIRES(m_lock);
    bool Append(const std::string& line) ANALYTICS_REQUIRES(m_lock);
    void Lose(int error) ANALYTICS_REQUIRES(m_lock);
    void Complain(int error) ANALYTICS_REQUIRES(m_lock);

    const std::string m_target;
    Lock m_lock;
    FileHandle m_file ANALYTICS_GUARDED_BY(m_lock);
    Outage m_outage ANALYTICS_GUARDED_BY(m_lock);
    AccessRefusals m_refusals ANALYTICS_GUARDED_BY(m_lock);
    std::optional<Ticker> m_ticker; // made with the first refusal, under m_lock
};

// The trail that the settings name at this moment is written by these; without one they do nothing. They
// throw nothing.

// Adds who is behind it: the caller of the request that this thread serves.
void Audit(AuditEntry entry) noexcept;
// A request that doesn't get in, and the sentence why. `caller` holds what is known of it.
void AuditRefusedAccess(const Caller& caller, const std::string& reason) noexcept;
// At the start, and when the files are to be opened anew.
void OpenAuditTrail() noexcept;

// Runs a change and writes its line before it returns or throws what the change throws. The change may fill
// in `entry` what it comes to know.
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
