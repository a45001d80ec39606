#include "audit/AuditTrail.h"

#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

namespace analytics::platform
{
namespace
{
constexpr const char* kJournalSocket = "/run/systemd/journal/socket";
} // namespace

// libsystemd reports a line as sent where there is no journal.
bool SendToJournal(const AuditLine& line)
{
    if (access(kJournalSocket, W_OK) != 0)
        return false;
    std::vector<std::string> texts = {"MESSAGE=" + line.text, "PRIORITY=" + std::to_string(LOG_NOTICE),
                                      "SYSLOG_IDENTIFIER=varlo-analytics-host"};
    texts.reserve(texts.size() + line.fields.size());
    for (const auto& [name, value] : line.fields)
    {
        std::string field = "VARLO_" + name;
        std::ranges::transform(field, field.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
        texts.push_back(field + '=' + value);
    }
    std::vector<iovec> fields;
    fields.reserve(texts.size());
    for (std::string& text : texts)
        fields.push_back({text.data(), text.size()});
    return sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) == 0;
}

} // namespace analytics::platform
