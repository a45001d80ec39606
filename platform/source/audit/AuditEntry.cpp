#include "audit/AuditEntry.h"

#include <nlohmann/json.hpp>

#include <ctime>

namespace analytics::platform
{
namespace
{
using Json = nlohmann::ordered_json;

constexpr std::size_t kMostBytes = 1024;
constexpr const char* kAccess = "access";
constexpr const char* kRoles[] = {"viewer", "operator", "administrator"};
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
            json["role"] = kRoles[static_cast<int>(entry.caller->role)];
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

} // namespace analytics::platform
