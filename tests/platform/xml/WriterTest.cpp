#include "xml/Writer.h"

#include "xml/Parser.h"

#include <gtest/gtest.h>

namespace analytics::test
{
namespace
{

using xml::DocPointer;

DocPointer Parse(const std::string& text)
{
    xml::SyntaxError error;
    DocPointer doc = xml::Parse(text, error);
    EXPECT_NE(doc, nullptr) << text << ": " << error.reason;
    return doc;
}

std::string ByTheLibrary(xmlDoc* doc)
{
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(doc, &text, &size, "UTF-8");
    const std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
    xmlFree(text);
    return result;
}

TEST(Writer, WritesWhatTheLibraryWrites)
{
    for (const char* text :
         {"<a/>", "<a></a>", "<a> </a>", "<a><b/>x<c>y</c>z</a>", "<!-- 1 --><?do it?><a/><!-- 2 --><?done?>",
          "<a b='1' c=\"2\"/>",
          "<a b='&lt;&gt;&amp;&quot;&apos;&#9;&#10;&#13;'>&lt;&gt;&amp;\"'&#9;&#10;&#13;</a>",
          "<p:a xmlns:p='one' xmlns='two' p:k='v'><b/><p:b xmlns:p='three'/></p:a>", "<a xml:lang='de'/>",
          "<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>", "<a k='\xC3\xA4'/>", "<a><![CDATA[<b>]]></a>",
          "<?xml version='1.0' standalone='yes'?><a/>", "<?xml version='1.0' standalone='no'?><a/>",
          "<?xml version='1.1'?><a/>", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>",
          "<!DOCTYPE a><a/>"})
    {
        const DocPointer doc = Parse(text);
        EXPECT_EQ(xml::Write(*doc), ByTheLibrary(doc.get())) << text;
    }
}

// Where the library writes what nobody can read.
TEST(Writer, EscapesNamespaces)
{
    const std::string text = xml::Write(*Parse("<p:a xmlns:p='a&amp;b&lt;&quot;'/>"));
    EXPECT_NE(text.find("\"a&#38;b&lt;&quot;\""), std::string::npos) << text;
    EXPECT_EQ(xml::Write(*Parse(text)), text);
}

TEST(Writer, IsNotDeeperThanTheDocument)
{
    const DocPointer doc = Parse("<a/>");
    const xml::Arena::Use use(*doc.get_deleter().arena);
    xmlNode* node = xmlDocGetRootElement(doc.get());
    constexpr int kDepth = 200'000;
    for (int i = 0; i < kDepth; ++i)
        node = xmlNewChild(node, nullptr, reinterpret_cast<const xmlChar*>("b"), nullptr);
    EXPECT_GT(xml::Write(*doc).size(), 7U * (kDepth - 1));
}

} // namespace
} // namespace analytics::test
