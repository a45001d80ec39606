#include "Nodes.h"

#include <Drawn.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <random>

// Paths, with libxml2's XPath as the judge of what they mean.
namespace analytics::test
{
namespace
{

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
        std::string text = "<" + name + " id='" + std::to_string(m_elements++) + "'";
        for (const char* attribute : {"k", "p:k"})
            if (Up(2) == 0)
                text += std::string(" ") + attribute + "='" + std::to_string(Up(2)) + "'";
        for (const char* declaration : {" xmlns:q='three'", " xmlns='one'", " xmlns:q='one'", " xmlns=''"})
            if (Up(15) == 0)
            {
                text += declaration;
                break;
            }
        text += ">";
        for (int children = depth == 0 ? 0 : Up(3); children > 0; --children)
            text += Up(3) == 0 ? "<!-- -->" + std::to_string(Up(2)) : Element(depth - 1);
        return text + "</" + name + ">";
    }

    std::string Query()
    {
        static constexpr const char* kStarts[] = {"", "./", "/", "//", ".//"};
        std::string query = kStarts[Up(4)] + Step();
        for (int steps = Up(2); steps > 0; --steps)
            query += "/" + Step();
        if (Up(2) == 0)
            query += "[" + Comparison() + (Up(1) == 0 ? "" : " or " + Comparison()) + "]";
        if (Up(3) == 0)
            query += "/" + Step();
        return query + (Up(3) == 0 ? "/@id" : "");
    }

  private:
    std::string Step() { return Up(5) == 0 ? (Up(1) == 0 ? "*" : "p:*") : Name(); }
    std::string Comparison()
    {
        return (Up(1) == 0 ? "@k" : "c") + std::string(Up(1) == 0 ? "=" : " = ") + "'" +
               std::to_string(Up(2)) + "'";
    }

    std::mt19937 m_engine;
    int m_elements = 0;
};

// The attributes "id" of what a query finds in the order in which it does.
std::string Found(Document& doc, const std::string& query, const Node& context)
{
    std::string ids;
    for (const Node& node : SelectAll(doc, query, context))
        ids += (query.ends_with("@id") ? node->GetValue() : node->GetProperty("id")) + " ";
    return ids;
}

class Oracle
{
  public:
    explicit Oracle(const std::string& text)
        : m_doc(xmlReadDoc(Chars(text), nullptr, nullptr, XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
                xmlFreeDoc),
          m_context(xmlXPathNewContext(m_doc.get()), xmlXPathFreeContext)
    {
        xmlXPathRegisterNs(m_context.get(), Chars("p"), Chars("one"));
        xmlXPathRegisterNs(m_context.get(), Chars("q"), Chars("two"));
    }

    // From the first match of `context`, or from the document if that is empty.
    std::string Found(const std::string& query, const std::string& context)
    {
        m_context->node = context.empty() ? reinterpret_cast<xmlNode*>(m_doc.get())
                                          : Evaluate(context, reinterpret_cast<xmlNode*>(m_doc.get())).at(0);
        std::string ids;
        for (xmlNode* node : Evaluate(query, m_context->node))
        {
            xmlChar* const id = node->type == XML_ATTRIBUTE_NODE ? xmlNodeGetContent(node)
                                                                 : xmlGetNoNsProp(node, Chars("id"));
            ids += id == nullptr ? "" : reinterpret_cast<const char*>(id);
            ids += " ";
            xmlFree(id);
        }
        return ids;
    }

  private:
    static const xmlChar* Chars(const std::string& text)
    {
        return reinterpret_cast<const xmlChar*>(text.c_str());
    }

    std::vector<xmlNode*> Evaluate(const std::string& query, xmlNode* from)
    {
        m_context->node = from;
        const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
            xmlXPathEvalExpression(Chars(query), m_context.get()), xmlXPathFreeObject);
        xmlXPathNodeSetSort(result->nodesetval);
        const xmlNodeSet* const nodes = result->nodesetval;
        return nodes == nullptr || nodes->nodeNr == 0
                   ? std::vector<xmlNode*>()
                   : std::vector<xmlNode*>(nodes->nodeTab, nodes->nodeTab + nodes->nodeNr);
    }

    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> m_doc;
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> m_context;
};

TEST(PathTest, FindsWhatXPathFinds)
{
    Dice dice(7);
    std::size_t matches = 0;
    const int trees = Drawn("DRAWN_TREES", 300);
    for (int round = 0; round < trees; ++round)
    {
        Document doc;
        const std::string text =
            "<a id='root' xmlns:p='one' xmlns:q='two'>" + dice.Element(5) + dice.Element(5) + "</a>";
        ASSERT_TRUE(doc.ParseString(text));
        Oracle oracle(text);
        for (int queries = 0; queries < 20; ++queries)
        {
            const std::string query = dice.Query();
            for (const char* const context : {"", "a", "a/*"})
            {
                const Node from = *context == '\0' ? nullptr : Select(doc, context);
                const std::string found = Found(doc, query, from);
                EXPECT_EQ(found, oracle.Found(query, context))
                    << query << " from " << context << " in " << text;
                matches += found.size();
            }
        }
    }
    EXPECT_GT(matches, 16U * static_cast<unsigned>(trees));
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
