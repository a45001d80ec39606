#include "xml/Text.h"

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

// The characters that take as many bytes, from the first to the last, and how the first byte begins.
struct Form
{
    std::uint32_t first;
    std::uint32_t last;
    std::uint8_t mask;
    std::uint8_t lead;
};
constexpr Form kForms[] = {{0x0, 0x7F, 0x80, 0x00},
                           {0x80, 0x7FF, 0xE0, 0xC0},
                           {0x800, 0xFFFF, 0xF0, 0xE0},
                           {0x10000, 0x10FFFF, 0xF8, 0xF0}};

bool IsAllowed(std::uint32_t c)
{
    const bool control = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
    return !control && (c < 0xD800 || c > 0xDFFF) && c != 0xFFFE && c != 0xFFFF;
}

// The length in bytes of the allowed character at the front of `text`; 0 if there is none.
std::size_t CharacterLength(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const auto* const form = std::ranges::find_if(kForms, [lead = byte(0)](const Form& each)
                                                  { return (lead & each.mask) == each.lead; });
    if (form == std::end(kForms))
        return 0;
    const auto length = static_cast<std::size_t>(form - kForms) + 1;
    std::uint32_t character = byte(0) & static_cast<std::uint8_t>(~form->mask);
    for (std::size_t i = 1; i < length; ++i)
    {
        if (i == text.size() || (byte(i) & 0xC0) != 0x80)
            return 0;
        character = character << 6U | (byte(i) & 0x3FU);
    }
    return character >= form->first && character <= form->last && IsAllowed(character) ? length : 0;
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
