#include "audit/AuditTrail.h"

#include <endian.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace analytics::platform
{
namespace
{

constexpr sockaddr_un kJournal = {AF_UNIX, "/run/systemd/journal/socket"};

// A field in the journal's own protocol: its name, a line feed, the length of its value as 64 bits with the
// lowest byte first, the value, a line feed. So a value may hold anything.
void AddField(std::string& message, std::string_view name, std::string_view value)
{
    const std::uint64_t size = htole64(value.size());
    message.append(name).append("\n").append(reinterpret_cast<const char*>(&size), sizeof size);
    message.append(value).append("\n");
}

} // namespace

bool SendToJournal(const AuditLine& line)
{
    std::string message;
    AddField(message, "MESSAGE", line.text);
    AddField(message, "PRIORITY", std::to_string(LOG_NOTICE));
    AddField(message, "SYSLOG_IDENTIFIER", "varlo-analytics-host");
    for (const auto& [name, value] : line.fields)
    {
        std::string field = "VARLO_" + name;
        std::ranges::transform(field, field.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
        AddField(message, field, value);
    }
    const FileHandle sender(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return sendto(sender.Get(), message.data(), message.size(), MSG_NOSIGNAL,
                  reinterpret_cast<const sockaddr*>(&kJournal), sizeof kJournal) >= 0;
}

} // namespace analytics::platform
