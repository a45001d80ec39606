#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <system_error>

namespace analytics::xml
{

inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

// What a text begins with.
struct Utf8
{
    char32_t character = kNoCharacter; // stays if the bytes aren't UTF-8
    std::size_t bytes = 1;             // that it takes
};
Utf8 FirstCharacter(std::string_view text); // of a text that isn't empty

// Whether `text` is UTF-8 that holds nothing but characters XML 1.0 allows.
bool IsXmlText(std::string_view text);

// `text`, with `replacement`, U+FFFD, in the place of each byte of what XML can't hold.
std::string ToXmlText(std::string_view text, std::string_view replacement = "\xEF\xBF\xBD");

std::string_view Trimmed(std::string_view text); // without white space in front and behind

// The whole text as an integer with an optional sign. Anything but std::errc() leaves `value` alone.
template <class T>
std::errc ReadInteger(std::string_view text, T& value, int base = 10)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    T read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read, base);
    if (error == std::errc() && end == text.data() + text.size())
        value = read;
    return end == text.data() + text.size() ? error : std::errc::invalid_argument;
}

// An int with white space around it. `defaultValue` if it isn't one; beyond the range the nearest int.
int ToInt(std::string_view text, int defaultValue);

} // namespace analytics::xml
