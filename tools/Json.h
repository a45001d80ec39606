#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace client
{

// Members keep their order.
using Json = nlohmann::ordered_json;

// In one line, in ASCII, so that nothing in it controls a terminal. Invalid UTF-8 becomes U+FFFD.
std::string JsonLine(const Json& json);

} // namespace client
