#include "Text.h"

#include <xml/Text.h>

#include <cstdio>
#include <cwchar>

namespace client
{
namespace
{

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000}; // with so many bytes more
constexpr char32_t kLead[] = {0, 0xC0, 0xE0, 0xF0};

bool ControlsTerminal(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x061C || c == 0xFEFF;
}

} // namespace

char32_t TakeCharacter(std::string_view& text)
{
    const analytics::xml::Utf8 first = analytics::xml::FirstCharacter(text);
    text.remove_prefix(first.bytes);
    return first.character == analytics::xml::kNoCharacter ? kReplacement : first.character;
}

void AppendCharacter(std::string& text, char32_t character)
{
    const auto append = [&text](char32_t bits)
    { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    std::size_t more = 3;
    while (more > 0 && character < kLeast[more])
        --more;
    append(kLead[more] | character >> (6 * more));
    while (more-- > 0)
        append(0x80 | (character >> (6 * more) & 0x3F));
}

std::string Printable(std::string_view text, bool lines)
{
    std::string result;
    while (!text.empty())
    {
        const char32_t character = TakeCharacter(text);
        if (!ControlsTerminal(character) || (lines && (character == U'\n' || character == U'\t')))
        {
            AppendCharacter(result, character);
            continue;
        }
        char number[16];
        std::snprintf(number, sizeof number, "<U+%04X>", static_cast<unsigned>(character));
        result += number;
    }
    return result;
}

std::size_t Width(std::string_view text)
{
    std::size_t width = 0;
    while (!text.empty())
    {
        const int columns = wcwidth(static_cast<wchar_t>(TakeCharacter(text)));
        width += columns < 0 ? 1 : static_cast<std::size_t>(columns);
    }
    return width;
}

std::string Trimmed(std::string_view text) { return std::string(analytics::xml::Trimmed(text)); }

std::string Sentence(std::string text)
{
    if (!text.empty() && std::string_view(".!?").find(text.back()) == std::string_view::npos)
        text += '.';
    return text;
}

std::optional<long long> Integer(std::string_view text)
{
    long long value = 0;
    return analytics::xml::ReadInteger(analytics::xml::Trimmed(text), value) == std::errc()
               ? std::optional(value)
               : std::nullopt;
}

} // namespace client
