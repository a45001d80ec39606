// Which texts can be a profile's name or camera preset.

#include "platform/store/StoreFixture.h"

class ProfileNamesTest : public StoreFixture
{
  protected:
    // Empty if the text was taken and is what is read again.
    std::string NameRefusal(const std::string& text)
    {
        if (m_profile == 0)
            m_profile = Create();
        const std::string fault = ClientFaultOf([&] { m_manager->SetProfileName(m_profile, text); });
        if (fault != "(no fault)")
            return fault;
        return m_manager->GetProfileName(m_profile) == text ? "" : "it reads as another";
    }

    int m_profile = 0;
};

namespace
{
constexpr const char* kForbidden = "The profile name holds a character that XML does not allow";
}

TEST_F(ProfileNamesTest, TakesWhatXmlAllows)
{
    for (const char* text :
         {"", "name", "\t\n\r", " ~", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
          "\xee\x80\x80", "\xef\xbf\xbd", "\xf0\x90\x80\x80", "\xf0\x9f\x98\x80", "\xf0\x9f\xbf\xbe",
          "\xf4\x8f\xbf\xbf", "Gr\xc3\xbc\xc3\x9f", "<&>\"'"})
        EXPECT_EQ(NameRefusal(text), "") << text;
}

TEST_F(ProfileNamesTest, RefusesWhatIsNoUtf8OrNoXml)
{
    const std::string texts[] = {
        std::string(1, '\0'),
        "\x01",
        "\x08",
        "\x0b",
        "\x0c",
        "\x0e",
        "\x1f",
        "\x80", // a continuation without a beginning
        "\xbf",
        "\xc3", // cut short
        "\xe2\x82",
        "\xf0\x9f\x98",
        "\xc3(",
        "\xe2\x82(",
        "\xc0\x80", // longer than need be
        "\xc1\xbf",
        "\xe0\x9f\xbf",
        "\xf0\x8f\xbf\xbf",
        "\xed\xa0\x80", // surrogates
        "\xed\xbf\xbf",
        "\xef\xbf\xbe",     // U+FFFE
        "\xef\xbf\xbf",     // U+FFFF
        "\xf4\x90\x80\x80", // above U+10FFFF
        "\xf5\x80\x80\x80",
        "\xf8\x88\x80\x80\x80",
        "\xfe",
        "\xff",
    };
    for (const std::string& text : texts)
    {
        EXPECT_EQ(NameRefusal(text), kForbidden) << testing::PrintToString(text);
        EXPECT_EQ(NameRefusal("a" + text + "b"), kForbidden) << testing::PrintToString(text);
        EXPECT_EQ(NameRefusal("a" + text), kForbidden) << testing::PrintToString(text);
    }
}

TEST_F(ProfileNamesTest, CountsBytes)
{
    std::string umlauts;
    for (int i = 0; i < 127; ++i)
        umlauts += "\xc3\xa4";
    EXPECT_EQ(NameRefusal(umlauts + "a"), "");
    EXPECT_EQ(NameRefusal(umlauts + "\xc3\xa4"), "The profile name is longer than 255 bytes");
    EXPECT_EQ(NameRefusal(std::string(256, '\x01')), "The profile name is longer than 255 bytes");
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetCameraPreset(1, std::string(256, 'a')); }),
              "The camera preset is longer than 255 bytes");
}
