#pragma once

#include <pugixml.hpp>

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace analytics::platform
{

enum class Takes
{
    Text,
    Several, // may come more than once: one of a list, or what only holds other elements
    Number,
    Address // a numeric one
};

// What a document that an operator writes may hold.
struct Known
{
    std::string_view path; // of an element, or of an attribute behind '@'
    Takes takes = Takes::Text;
    std::int64_t least = 0; // of numbers
    std::int64_t most = std::numeric_limits<std::int32_t>::max();
};

// The unknown names and unusable values at `element` and below, a sentence each that begins with `path` and
// the line. It is the root of a tree that xml::Read() has read from `text`; null has no mistakes.
std::vector<std::string> MistakesIn(const std::string& path, const std::string& text, pugi::xml_node element,
                                    std::span<const Known> known);

} // namespace analytics::platform
