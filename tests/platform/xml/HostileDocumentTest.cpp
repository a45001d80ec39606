#include "Nodes.h"

#include <gtest/gtest.h>

#include <ctime>

// Documents that were made to cost something. Each takes minutes to hours where its guard is missing, and
// a few hundredths of a second with it; the limit leaves room for sanitizers. It is one of computing time,
// since a busy machine may keep a test waiting.
namespace analytics::test
{
namespace
{
constexpr std::clock_t kPatience = 30 * CLOCKS_PER_SEC;
constexpr int kMegabyte = 1 << 20;

class HostileDocument : public testing::Test
{
  protected:
    void SetUp() override { m_start = std::clock(); }
    void TearDown() override { EXPECT_LT(std::clock() - m_start, kPatience); }

  private:
    std::clock_t m_start = 0;
};

std::string Entities()
{
    std::string text = "<!DOCTYPE a [<!ENTITY e0 'ha'>";
    for (int i = 1; i < 30; ++i)
    {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        text += "<!ENTITY e" + std::to_string(i) + " '" + Repeat(inner, 10) + "'>";
    }
    return text + "]><a>&e29;</a>";
}

std::string Attributes(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += " a" + std::to_string(i) + "=''";
    return text;
}

TEST_F(HostileDocument, DeclarationsAreRefused)
{
    for (const std::string& text :
         {Entities(), std::string("<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"),
          std::string("<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><a>&e;</a>"),
          std::string("<!DOCTYPE a [<!ENTITY % p SYSTEM 'http://127.0.0.1:1/'>%p;]><a/>"),
          std::string("<!DOCTYPE a SYSTEM 'http://127.0.0.1:1/a.dtd'><a/>"),
          std::string("<!DOCTYPE a PUBLIC '-//A' 'a.dtd'><a/>"), std::string("<!DOCTYPE a []><a/>"),
          "<!DOCTYPE a [<!ATTLIST b c CDATA '" + std::string(kMegabyte, 'x') + "'>]><a>" +
              Repeat("<b/>", 100000) + "</a>"})
        EXPECT_FALSE(Document().ParseString(text)) << text.substr(0, 60);
}

TEST_F(HostileDocument, DepthIsBounded)
{
    EXPECT_TRUE(Document().ParseString(Repeat("<a>", 250) + Repeat("</a>", 250)));
    EXPECT_FALSE(Document().ParseString(Repeat("<a>", 300) + Repeat("</a>", 300)));
    EXPECT_FALSE(Document().ParseString(Repeat("<a>", 100000) + Repeat("</a>", 100000)));
    EXPECT_FALSE(Document().ParseString(Repeat("<a>", 100000)));
    EXPECT_FALSE(Document().ParseString(Repeat("<a>\n", kMegabyte)));
}

TEST_F(HostileDocument, AttributesAreBounded)
{
    const std::string attributes = Attributes(300000);
    EXPECT_FALSE(Document().ParseString("<a" + attributes + "/>"));
    // Behind what a reader could take for the end of a tag, the begin of a section, or an error.
    for (const char* before :
         {"<b c='>'", "<r><![CDATA[<]]><b", "<r><!-- ' --><b", "<r><? <b", "<r <!-- <b", "<r a=\"<b",
          "<r><b a=> <b", "<?p <!-- ?><b", "<!DOCTYPE a><b", "<r></r x='\"'><b"})
        EXPECT_FALSE(Document().ParseString(before + attributes + ">")) << before;
    std::string namespaces;
    for (int i = 0; i < 300000; ++i)
        namespaces += " xmlns:a" + std::to_string(i) + "='u'";
    EXPECT_FALSE(Document().ParseString("<a" + namespaces + "/>"));
    EXPECT_TRUE(Document().ParseString("<a>" + Repeat("<b" + Attributes(256) + "/>", 2000) + "</a>"));
}

TEST_F(HostileDocument, QuotesOutsideOfTagsAreNoAttributes)
{
    const std::string quotes(2000, '"');
    const std::string text = "<!--<a " + quotes + ">--><a><![CDATA[<b " + quotes + ">]]>" + quotes + "<?p " +
                             quotes + "?><c k='>" + quotes + "'/>\"</a>";
    Document doc;
    ASSERT_TRUE(doc.ParseString(text));
    EXPECT_EQ(doc.GetSingleValue("a/c/@k", nullptr).size(), quotes.size() + 1);
}

TEST_F(HostileDocument, BrokenTextIsRefused)
{
    const std::string nul("<a>\0</a>", 8);
    EXPECT_FALSE(Document().ParseString(nul));
    EXPECT_FALSE(Document().ParseString(std::string("<a/>\0", 5)));
    EXPECT_FALSE(Document().ParseString(std::string("\0", 1)));
    for (const char* bytes :
         {"\xFF", "\xC3", "\xC3(", "\xC0\x80", "\xC1\x81", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80",
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xEF\xBF\xBE", "\x01", "\x80", "\xBF\xBF"})
    {
        EXPECT_FALSE(Document().ParseString("<a>" + std::string(bytes) + "</a>"));
        EXPECT_FALSE(Document().ParseString("<a b='" + std::string(bytes) + "'/>"));
        EXPECT_FALSE(Document().ParseString("<!--" + std::string(bytes) + "--><a/>"));
        EXPECT_FALSE(Document().ParseString("<?xml version='1.0' encoding='ISO-8859-1'?><a>" +
                                            std::string(bytes) + "</a>"));
    }
    EXPECT_FALSE(Document().ParseString(std::string("\xFF\xFE<\0a\0/\0>\0", 10)));
    EXPECT_FALSE(Document().ParseString("<a>" + std::string(65U << 20U, 'x') + "</a>"));
}

TEST_F(HostileDocument, BigTextIsReadInLinearTime)
{
    const std::string big(4U * kMegabyte, 'x');
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a b='" + big + "'/>"));
    EXPECT_EQ(doc.GetSingleValue("a/@b", nullptr).size(), big.size());
    EXPECT_EQ(doc.GetSingleValue("a/@b", 1, nullptr), 1);
    for (const std::string& piece :
         {std::string("&#65;"), std::string("<![CDATA[x]]>"), std::string("x<!---->"), std::string("\r\n"),
          std::string("&lt;"), std::string("\xC3\xA9"), std::string("<?p?>"), std::string("<b/>")})
    {
        const int count = kMegabyte / static_cast<int>(piece.size());
        ASSERT_TRUE(doc.ParseString("<a>" + Repeat(piece, count) + "</a>")) << piece;
        doc.GetSingleValue("a", nullptr);
        EXPECT_TRUE(Document().ParseString(doc.DumpToString())) << piece;
    }
    ASSERT_TRUE(doc.ParseString("<a b='" + Repeat("&#65;", 800000) + "'/>"));
    EXPECT_EQ(doc.GetSingleValue("a/@b", nullptr).size(), 800000U);
}

TEST_F(HostileDocument, ManyMatchesAreSortedInLinearTime)
{
    // White space between the matches hides from the library that they are neighbours.
    for (const char* gap : {"", " ", "<c/> <c/>", "<!---->"})
    {
        Document doc;
        ASSERT_TRUE(doc.ParseString("<p:a xmlns:p='u'><p:v n='x'>" +
                                    Repeat("<p:b/>" + std::string(gap), 200000) + "</p:v></p:a>"));
        for (const char* query :
             {".//p:b", "//p:v/p:b", "p:a/p:v/p:b", "p:a/p:v[@n='x']/p:b", "//p:v[@n='x']/p:b"})
        {
            const std::vector<Node> nodes = SelectAll(doc, query);
            EXPECT_EQ(nodes.size(), 200000U) << query << gap;
        }
        doc.DeleteNodes("//p:b", nullptr);
        EXPECT_EQ(SelectAll(doc, "//p:b").size(), 0U);
    }
}

TEST_F(HostileDocument, ManyParentsAreWalkedInLinearTime)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString(
        "<r>" + Repeat("<roi> <name>n</name> <v><x>1</x> <x>2</x></v> </roi> ", 50000) + "</r>"));
    int sum = 0;
    for (const Node& roi : SelectAll(doc, ".//roi"))
    {
        sum += doc.GetSingleValue("./missing", 1, roi.get());
        for (const Node& x : SelectAll(doc, "./v/x", roi))
            sum += x->GetValue(0);
        sum += static_cast<int>(SelectAll(doc, ".//v[x='2']", roi).size());
    }
    EXPECT_EQ(sum, 50000 * 5);
    EXPECT_EQ(SelectAll(doc, "//roi[name='n']/v/x").size(), 100000U);
}

TEST_F(HostileDocument, NamespacesAreLookedForOnceInEachElement)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString(Repeat("<b" + Attributes(250) + ">", 250) + "<c xmlns:p='u'/>" +
                                Repeat("<c><b/></c>", 50000) + Repeat("</b>", 250)));
    EXPECT_EQ(SelectAll(doc, "//b").size(), 50250U);
}

TEST_F(HostileDocument, GrowthIsWrittenWhole)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    const Node root = Select(doc, "a");
    constexpr std::size_t kMany = 1'200'000;
    for (std::size_t i = 0; i < kMany; ++i)
        delete root->AddNewChild("b", "");
    EXPECT_EQ(Body(doc).size(), std::string("<a></a>").size() + kMany * std::string("<b/>").size());
}

// Deeper than what is read: the writer is no deeper than the machine allows.
TEST_F(HostileDocument, DepthIsWritten)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    Node node = Select(doc, "a");
    constexpr int kDepth = 100'000;
    for (int i = 0; i < kDepth; ++i)
        node.reset(node->AddNewChild("b", ""));
    EXPECT_GT(doc.DumpToString().size(), 7U * (kDepth - 1));
}

TEST_F(HostileDocument, SaysNothingOnStandardError)
{
    testing::internal::CaptureStderr();
    Document doc;
    for (const char* text : {"<a", "<p:a/>", "<a>&e;</a>", "<?xml version='2.0'?><a/>",
                             "<a xmlns='relative'/>", "<a xml:lang=''/>", "<a xmlns:xml='u'/>", "\xFF"})
        doc.ParseString(text);
    ASSERT_TRUE(doc.ParseString("<a xml:id='1'><b xml:id='1'/></a>"));
    for (const char* query : {"[", "//p:a", "no()", "a[", "$v", "p:f()", "//a[$p:v]"})
        delete doc.SelectNode(query, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
} // namespace
} // namespace analytics::test
