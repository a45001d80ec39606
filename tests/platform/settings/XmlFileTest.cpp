#include "xml/XmlFile.h"

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

#include <chrono>

using analytics::platform::XmlFile;
using analytics::xml::SyntaxError;
using testing::HasSubstr;

namespace
{
struct BrokenText
{
    std::string text;
    int line;
};

SyntaxError ErrorOf(const std::string& text)
{
    SyntaxError error;
    EXPECT_EQ(XmlFile::Parse(text, error), nullptr);
    return error;
}
} // namespace

TEST(XmlFileTest, NamesTheLineOfTheFirstErrorAndWritesNothing)
{
    const BrokenText cases[] = {
        {"", 1},
        {"no xml", 1},
        {"<a>\n<b>\n</a>", 3},
        {"<a/>\n<b/>", 2},
        {"<a>\n&nothing;</a>", 2},
        {"<a>\n\xff</a>", 2},
        {"<a>\n&#1;</a>", 2},
        {"<a b='1'\nb='2'/>", 2},
        {std::string(70000, '\n') + "<a>", 70001},
        {std::string("<a>\n\0</a>", 9), 2},
    };
    const std::string said = ErrorsOf(
        [&]
        {
            for (const BrokenText& broken : cases)
            {
                const SyntaxError error = ErrorOf(broken.text);
                EXPECT_EQ(error.line, broken.line) << broken.text.substr(0, 30) << " " << error.reason;
                EXPECT_NE(error.reason, "");
            }
        });
    EXPECT_EQ(said, "");
}

TEST(XmlFileTest, KnowsNoEntitiesOfADocument)
{
    std::string bomb = "<!DOCTYPE a [<!ENTITY x0 'xxxxxxxxxx'>";
    for (int i = 1; i < 30; ++i)
    {
        bomb += "<!ENTITY x" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j)
            bomb += "&x" + std::to_string(i - 1) + ";";
        bomb += "'>";
    }
    for (const std::string& text :
         {bomb + "]><a>&x29;</a>", bomb + "]><a b='&x29;'/>",
          std::string("<!DOCTYPE a [<!ENTITY p SYSTEM 'file:///etc/passwd'>]><a>&p;</a>")})
        EXPECT_EQ(ErrorOf(text).reason, "a document type declaration is not accepted");
    EXPECT_THAT(ErrorOf("<!DOCTYPE a SYSTEM 'file:///none.dtd'><a>&p;</a>").reason, HasSubstr("entity"));
    SyntaxError error;
    const auto fine = XmlFile::Parse("<!DOCTYPE a SYSTEM 'file:///none.dtd'><a>&lt;&#65;</a>", error);
    ASSERT_NE(fine, nullptr) << error.reason;
    EXPECT_EQ(fine->Texts("/a").front().text, "<A");
}

TEST(XmlFileTest, BoundsTheDepth)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<a>";
    EXPECT_EQ(ErrorOf(deep).reason, "the elements are nested too deeply");
}

TEST(XmlFileTest, GivesTextsWithTheirLines)
{
    SyntaxError error;
    const auto file =
        XmlFile::Parse("<a>\n<b> one </b>\n\n<b><c>t</c><![CDATA[w]]><!-- no -->o</b></a>", error);
    ASSERT_NE(file, nullptr);
    const auto texts = file->Texts("//b");
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0].text, "one");
    EXPECT_EQ(texts[0].line, 2);
    EXPECT_EQ(texts[1].text, "two");
    EXPECT_EQ(texts[1].line, 4);
    EXPECT_EQ(file->Texts("name(/*)").front().text, "a");
    EXPECT_EQ(file->Texts("//b[").size(), 0u);
    EXPECT_EQ(file->Texts("count(//b)").front().text, "2");
}
