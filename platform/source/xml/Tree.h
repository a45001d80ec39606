#pragma once

#include "xml/Parser.h"

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace analytics
{
class DocumentNode;
}

namespace analytics::xml
{

inline const xmlChar* Chars(const std::string& text)
{
    return reinterpret_cast<const xmlChar*>(text.c_str());
}
inline const xmlChar* Chars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
inline std::string_view View(const xmlChar* text)
{
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

// The node of a handle; null for a null or an empty handle.
xmlNode* NodeOf(const DocumentNode* handle);
// A handle for each node, owned by whom they go to.
std::vector<DocumentNode*> HandlesOf(const std::vector<xmlNode*>& nodes);
inline bool IsElement(const xmlNode* node) { return node != nullptr && node->type == XML_ELEMENT_NODE; }
bool IsElement(const xmlNode* node, std::string_view space, std::string_view name);
// Takes ownership of a text of libxml2's; empty for null.
std::string Take(xmlChar* text);
// Text content; an attribute without a namespace, empty where absent.
std::string Content(const xmlNode* node);
std::string Attribute(const xmlNode* node, std::string_view name);
const xmlNode* FindAttribute(const xmlNode* element, std::string_view name); // null where absent
// Appends a text to an element or an attribute that has no content yet.
void AddText(xmlNode* parent, const std::string& text);
// The next element in document order below `top`, `from` being `top` or the one before; null at the end.
xmlNode* NextElement(xmlNode* from, const xmlNode* top);
// Moves an element, of whichever document, behind the children of `parent`. Its namespaces come along.
void Move(xmlNode* node, xmlNode* parent);

// What a Document and the handles to its nodes share. Each node finds it through its document.
class Tree
{
  public:
    Tree(DocPointer doc, std::size_t elements);
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    static Tree& Of(const xmlNode* node);

    xmlDoc* Doc() const { return m_doc.get(); }
    Arena& Memory() { return *m_doc.get_deleter().arena; }
    xmlNode* Top() const { return reinterpret_cast<xmlNode*>(m_doc.get()); }
    // The namespace that the document first binds to the prefix; empty if it binds none.
    const std::string& NamespaceOf(const std::string& prefix);
    // For the evaluation of queries: knows every prefix of the document, prints nothing.
    xmlXPathContext& Queries();
    // Prefixes may have come in.
    void ForgetPrefixes();

    // Nodes out of the tree that end with it; Release() if one is put back or freed before.
    void Keep(xmlNode* node) { m_detached.insert(node); }
    void Release(xmlNode* node) { m_detached.erase(node); }

    // Counts one new element; false if the document has more than the request may have.
    bool Grow();
    bool Overgrown() const { return m_overgrown; }

  private:
    struct ContextDeleter
    {
        void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
    };
    using Prefixes = std::map<std::string, std::string>;

    DocPointer m_doc;
    std::set<xmlNode*> m_detached;
    Prefixes m_prefixes; // that were asked for; empty: not bound
    std::unique_ptr<xmlXPathContext, ContextDeleter> m_queries;
    std::size_t m_elements; // and those that were removed
    bool m_overgrown = false;
};

} // namespace analytics::xml
