#include "Nodes.h"

#include <gmock/gmock.h>

#include <limits>

namespace analytics::test
{
namespace
{
class DocumentNodeTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(doc.ParseString("<a n='12' t='x'>4<b>2</b></a>"));
        root = Select(doc, "a");
    }
    Document doc;
    Node root;
};

struct Number
{
    const char* text;
    int value;
};

TEST_F(DocumentNodeTest, ReadsDecimalIntegers)
{
    constexpr int kLeast = std::numeric_limits<int>::min();
    constexpr int kMost = std::numeric_limits<int>::max();
    const Number numbers[] = {{"0", 0},
                              {"7", 7},
                              {"-7", -7},
                              {"+7", 7},
                              {" \t\r\n7\n", 7},
                              {"007", 7},
                              {"2147483647", kMost},
                              {"2147483648", kMost},
                              {"99999999999999999999", kMost},
                              {"-2147483648", kLeast},
                              {"-99999999999", kLeast},
                              {"+99999999999", kMost},
                              {"", 5},
                              {" ", 5},
                              {"x", 5},
                              {"7x", 5},
                              {"7 7", 5},
                              {"0x10", 5},
                              {"1.5", 5},
                              {"1e3", 5},
                              {"+", 5},
                              {"-", 5},
                              {"+-7", 5},
                              {"--7", 5},
                              {"\xC2\xA0"
                               "7",
                               5},
                              {"99999999999x", 5}};
    for (const Number& number : numbers)
    {
        root->SetProperty("v", std::string(number.text));
        EXPECT_EQ(root->GetProperty("v", 5), number.value) << '"' << number.text << '"';
        root->SetValue(std::string(number.text));
        EXPECT_EQ(root->GetValue(5), number.value) << '"' << number.text << '"';
    }
}

TEST_F(DocumentNodeTest, ReadsAttributes)
{
    EXPECT_EQ(root->GetProperty("n"), "12");
    EXPECT_EQ(root->GetProperty("n", 0), 12);
    EXPECT_EQ(root->GetProperty("t", 3), 3);
    EXPECT_EQ(root->GetProperty("active", 0), 0);
    EXPECT_EQ(root->GetProperty("active"), "");
    ASSERT_TRUE(doc.ParseString("<a xmlns:o='urn:o' o:active='1'/>"));
    EXPECT_EQ(Select(doc, "a")->GetProperty("active", 0), 0) << "another namespace's attribute";
}

TEST_F(DocumentNodeTest, SetsAttributesInOrder)
{
    root->SetProperty("z", 1);
    root->SetProperty("b", std::string("2 < \"3\" & 4\n"));
    root->SetProperty("n", -5);
    EXPECT_EQ(Body(doc), "<a n=\"-5\" t=\"x\" z=\"1\" b=\"2 &lt; &quot;3&quot; &amp; 4&#10;\">4<b>2</b></a>");
    EXPECT_EQ(root->GetProperty("b"), "2 < \"3\" & 4\n");
    root->SetProperty("not a name", 1);
    root->SetProperty("", 1);
    EXPECT_EQ(Texts(doc, "//@*"), "-5 x 1 2 < \"3\" & 4\n");
}

TEST_F(DocumentNodeTest, SetsText)
{
    EXPECT_EQ(root->GetValue(), "42");
    EXPECT_EQ(root->GetValue(0), 42);
    root->SetValue(std::string("<x> & \"y\" ]]>"));
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\">&lt;x&gt; &amp; \"y\" ]]&gt;</a>");
    EXPECT_EQ(root->GetValue(), "<x> & \"y\" ]]>");
    root->SetValue(9);
    EXPECT_EQ(root->GetValue(), "9");
    root->SetValue(std::string());
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\"/>");
    EXPECT_EQ(root->GetValue(3), 3);
}

TEST(DocumentNode, KeepsTextInItsPlace)
{
    Document doc;
    ASSERT_TRUE(doc.ParseString("<a>1<b> 2 </b>3<c><!--4-->5<?p 6?></c></a>"));
    const Node a = Select(doc, "a");
    const Node b = Select(doc, "a/b");
    EXPECT_EQ(a->GetValue(), "1 2 35");
    delete b->AddNewChild("d", "7");
    EXPECT_EQ(Body(doc), "<a>1<b> 2 <d>7</d></b>3<c><!--4-->5<?p 6?></c></a>");
    b->SetValue("8");
    EXPECT_EQ(b->DumpToString(), "<b>8</b>");
    b->SetValue("");
    EXPECT_EQ(b->DumpToString(), "<b/>");
    EXPECT_EQ(b->GetValue(), "");
    b->SetValue(9);
    EXPECT_EQ(a->GetValue(), "1935");
}

TEST_F(DocumentNodeTest, StandsForAnAttributeToo)
{
    const Node attribute = Select(doc, "a/@n");
    EXPECT_EQ(attribute->GetValue(0), 12);
    attribute->SetValue(std::string("a&b"));
    EXPECT_EQ(root->GetProperty("n"), "a&b");
    EXPECT_EQ(attribute->DumpToString(), "a&b");
    EXPECT_EQ(attribute->GetProperty("n"), "");
    EXPECT_EQ(attribute->AddNewChild("x", ""), nullptr);
    doc.DeleteNodes("a/@n", nullptr);
    EXPECT_EQ(Body(doc), "<a t=\"x\">4<b>2</b></a>");
}

TEST_F(DocumentNodeTest, AddsChildren)
{
    const Node roi(root->AddNewChild("roi", ""));
    ASSERT_NE(roi, nullptr);
    delete roi->AddNewChild("name", "Tom & <Jerry>");
    delete roi->AddNewChild("enable", 1);
    delete roi->AddNewChild("delay", -30);
    EXPECT_EQ(Body(doc),
              "<a n=\"12\" t=\"x\">4<b>2</b><roi><name>Tom &amp; &lt;Jerry&gt;</name><enable>1</enable>"
              "<delay>-30</delay></roi></a>");
    EXPECT_EQ(root->AddNewChild("", "x"), nullptr);
    EXPECT_EQ(root->AddNewChild("no name", "x"), nullptr);
    EXPECT_EQ(root->AddNewChild("p:x", "x"), nullptr);
}

TEST_F(DocumentNodeTest, OpensAnElementThatWasWrittenEmpty)
{
    ASSERT_TRUE(doc.ParseString("<behavior><rois/></behavior>"));
    delete Select(doc, ".//rois")->AddNewChild("roi", "");
    EXPECT_EQ(Body(doc), "<behavior><rois><roi/></rois></behavior>");
}

TEST_F(DocumentNodeTest, AddsChildrenInItsNamespace)
{
    for (const char* text : {"<tt:r xmlns:tt='urn:t'/>", "<r xmlns='urn:t' xmlns:tt='urn:t'/>"})
    {
        ASSERT_TRUE(doc.ParseString(text));
        const Node rule(Select(doc, "/*")->AddNewChild("Rule", ""));
        delete rule->AddNewChild("Item", 1);
        EXPECT_EQ(Texts(doc, "//tt:Rule/tt:Item"), "1");
        Document again;
        ASSERT_TRUE(again.ParseString(doc.DumpToString()));
        EXPECT_EQ(Texts(again, "//tt:Rule/tt:Item"), "1");
        EXPECT_EQ(Texts(again, "//Item"), "");
    }
}

TEST_F(DocumentNodeTest, ReplacesWhatXmlCannotHold)
{
    for (const char* text :
         {"\x01", "\xFF", "\xC3", "\xED\xA0\x80", "\xC0\x80", "\xEF\xBF\xBF", "\xF4\x90\x80\x80"})
    {
        root->SetValue("[" + std::string(text) + "]");
        root->SetProperty("t", "[" + std::string(text) + "]");
        Document again;
        ASSERT_TRUE(again.ParseString(doc.DumpToString())) << text;
        EXPECT_THAT(again.GetSingleValue("a", nullptr), testing::MatchesRegex("\\[(\xEF\xBF\xBD)+\\]"));
        EXPECT_EQ(again.GetSingleValue("a/@t", nullptr), again.GetSingleValue("a", nullptr));
    }
    const std::string kept = "tab\tline\nreturn\r\xC3\xA9 \xF0\x9F\x98\x80";
    root->SetValue(kept);
    Document again;
    ASSERT_TRUE(again.ParseString(doc.DumpToString()));
    EXPECT_EQ(again.GetSingleValue("a", nullptr), kept);
}

TEST_F(DocumentNodeTest, UnlinksAndPutsBack)
{
    const Node b = Select(doc, "a/b");
    b->Unlink(false);
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\">4</a>");
    EXPECT_EQ(b->GetValue(), "2");
    root->AddChild(b.get());
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\">4<b>2</b></a>");
    b->Unlink(true);
    EXPECT_EQ(b->Handle(), nullptr);
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\">4</a>");
}

TEST_F(DocumentNodeTest, EndsUnlinkedNodesWithTheirDocument)
{
    const Node b = Select(doc, "a/b");
    b->Unlink(false);
    b->Unlink(false);
    EXPECT_EQ(Body(doc), "<a n=\"12\" t=\"x\">4</a>");
    EXPECT_EQ(Texts(doc, "//b"), "") << "what is unlinked isn't found";
    EXPECT_EQ(Texts(doc, "//*"), "4");
    EXPECT_EQ(SelectAll(doc, "/*").size(), 1U);
    // The address sanitizer says so if one is left behind.
    ASSERT_TRUE(doc.ParseString("<other/>"));
}

TEST_F(DocumentNodeTest, KeepsTheNamespaceOfWhatIsUnlinked)
{
    ASSERT_TRUE(doc.ParseString("<r><p:a xmlns:p='urn:p'><p:b p:k='1'>x</p:b></p:a></r>"));
    const Node b = Select(doc, "//p:b");
    b->Unlink(false);
    doc.DeleteNodes("//p:a", nullptr);
    EXPECT_EQ(b->DumpToString(), "<p:b xmlns:p=\"urn:p\" p:k=\"1\">x</p:b>");
    Select(doc, "r")->AddChild(b.get());
    EXPECT_EQ(Texts(doc, "//p:b"), "x");
}

TEST_F(DocumentNodeTest, MovesBetweenDocuments)
{
    auto other = std::make_unique<Document>();
    ASSERT_TRUE(other->ParseString("<p:r xmlns:p='urn:p'><p:x k='1'>text<p:y/></p:x><p:z/></p:r>"));
    const Node x = Select(*other, "//p:x");
    root->AddChild(x.get());
    EXPECT_EQ(Body(*other), "<p:r xmlns:p=\"urn:p\"><p:z/></p:r>");
    other.reset();
    EXPECT_EQ(Texts(doc, "//p:x"), "text");
    EXPECT_EQ(x->GetProperty("k"), "1");
    Document again;
    ASSERT_TRUE(again.ParseString(doc.DumpToString()));
    EXPECT_EQ(SelectAll(again, "a/p:x/p:y").size(), 1U);
}

// What the parser shares among the nodes of one document has to come along.
TEST_F(DocumentNodeTest, TakesItsStringsToAnotherDocument)
{
    auto other = std::make_unique<Document>();
    const std::string moved =
        "<x k=\"1\" long=\"a long value of an attribute\">t<!--c--><?do it?>\n    <y>a long text "
        "in an element</y>\n    <y>,</y>\n  </x>";
    ASSERT_TRUE(other->ParseString("<r><x/><y k='1'/>" + moved + "</r>"));
    const Node x = Select(*other, "r/x[@k='1']");
    root->AddChild(x.get());
    other.reset();
    EXPECT_EQ(x->DumpToString(), moved);
    Node(x->AddNewChild("y", 2))->SetProperty("k", 3);
    x->SetProperty("k", 4);
    EXPECT_EQ(Texts(doc, "//x[@k='4']/y[@k='3']"), "2");
}

TEST_F(DocumentNodeTest, NeverBecomesItsOwnAncestor)
{
    const std::string before = Body(doc);
    const Node b = Select(doc, "a/b");
    b->AddChild(root.get());
    b->AddChild(b.get());
    b->AddChild(nullptr);
    EXPECT_EQ(Body(doc), before);
}

TEST_F(DocumentNodeTest, DumpsItself)
{
    ASSERT_TRUE(doc.ParseString("<p:r xmlns:p='urn:p'><p:x k='1'>\xC3\xA9<p:y/></p:x></p:r>"));
    const std::string text = Select(doc, "//p:x")->DumpToString();
    EXPECT_EQ(text, "<p:x xmlns:p=\"urn:p\" k=\"1\">\xC3\xA9<p:y/></p:x>");
    EXPECT_TRUE(Document().ParseString(text));
    EXPECT_EQ(Body(doc), "<p:r xmlns:p=\"urn:p\"><p:x k=\"1\">\xC3\xA9<p:y/></p:x></p:r>");
}

TEST_F(DocumentNodeTest, ReconcilesNamespacesOnce)
{
    ASSERT_TRUE(doc.ParseString("<p:r xmlns:p='urn:p'><p:x/></p:r>"));
    const std::string before = Body(doc);
    Select(doc, "p:r")->ReconciliateNs();
    EXPECT_EQ(Body(doc), before);
}

TEST_F(DocumentNodeTest, IsHarmlessWhenEmpty)
{
    DocumentNode empty;
    EXPECT_EQ(empty.Handle(), nullptr);
    EXPECT_EQ(empty.GetValue(), "");
    EXPECT_EQ(empty.GetValue(4), 4);
    EXPECT_EQ(empty.GetProperty("a", 4), 4);
    EXPECT_EQ(empty.DumpToString(), "");
    empty.SetValue(1);
    empty.SetProperty("a", 1);
    EXPECT_EQ(empty.AddNewChild("a", 1), nullptr);
    empty.AddChild(root.get());
    root->AddChild(&empty);
    empty.Unlink(true);
    empty.ReconciliateNs();

    DocumentNode same(root->Handle());
    EXPECT_EQ(same.GetValue(), "42");
    same.DeleteHandle();
    EXPECT_EQ(same.Handle(), nullptr);
    same.Handle(root->Handle());
    EXPECT_EQ(same.GetValue(0), 42);
}
} // namespace
} // namespace analytics::test
