#include "xml/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace analytics::xml
{
namespace
{
// The characters that take as many bytes, from the first to the last, and how the first byte begins.
struct Form
{
    char32_t first;
    char32_t last;
    std::uint8_t mask;
    std::uint8_t lead;
};
constexpr Form kForms[] = {{0x0, 0x7F, 0x80, 0x00},
                           {0x80, 0x7FF, 0xE0, 0xC0},
                           {0x800, 0xFFFF, 0xF0, 0xE0},
                           {0x10000, 0x10FFFF, 0xF8, 0xF0}};

bool IsPlain(char character) { return (character >= 0x20 && character < 0x7F) || character == '\n'; }

bool IsAllowed(char32_t character)
{
    return character == '\t' || character == '\n' || character == '\r' ||
           (character >= 0x20 && character <= 0x10FFFF && character != 0xFFFE && character != 0xFFFF);
}
} // namespace

Utf8 FirstCharacter(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const auto* const form = std::ranges::find_if(kForms, [lead = byte(0)](const Form& each)
                                                  { return (lead & each.mask) == each.lead; });
    if (form == std::end(kForms))
        return {};
    const auto size = static_cast<std::size_t>(form - kForms) + 1;
    char32_t character = byte(0) & static_cast<std::uint8_t>(~form->mask);
    std::size_t taken = 1;
    for (; taken < std::min(size, text.size()) && (byte(taken) & 0xC0) == 0x80; ++taken)
        character = character << 6U | (byte(taken) & 0x3FU);
    const bool whole = taken == size && character >= form->first && character <= form->last &&
                       (character < 0xD800 || character > 0xDFFF);
    return {whole ? character : kNoCharacter, taken};
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
