#include "xml/Text.h"

#include <libxml/parserInternals.h>
#include <libxml/xmlstring.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace analytics::xml
{
namespace
{
constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr const char* kReplacement = "\xEF\xBF\xBD";

// The length in bytes of the allowed character at the front of `text`; 0 if there is none.
std::size_t CharacterLength(std::string_view text)
{
    int length = static_cast<int>(text.size() < 4 ? text.size() : 4);
    const int character = xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data()), &length);
    if (character < 0 || !IS_CHAR(character))
        return 0;
    // The library reads over-long forms and stray bytes as characters: written again, those come out
    // differently.
    char bytes[8];
    const int written = xmlCopyCharMultiByte(reinterpret_cast<xmlChar*>(bytes), character);
    const std::string_view proper(bytes, static_cast<std::size_t>(written));
    return text.starts_with(proper) ? proper.size() : 0;
}

bool IsPlain(char character) { return (character >= 0x20 && character < 0x7F) || character == '\n'; }

// The length of a start of `text` that is plain, by eight characters at a time: none is above 0x7F, and
// none goes below zero when 0x20 is taken from each.
std::size_t PlainBlocks(std::string_view text)
{
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    constexpr std::uint64_t kSpaces = 0x2020202020202020;
    std::size_t length = 0;
    for (std::uint64_t block = 0; length + sizeof(block) <= text.size(); length += sizeof(block))
    {
        std::memcpy(&block, text.data() + length, sizeof(block));
        if (((block | (block - kSpaces)) & kHighBits) != 0)
            break;
    }
    return length;
}
} // namespace

bool IsXmlText(std::string_view text)
{
    for (;;)
    {
        const auto* const other = std::find_if_not(text.begin() + PlainBlocks(text), text.end(), IsPlain);
        text.remove_prefix(static_cast<std::size_t>(other - text.begin()));
        if (text.empty())
            return true;
        const std::size_t length = CharacterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
}

std::string ToXmlText(const std::string& text)
{
    if (IsXmlText(text))
        return text;
    std::string result;
    for (std::string_view rest = text; !rest.empty();)
    {
        const std::size_t length = CharacterLength(rest);
        result += length == 0 ? std::string_view(kReplacement) : rest.substr(0, length);
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

int ToInt(std::string_view text, int defaultValue)
{
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos)
        return defaultValue;
    text = text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
        return defaultValue;
    if (error == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    return value;
}

} // namespace analytics::xml
