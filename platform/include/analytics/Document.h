#pragma once

#include <analytics/DocumentNode.h>

#include <memory>
#include <string>
#include <vector>

namespace analytics
{

namespace xml
{
struct Tree;
}

// A parsed XML document with path queries. One object is used by one thread at a time; different
// objects share nothing.
//
// A query is a location path with the meaning of XPath 1.0, evaluated from `context` or, where that is
// null, from the document root: element names, from the context ("a/p:b", "./a"), from the root ("/a") or
// from anywhere below either ("//a/b", ".//a"), each with one condition at most on attributes or child
// elements ([@id="x" or name='y']), and an attribute at the end, if any ("a/@id"). "*" is any name. A
// prefix in it stands for the namespace that the document first binds to it. What is not found, a query of
// another form and an unbound prefix all give null, empty or the default. The caller owns every handle.
//
// Without memory each operation throws std::bad_alloc; after that the document may only be destroyed.
class Document
{
  public:
    virtual ~Document();
    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // Replaces the content. False leaves the document empty: the text is not well-formed XML with
    // namespaces in UTF-8 (whatever encoding it declares), is nested deeper than 256 elements, has an
    // element with more than 256 attributes, is longer than 64 MiB, or has a document type declaration with
    // more than a name. So no entity is ever expanded and nothing is ever loaded. CDATA becomes text.
    bool ParseString(const std::string& xml);
    // The document in UTF-8 behind an XML declaration; ParseString() reads it back. The same tree gives
    // the same text. Empty if there is no document.
    std::string DumpToString();

    DocumentNode* SelectNode(const std::string& query, DocumentNode* context); // the first match
    std::vector<DocumentNode*> SelectNodes(const std::string& query, DocumentNode* context); // document order

    // The text of the first match, as DocumentNode::GetValue() gives it.
    std::string GetSingleValue(const std::string& query, DocumentNode* context);
    int GetSingleValue(const std::string& query, int defaultValue, DocumentNode* context);

    // Removes every match with all below it. Handles to what is removed may only be deleted after that.
    void DeleteNodes(const std::string& query, DocumentNode* context);

  protected:
    xml::Tree* Content() const; // null if there is no document

  private:
    std::unique_ptr<xml::Tree> m_tree;
};

} // namespace analytics
