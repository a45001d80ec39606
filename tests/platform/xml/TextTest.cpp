#include "xml/Text.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <optional>

namespace analytics::test
{
namespace
{
template <class T>
std::optional<T> Integer(std::string_view text)
{
    T value = 0;
    return xml::ReadInteger(text, value) == std::errc() ? std::optional(value) : std::nullopt;
}

TEST(Text, ReadsWholeIntegersThatFit)
{
    EXPECT_EQ(Integer<int>("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Integer<int>("+7"), 7);
    EXPECT_EQ(Integer<std::uint16_t>("65535"), 65535);
    for (const char* const text : {"", "+", "-", "+-7", "7 ", " 7", "7x", "0x7", "65536", "-1"})
        EXPECT_EQ(Integer<std::uint16_t>(text), std::nullopt) << text;
    int kept = 3;
    EXPECT_NE(xml::ReadInteger("7x", kept), std::errc());
    EXPECT_EQ(kept, 3);
}

TEST(Text, TakesTheNearestIntOfANumberBeyondTheRange)
{
    EXPECT_EQ(xml::ToInt(" +99999999999999999999\n", 1), 2147483647);
    EXPECT_EQ(xml::ToInt("-99999999999999999999", 1), -2147483647 - 1);
    EXPECT_EQ(xml::ToInt("99999999999999999999x", 1), 1);
    EXPECT_EQ(xml::ToInt(" \n", 1), 1);
}

TEST(Text, DecodesOneCharacter)
{
    struct Decoded
    {
        std::string text;
        char32_t character;
        std::size_t bytes;
    };
    for (const Decoded& c :
         {Decoded{"aa", U'a', 1}, Decoded{"\xC3\xA9", 0xE9, 2}, Decoded{"\xE2\x82\xACx", 0x20AC, 3},
          Decoded{"\xF0\x9F\x98\x80", 0x1F600, 4}, Decoded{"\xF4\x90\x80\x80", xml::kNoCharacter, 1},
          Decoded{"\xC0\xAF", xml::kNoCharacter, 1}, Decoded{"\xED\xA0\x80", xml::kNoCharacter, 1},
          Decoded{"\xE2\x82", xml::kNoCharacter, 1},
          Decoded{"\xE2"
                  "a",
                  xml::kNoCharacter, 1},
          Decoded{"\x80", xml::kNoCharacter, 1}, Decoded{"\xFF", xml::kNoCharacter, 1}})
    {
        const xml::Utf8 first = xml::FirstCharacter(c.text);
        EXPECT_EQ(first.character, c.character) << testing::PrintToString(c.text);
        EXPECT_EQ(first.bytes, c.bytes) << testing::PrintToString(c.text);
    }
}

TEST(Text, ReplacesWhatXmlCannotHold)
{
    EXPECT_EQ(xml::ToXmlText("a\x01\xE2\x82z\xEF\xBF\xBF"), "a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDz"
                                                            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(xml::ToXmlText("\xFF\t\xC3\xA9", "?"), "?\t\xC3\xA9");
}
} // namespace
} // namespace analytics::test
