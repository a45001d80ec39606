#pragma once

#include <string>
#include <string_view>

namespace analytics::xml
{

// Whether `text` is UTF-8 that holds nothing but characters XML 1.0 allows.
bool IsXmlText(std::string_view text);

// `text`, with U+FFFD in the place of whatever XML can't hold.
std::string ToXmlText(const std::string& text);

// A decimal integer with an optional sign and white space around it. `defaultValue` if it is none, the
// nearest int if it is beyond the range.
int ToInt(std::string_view text, int defaultValue);

} // namespace analytics::xml
