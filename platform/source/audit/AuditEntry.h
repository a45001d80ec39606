#pragma once

#include "request/Request.h"

#include <chrono>
#include <cstddef>
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

// Texts are cut to 1,024 bytes; bytes that are no UTF-8 become U+FFFD.
AuditLine FormatAudit(const AuditEntry& entry, std::chrono::system_clock::time_point time);

} // namespace analytics::platform
