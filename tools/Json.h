#pragma once

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

namespace client
{

// Members keep their order.
using Json = nlohmann::ordered_json;

// Why a text isn't taken as JSON: a sentence without its full stop.
struct JsonError : std::runtime_error
{
    JsonError(const std::string& why, long where) : std::runtime_error(why), line(where) {}

    long line; // 0: unknown
};

// Reads what comes from outside. Throws JsonError if it isn't JSON, has more than
// 256 levels, or an object has a member twice.
Json ParseJson(const std::string& text);

// In one line, in ASCII, so that nothing in it controls a terminal. Invalid UTF-8 becomes U+FFFD.
std::string JsonLine(const Json& json);

} // namespace client
