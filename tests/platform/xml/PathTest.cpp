#include "Nodes.h"

#include "xml/Path.h"

#include <gtest/gtest.h>

#include <random>

namespace analytics::test
{
namespace
{

using xml::Path;

// Words of which a few make a document or a path, so that many of both are likely to meet.
class Dice
{
  public:
    explicit Dice(unsigned seed) : m_engine(seed) {}
    int Up(int most) { return std::uniform_int_distribution<int>(0, most)(m_engine); }
    std::string Name()
    {
        static constexpr const char* kNames[] = {"a", "b", "c", "p:a", "p:b", "q:a"};
        return kNames[Up(5)];
    }

    std::string Element(int depth)
    {
        const std::string name = Name();
        std::string text = "<" + name;
        for (const char* attribute : {"k", "p:k"})
            if (Up(2) == 0)
                text += std::string(" ") + attribute + "='" + std::to_string(Up(2)) + "'";
        if (Up(9) == 0)
            text += " xmlns:q='three'";
        text += ">";
        for (int children = depth == 0 ? 0 : Up(3); children > 0; --children)
            text += Up(3) == 0 ? "<!-- -->" + std::to_string(Up(2)) : Element(depth - 1);
        return text + "</" + name + ">";
    }

    std::string Query()
    {
        static constexpr const char* kStarts[] = {"", "./", "/", "//", ".//"};
        std::string query = kStarts[Up(4)] + Name();
        for (int steps = Up(2); steps > 0; --steps)
            query += "/" + Name();
        if (Up(2) == 0)
            query += "[" + Comparison() + (Up(1) == 0 ? "" : " or " + Comparison()) + "]";
        if (Up(3) == 0)
            query += "/" + Name();
        return query;
    }

  private:
    std::string Comparison()
    {
        return (Up(1) == 0 ? "@k" : "c") + std::string(Up(1) == 0 ? "=" : " = ") + "'" +
               std::to_string(Up(2)) + "'";
    }

    std::mt19937 m_engine;
};

std::vector<const void*> Found(Document& doc, const std::string& query, const Node& context)
{
    std::vector<const void*> found;
    for (const Node& node : SelectAll(doc, query, context))
        found.push_back(node->Handle());
    return found;
}

// In parentheses it is the same query, of a form that is left to XPath.
TEST(PathTest, FindsWhatXPathFinds)
{
    Dice dice(7);
    std::size_t matches = 0;
    for (int round = 0; round < 300; ++round)
    {
        Document doc;
        const std::string text =
            "<a xmlns:p='one' xmlns:q='two'>" + dice.Element(5) + dice.Element(5) + "</a>";
        ASSERT_TRUE(doc.ParseString(text));
        const Node contexts[] = {nullptr, Select(doc, "a"), Select(doc, "a/*")};
        for (int queries = 0; queries < 20; ++queries)
        {
            const std::string query = dice.Query();
            ASSERT_TRUE(Path::Read(query)) << query;
            ASSERT_FALSE(Path::Read("(" + query + ")")) << query;
            for (const Node& context : contexts)
            {
                const auto found = Found(doc, query, context);
                EXPECT_EQ(found, Found(doc, "(" + query + ")", context)) << query << " in " << text;
                matches += found.size();
            }
        }
    }
    EXPECT_GT(matches, 3000U);
}

TEST(PathTest, LeavesOtherFormsAlone)
{
    for (const char* query : {"",
                              ".",
                              "/",
                              "./",
                              "//",
                              "a/",
                              "a//b",
                              "/.//a",
                              "../a",
                              "*",
                              "a/*",
                              "@k",
                              "a/@k",
                              "a/text()",
                              "a[1]",
                              "a[b]",
                              "a[@k]",
                              "a[@k=1]",
                              "a[@k='x]",
                              "a[@k='x'",
                              "a[@k='x' and b='y']",
                              "a[@p:k='x']",
                              "a[b/c='x']",
                              "a[@k='x'][b='y']",
                              "a[@k!='x']",
                              "a | b",
                              "a b",
                              " a",
                              "a ",
                              "child::a",
                              "p:",
                              ":a",
                              "p:*",
                              "p::a",
                              "1a",
                              "-a",
                              "a()",
                              "\xC3\xA4",
                              "a/b/c/d/e/f/g/h/i"})
        EXPECT_FALSE(Path::Read(query)) << query;
}

TEST(PathTest, FindsNothingBehindAPrefixWithoutNamespace)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a><b/></a>"));
    EXPECT_TRUE(SelectAll(doc, "a/p:b").empty());
    EXPECT_TRUE(SelectAll(doc, "//p:b").empty());
}

} // namespace
} // namespace analytics::test
