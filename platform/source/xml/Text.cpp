#include "xml/Text.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <limits>

namespace analytics::xml
{
namespace
{
bool IsPlain(char character) { return (character >= 0x20 && character < 0x7F) || character == '\n'; }

bool IsAllowed(char32_t character)
{
    return character == '\t' || character == '\n' || character == '\r' ||
           (character >= 0x20 && character <= 0x10FFFF && character != 0xFFFE && character != 0xFFFF);
}
} // namespace

Utf8 FirstCharacter(std::string_view text)
{
    const char* end = text.data();
    const auto character = boost::locale::utf::utf_traits<char>::decode(end, text.data() + text.size());
    if (character == boost::locale::utf::illegal || character == boost::locale::utf::incomplete)
        return {};
    return {character, static_cast<std::size_t>(end - text.data())};
}

bool IsXmlText(std::string_view text)
{
    for (;;)
    {
        text.remove_prefix(static_cast<std::size_t>(std::ranges::find_if_not(text, IsPlain) - text.begin()));
        if (text.empty())
            return true;
        const Utf8 first = FirstCharacter(text);
        if (!IsAllowed(first.character))
            return false;
        text.remove_prefix(first.bytes);
    }
}

std::string ToXmlText(std::string_view text, std::string_view replacement)
{
    if (IsXmlText(text))
        return std::string(text);
    std::string result;
    while (!text.empty())
    {
        const Utf8 first = FirstCharacter(text);
        const bool allowed = IsAllowed(first.character);
        result += allowed ? text.substr(0, first.bytes) : replacement;
        text.remove_prefix(allowed ? first.bytes : 1);
    }
    return result;
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

int ToInt(std::string_view text, int defaultValue)
{
    int value = defaultValue;
    std::errc error = ReadInteger(text, value);
    if (error == std::errc::invalid_argument)
        error = ReadInteger(text = Trimmed(text), value);
    if (error != std::errc::result_out_of_range)
        return value;
    return text.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

} // namespace analytics::xml
