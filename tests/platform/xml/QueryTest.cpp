#include "Nodes.h"

#include <gtest/gtest.h>

namespace analytics::test
{
namespace
{
constexpr char kTree[] = "<a id='1'><b><c k='x'>1</c><c "
                         "k='y'>2<c>3</c></c><n>minObj</n></b><b><c>4</c><n>maxObj</n></b><c>5</c></a>";

struct Case
{
    const char* query;
    const char* texts;
};

class QueryTest : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_TRUE(doc.ParseString(kTree)); }
    Document doc;
};

TEST_F(QueryTest, GivesPathsTheirMeaning)
{
    const Case cases[] = {
        {"//c", "1 23 3 4 5"},
        {".//c", "1 23 3 4 5"},
        {"a/c", "5"},
        {"./a/c", "5"},
        {"a/b/c", "1 23 4"},
        {"/a/b/c", "1 23 4"},
        {".//b/c", "1 23 4"},
        {"//c/c", "3"},
        {"b", ""},
        {"//b[n='maxObj']/c", "4"},
        {"//b[n=\"minObj\"]/c", "1 23"},
        {"//c[@k='y']", "23"},
        {"a/b/c[@k=\"x\"]", "1"},
        {"//c/@k", "x y"},
        {"//a[@id='0' or @id='1']/c", "5"},
        {"//c[@k='x' or @k='y']/c", "3"},
        {"//b[n='maxObj' or n='minObj']/n", "minObj maxObj"},
        {"/*", "123minObj4maxObj5"},
        {"a/*/c", "1 23 4"},
        {"//@*", "1 x y"},
        {"a/@id", "1"},
        {"//c[@k='y']/@k", "y"},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(Texts(doc, c.query), c.texts) << c.query;
        const Node first = Select(doc, c.query);
        EXPECT_EQ(first == nullptr, std::string(c.texts).empty()) << c.query;
    }
}

TEST_F(QueryTest, StartsFromTheContext)
{
    const Node b = Select(doc, "//b");
    const Case cases[] = {{"c", "1 23"},     {"./c", "1 23"}, {".//c", "1 23 3"},  {"c/c", "3"},
                          {"./n", "minObj"}, {"b", ""},       {"//b/c", "1 23 4"}, {"c[@k='x']/@k", "x"}};
    for (const Case& c : cases)
        EXPECT_EQ(Texts(doc, c.query, b), c.texts) << c.query;
    EXPECT_EQ(Texts(doc, ".//@k", b), "x y");
    EXPECT_EQ(Texts(doc, "./@k", Select(doc, "//c[@k='y']")), "y");
    const Node attribute = Select(doc, "//@k");
    EXPECT_EQ(Texts(doc, "c", attribute), "");
}

TEST_F(QueryTest, IgnoresWhatIsNoPath)
{
    for (const char* query :
         {"",       "//",     "a//",          "a/",        "[",    "a[",           "a[@b='1]",
          "@",      "::",     "p:",           ":p",        "p:a",  "//p:a",        "//b[p:n='x']",
          "a b",    "1 + 1",  "count(//c)",   "'text'",    "$v",   "nofunction()", "p:f()",
          "$p:v",   "a/./",   "namespace::*", "//b['",     "..",   "./",           "\xC3\xA9",
          "//\x01", "//b[2]", "a/text()",     "//a | //b", "a//c", "@k/a"})
    {
        EXPECT_EQ(Texts(doc, query), "") << query;
        delete doc.SelectNode(query, nullptr);
    }
    DocumentNode empty;
    EXPECT_EQ(doc.SelectNode("//c", &empty), nullptr);
}

TEST(Query, ResolvesPrefixesAsTheDocumentBindsThem)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<r xmlns='urn:d'><p:a xmlns:p='urn:1'>1</p:a><q:a xmlns:q='urn:1'>2</q:a>"
                                "<p:a xmlns:p='urn:2'>3</p:a><a>4</a><a xmlns=''>5</a></r>"));
    EXPECT_EQ(Texts(doc, "//p:a"), "1 2") << "the first binding in the document counts";
    EXPECT_EQ(Texts(doc, "//q:a"), "1 2");
    EXPECT_EQ(Texts(doc, "//a"), "5") << "a name without a prefix has no namespace";
    const Node root = Select(doc, "/*");
    EXPECT_EQ(Texts(doc, "q:a", root), "1 2");
    EXPECT_EQ(Texts(doc, "./a", root), "5");
    EXPECT_EQ(Texts(doc, "z:a", root), "");
    EXPECT_EQ(Texts(doc, "//p:*"), "1 2");
    EXPECT_EQ(Texts(doc, "//z:a"), "");
}

TEST(Query, IsTheSameOnEveryDocument)
{
    // What is kept of a query must not hold on to the document that it was first used on.
    for (const char* space : {"urn:1", "urn:2", "urn:1"})
    {
        Document doc;
        ASSERT_TRUE(doc.ParseString("<p:r xmlns:p='" + std::string(space) + "'><p:a k='1'>x</p:a></p:r>"));
        EXPECT_EQ(Texts(doc, "//p:a"), "x");
        EXPECT_EQ(Texts(doc, "p:r/p:a"), "x");
        EXPECT_EQ(Texts(doc, "//p:a[@k='1']"), "x");
    }
}

TEST(Query, OutlivesTheQueriesThatAreKept)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString(kTree));
    for (int i = 0; i < 3000; ++i)
    {
        ASSERT_EQ(Texts(doc, "//c[@k='y' or @k='" + std::to_string(i) + "']/@k"), "y");
        ASSERT_EQ(Texts(doc, "//c[@k='" + std::to_string(i) + "']"), "");
    }
    EXPECT_EQ(Texts(doc, "//c"), "1 23 3 4 5");
}

TEST(Query, SeesWhatWasAddedAndMoved)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a><x>1</x><y/><x>2</x></a>"));
    const Node root = Select(doc, "a");
    const Node first = Select(doc, "//x");
    root->AddChild(first.get());
    const Node y = Select(doc, "//y");
    delete y->AddNewChild("x", "0");
    delete root->AddNewChild("x", "3");
    EXPECT_EQ(Texts(doc, "//x"), "0 2 1 3");
    EXPECT_EQ(Texts(doc, "a/x"), "2 1 3");
}

TEST(Query, KnowsTheNamespacesOfWhatComesFromAnotherDocument)
{
    Document doc;
    Document other;
    ASSERT_TRUE(doc.ParseString("<a><b>1</b></a>"));
    ASSERT_TRUE(other.ParseString("<a xmlns='u'><b>2</b><p:b xmlns:p='v'>3</p:b></a>"));
    EXPECT_EQ(Texts(doc, "//b"), "1");
    Select(doc, "a")->AddChild(Select(other, "*").get());
    EXPECT_EQ(Texts(doc, "//b"), "1");
    EXPECT_EQ(Texts(doc, "//p:b"), "3");
    EXPECT_EQ(Texts(doc, "//*[b='2']"), "");
}

TEST(Query, FindsElementsByNamespaceWhateverTheirPrefix)
{
    for (const char* text :
         {"<p:a xmlns:p='u' xmlns:q='u'><q:b>1</q:b></p:a>", "<p:a xmlns:p='u'><b xmlns='u'>1</b></p:a>",
          "<a xmlns='u' xmlns:p='u'><b>1</b></a>", "<p:a xmlns:p='u'><q:b xmlns:q='u'>1</q:b></p:a>"})
    {
        Document doc;
        ASSERT_TRUE(doc.ParseString(text));
        EXPECT_EQ(Texts(doc, "p:a/p:b"), "1") << text;
        EXPECT_EQ(SelectAll(doc, "//p:*").size(), 2U) << text;
        EXPECT_EQ(Texts(doc, "//b"), "") << text;
    }
}

} // namespace
} // namespace analytics::test
