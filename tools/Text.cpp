#include "Text.h"

#include <cstdio>
#include <cwchar>

namespace client
{
namespace
{

constexpr char32_t kReplacement = 0xFFFD;

struct Lead
{
    unsigned char mask;
    unsigned char bits;
    std::size_t more;
    char32_t least;
};
constexpr Lead kLeads[] = {
    {0x80, 0x00, 0, 0}, {0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};

unsigned char Byte(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

bool ControlsTerminal(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0x061C || c == 0xFEFF;
}

} // namespace

char32_t TakeCharacter(std::string_view& text)
{
    for (const Lead& lead : kLeads)
    {
        if ((Byte(text, 0) & lead.mask) != lead.bits)
            continue;
        char32_t character = Byte(text, 0) & static_cast<unsigned char>(~lead.mask);
        std::size_t taken = 1;
        for (; taken <= lead.more && taken < text.size() && (Byte(text, taken) & 0xC0) == 0x80; ++taken)
            character = character << 6 | (Byte(text, taken) & 0x3Fu);
        text.remove_prefix(taken);
        const bool whole = taken == lead.more + 1 && character >= lead.least && character <= 0x10FFFF &&
                           (character < 0xD800 || character > 0xDFFF);
        return whole ? character : kReplacement;
    }
    text.remove_prefix(1);
    return kReplacement;
}

void AppendCharacter(std::string& text, char32_t character)
{
    const auto append = [&text](char32_t bits)
    { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    std::size_t more = 3;
    while (more > 0 && character < kLeads[more].least)
        --more;
    append(kLeads[more].bits | character >> (6 * more));
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

std::string Trimmed(std::string_view text)
{
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos)
        return "";
    return std::string(text.substr(first, text.find_last_not_of(kSpace) - first + 1));
}

} // namespace client
