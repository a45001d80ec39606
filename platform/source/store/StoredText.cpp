#include "store/StoredText.h"

#include <cstddef>
#include <string_view>

namespace analytics::platform
{
namespace
{
constexpr std::size_t kMaxBytes = 255;

struct Range
{
    char32_t first;
    char32_t last;
};
// XML 1.0, section 2.2.
constexpr Range kXmlCharacters[] = {
    {0x9, 0xa}, {0xd, 0xd}, {0x20, 0xd7ff}, {0xe000, 0xfffd}, {0x10000, 0x10ffff}};

struct Lead
{
    unsigned char mask;
    unsigned char bits;
    std::size_t length;
    char32_t least; // a smaller number would be longer than need be
};
constexpr Lead kLeads[] = {
    {0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}};

bool IsXml(char32_t character)
{
    for (const Range& range : kXmlCharacters)
        if (character >= range.first && character <= range.last)
            return true;
    return false;
}

// The first character of `text` and its length; length 0 if it isn't UTF-8.
std::size_t Decode(std::string_view text, char32_t& character)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (const Lead& lead : kLeads)
    {
        if ((byte(0) & lead.mask) != lead.bits)
            continue;
        character = static_cast<unsigned char>(byte(0) & ~lead.mask);
        for (std::size_t i = 1; i < lead.length; ++i)
        {
            if (i == text.size() || (byte(i) & 0xc0) != 0x80)
                return 0;
            character = character << 6 | (byte(i) & 0x3fu);
        }
        return character >= lead.least ? lead.length : 0;
    }
    return 0;
}

std::string TextRefusal(const std::string& what, const std::string& text)
{
    if (text.size() > kMaxBytes)
        return what + " is longer than " + std::to_string(kMaxBytes) + " bytes";
    for (std::string_view rest = text; !rest.empty();)
    {
        char32_t character = 0;
        const std::size_t length = Decode(rest, character);
        if (length == 0 || !IsXml(character))
            return what + " holds a character that XML does not allow";
        rest.remove_prefix(length);
    }
    return "";
}
} // namespace

std::string NameRefusal(const std::string& name) { return TextRefusal("The profile name", name); }
std::string PresetRefusal(const std::string& preset) { return TextRefusal("The camera preset", preset); }

} // namespace analytics::platform
