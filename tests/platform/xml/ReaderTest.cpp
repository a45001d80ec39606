#include "xml/Reader.h"

#include <gmock/gmock.h>

#include <thread>

namespace analytics::test
{
namespace
{

using xml::Check;
using xml::Read;
using xml::SyntaxError;

struct Refusal
{
    const char* text;
    int line;
    int column;
    const char* reason;
};

TEST(Reader, SaysWhereAndWhyItRefuses)
{
    const Refusal refusals[] = {
        {"", 1, 1, "the document is empty"},
        {"<a>\n  <b>\n</a>", 3, 3, "mismatched tag"},
        {"<a>\n\xC3\xA9\xC3\xA9<p:b/></a>", 2, 3, "unbound prefix"},
        {"<a>\n&e;</a>", 2, 1, "undefined entity"},
        {"<a\n b='1'\n b='2'/>", 3, 2, "duplicate attribute"},
        {"<a xmlns:p='u' xmlns:q='u' p:k='1' q:k='2'/>", 1, 1, "duplicate attribute"},
        {"<?xml version='2.0'?><a/>", 1, 1, "the version of XML is not 1.0"},
        {"<?xml version='1.x'?><a/>", 1, 1, "the version of XML is not 1.0"},
        {"\n<!DOCTYPE a [<!ENTITY e 'x'>]><a/>", 2, 13, "a document type declaration is not accepted"},
    };
    for (const Refusal& refusal : refusals)
    {
        SyntaxError error;
        pugi::xml_document tree;
        EXPECT_FALSE(Read(refusal.text, tree, error)) << refusal.text;
        EXPECT_EQ(error.reason, refusal.reason) << refusal.text;
        EXPECT_EQ(error.line, refusal.line) << refusal.text;
        EXPECT_EQ(error.column, refusal.column) << refusal.text;
    }
}

TEST(Reader, CountsElementsAndBytes)
{
    SyntaxError error;
    const auto survey = Check("<a><b/><c>t</c></a>", error);
    ASSERT_TRUE(survey) << error.reason;
    EXPECT_EQ(survey->elements, 3U);
    std::string largest = "<a/>";
    largest.resize(std::size_t{64} << 20U, ' ');
    EXPECT_TRUE(Check(largest, error)) << error.reason;
    EXPECT_FALSE(Check(largest + ' ', error));
    EXPECT_EQ(error.line, 0);
}

TEST(Reader, TellsWhatItSaw)
{
    SyntaxError error;
    EXPECT_FALSE(Check("<a>&lt;![CDATA[</a>", error)->sections);
    EXPECT_TRUE(Check("<a><![CDATA[]]></a>", error)->sections);
}

TEST(Reader, FindsTheLinesOfNodes)
{
    for (const std::string end : {"\n", "\r\n", "\r"})
    {
        const std::string text = "\xEF\xBB\xBF<?xml version='1.0'?>" + end + "<a>" + end + "<b k='" + end +
                                 end + "'/>&lt;" + end + "<?p x" + end + "?><![CDATA[" + end + "]]><c/></a>";
        pugi::xml_document tree;
        SyntaxError error;
        ASSERT_TRUE(Read(text, tree, error)) << error.reason;
        const xml::Lines lines(text);
        const pugi::xml_node root = tree.document_element();
        EXPECT_EQ(lines.Of(root), 2);
        EXPECT_EQ(lines.Of(root.child("b")), 3);
        EXPECT_EQ(lines.Of(root.child("p")), 6);
        EXPECT_EQ(lines.Of(root.child("c")), 8);
        EXPECT_EQ(lines.Of(root.child("none")), 0);
        EXPECT_STREQ(root.child("p").value(), "x\n");
        EXPECT_EQ(xml::Content(root), "\n<\n\n");
    }
}

// A parser is kept by each thread; nothing of one text may show in the next.
TEST(Reader, BeginsAnewWithEachText)
{
    const auto work = []
    {
        SyntaxError error;
        for (int i = 0; i < 50; ++i)
        {
            EXPECT_FALSE(Check("<a xmlns:p='u'><b>", error));
            EXPECT_FALSE(Check("<p:a/>", error));
            EXPECT_EQ(error.reason, "unbound prefix");
            EXPECT_TRUE(Check("<a>" + std::string(100'000, 'x') + "</a>", error));
            EXPECT_EQ(Check("<a/>", error)->elements, 1U);
        }
    };
    std::thread other(work);
    work();
    other.join();
}

} // namespace
} // namespace analytics::test
