#include <analytics/Document.h>

#include "Nodes.h"

#include <gmock/gmock.h>

namespace analytics::test
{
namespace
{
constexpr char kBehavior[] = R"(<?xml version="1.0" encoding="utf-8"?>
<behavior version="2.0" id="urn:x" active="1"><rois>
  <roi><name>A &amp; B</name><dwellTime min="5"> 12 </dwellTime></roi>
  <roi><name>second</name></roi>
</rois><empty/></behavior>)";

class DocumentTest : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_TRUE(doc.ParseString(kBehavior)); }
    Document doc;
};

TEST(Document, TakesWellFormedTextOnly)
{
    for (const char* text :
         {"<a/>", "  <a/>", "<a>&lt;&#65;</a>", "<!-- c --><a/><?p i?>", "<!DOCTYPE a><a/>",
          "\xEF\xBB\xBF<a/>", "<p:a xmlns:p='urn:p'/>", "<?xml version='1.0'?><a/>"})
        EXPECT_TRUE(Document().ParseString(text)) << text;
    for (const char* text : {"", " ", "text", "<a>", "<a></b>", "<a/><b/>", "<a b/>", "<a b='1' b='2'/>",
                             "<a>&amp</a>", "<a>&unknown;</a>", "<a><![CDATA[x</a>", "<1/>", "<a b='<'/>",
                             "x<a/>", "<a>]]></a>", "<a>&#0;</a>", "<a>&#1;</a>", "<a/>trailing"})
        EXPECT_FALSE(Document().ParseString(text)) << text;
}

TEST(Document, IsEmptyBeforeParsingAndAfterRefusal)
{
    Document doc;
    for (const char* step : {"new", "refused"})
    {
        EXPECT_EQ(doc.DumpToString(), "") << step;
        EXPECT_EQ(doc.SelectNode("//a", nullptr), nullptr) << step;
        EXPECT_TRUE(doc.SelectNodes("//a", nullptr).empty()) << step;
        EXPECT_EQ(doc.GetSingleValue("//a", nullptr), "") << step;
        EXPECT_EQ(doc.GetSingleValue("a", 7, nullptr), 7) << step;
        doc.DeleteNodes("//a", nullptr);
        ASSERT_TRUE(doc.ParseString("<a>1</a>"));
        ASSERT_FALSE(doc.ParseString("<a>"));
    }
}

TEST(Document, ReplacesItsContent)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a>1</a>"));
    EXPECT_EQ(doc.GetSingleValue("//a", nullptr), "1");
    ASSERT_TRUE(doc.ParseString("<b>2</b>"));
    EXPECT_EQ(doc.GetSingleValue("//a", nullptr), "");
    EXPECT_EQ(doc.GetSingleValue("//b", nullptr), "2");
}

TEST(Document, TakesTextAsUtf8WhateverItDeclares)
{
    for (const char* encoding : {"utf-8", "ISO-8859-1", "UTF-16", "windows-1252", "no-such-encoding"})
    {
        Document doc;
        ASSERT_TRUE(
            doc.ParseString("<?xml version='1.0' encoding='" + std::string(encoding) + "'?><a>\xC3\xA9</a>"))
            << encoding;
        EXPECT_EQ(doc.GetSingleValue("a", nullptr), "\xC3\xA9");
        EXPECT_THAT(doc.DumpToString(), testing::StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
        EXPECT_THAT(doc.DumpToString(), testing::HasSubstr("\xC3\xA9"));
    }
}

TEST(Document, ReadsCdataAsText)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a>x<![CDATA[<b>&]]>y</a>"));
    EXPECT_EQ(doc.GetSingleValue("a", nullptr), "x<b>&y");
    EXPECT_EQ(Body(doc), "<a>x&lt;b&gt;&amp;y</a>");
    ASSERT_TRUE(doc.ParseString("<a><![CDATA[]]></a>"));
    EXPECT_EQ(Body(doc), "<a/>");
}

TEST_F(DocumentTest, FindsNothingQuietly)
{
    const Node rois = Select(doc, "//rois");
    for (const char* query : {"./none", "none/name", "//none", ".//none", "none[@a='1']", "./roi/@none"})
    {
        EXPECT_EQ(doc.SelectNode(query, rois.get()), nullptr) << query;
        EXPECT_TRUE(doc.SelectNodes(query, rois.get()).empty()) << query;
        EXPECT_EQ(doc.GetSingleValue(query, rois.get()), "") << query;
        doc.DeleteNodes(query, rois.get());
    }
    EXPECT_EQ(Texts(doc, "//name"), "A & B second");
}

TEST_F(DocumentTest, ReadsSingleValues)
{
    const std::vector<Node> rois = SelectAll(doc, "//roi");
    EXPECT_EQ(doc.GetSingleValue("./name", rois[0].get()), "A & B");
    EXPECT_EQ(doc.GetSingleValue("./dwellTime", 5, rois[0].get()), 12);
    EXPECT_EQ(doc.GetSingleValue("./dwellTime", 5, rois[1].get()), 5);
    EXPECT_EQ(doc.GetSingleValue("./dwellTime/@min", 7, rois[0].get()), 5);
    EXPECT_EQ(doc.GetSingleValue("./dwellTime/@max", 7, rois[0].get()), 7);
    EXPECT_EQ(doc.GetSingleValue("./name", 9, rois[0].get()), 9) << "a text that is no number";
}

TEST_F(DocumentTest, DumpsWhatItReads)
{
    const std::string text = doc.DumpToString();
    EXPECT_THAT(text, testing::StartsWith("<?xml version=\"1.0\""));
    EXPECT_EQ(doc.DumpToString(), text);
    Document again;
    ASSERT_TRUE(again.ParseString(text));
    EXPECT_EQ(again.DumpToString(), text);
}

TEST_F(DocumentTest, KeepsTheNodeWhenAHandleEnds)
{
    const std::string before = doc.DumpToString();
    delete doc.SelectNode("//roi", nullptr);
    for (DocumentNode* handle : doc.SelectNodes("//*", nullptr))
        delete handle;
    EXPECT_EQ(doc.DumpToString(), before);
}

TEST(Document, DeletesEveryMatch)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a><b><b/><c/></b><c x='1'/><d/></a>"));
    doc.DeleteNodes("//b", nullptr);
    EXPECT_EQ(Body(doc), "<a><c x=\"1\"/><d/></a>");
    doc.DeleteNodes("//@x", nullptr);
    EXPECT_EQ(Body(doc), "<a><c/><d/></a>");
    const Node root = Select(doc, "a");
    doc.DeleteNodes("c", root.get());
    EXPECT_EQ(Body(doc), "<a><d/></a>");
    doc.DeleteNodes("//d", nullptr);
    doc.DeleteNodes("//a", nullptr);
    EXPECT_EQ(doc.SelectNode("//*", nullptr), nullptr);
}

TEST(Document, WritesAnyNamespaceSoThatItCanBeRead)
{
    for (const std::string start : {"", "<!DOCTYPE a>"})
    {
        Document doc;
        ASSERT_TRUE(
            doc.ParseString(start + "<a xmlns:p=\"urn:x?a=1&amp;b&lt;'&quot;&#10;\"><p:b p:c=\"1\"/></a>"));
        const std::string text = doc.DumpToString();
        const Node root = Select(doc, "/*");
        for (const std::string& dump : {text, start + root->DumpToString()})
        {
            Document again;
            ASSERT_TRUE(again.ParseString(dump)) << dump;
            EXPECT_EQ(again.DumpToString(), text);
            EXPECT_NE(Select(again, "//p:b"), nullptr);
        }
    }
}

TEST(Document, KnowsALargeTextAgainAndNoneLikeIt)
{
    const std::string items(50'000, 'x');
    const std::string text = "<a>" + items + "<b>\xC3\xA9</b>" + items + "</a>";
    std::string other = text;
    other[3 + items.size() + 1] = 'c'; // <c> ... </b>
    Document doc;
    for (int time = 0; time < 4; ++time)
    {
        ASSERT_TRUE(doc.ParseString(text));
        EXPECT_EQ(doc.GetSingleValue("//b", nullptr), "\xC3\xA9");
        EXPECT_FALSE(doc.ParseString(other));
        ASSERT_TRUE(doc.ParseString(text));
        ASSERT_TRUE(doc.ParseString(text));
    }
}

TEST(Document, WritesALargeTextIntoHardlyMoreThanItsSize)
{
    std::string text = "<a>";
    for (int i = 0; i < 30'000; ++i)
        text += "<b c=\"1\">2</b>";
    text += "<b>&#13;&#13;</b></a>";
    Document doc;
    ASSERT_TRUE(doc.ParseString(text));
    std::string dump = doc.DumpToString();
    EXPECT_LT(dump.capacity(), text.size() * 5 / 4);
    dump.erase(0, dump.find("<a>"));
    EXPECT_EQ(dump, text + '\n');
}

TEST(Document, IsDestroyedThroughItsBase)
{
    class Derived : public Document
    {
      public:
        explicit Derived(bool& ended) : m_ended(ended) {}
        ~Derived() override { m_ended = true; }

      private:
        bool& m_ended;
    };
    bool ended = false;
    std::unique_ptr<Document> doc = std::make_unique<Derived>(ended);
    doc.reset();
    EXPECT_TRUE(ended);
}
} // namespace
} // namespace analytics::test
