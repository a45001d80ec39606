#include "xml/Tree.h"

#include <analytics/DocumentNode.h>

#include <libxml/xpathInternals.h>

namespace analytics::xml
{
namespace
{
constexpr int kMaxAdded = 1'000'000;

void Ignore(void*, xmlErrorPtr) {}

std::string Take(xmlChar* text)
{
    std::string result(View(text));
    xmlFree(text);
    return result;
}
} // namespace

xmlNode* NodeOf(const DocumentNode* handle)
{
    return handle == nullptr ? nullptr : static_cast<xmlNode*>(handle->Handle());
}

bool IsElement(const xmlNode* node, std::string_view space, std::string_view name)
{
    return IsElement(node) && View(node->name) == name &&
           View(node->ns == nullptr ? nullptr : node->ns->href) == space;
}

std::string Content(const xmlNode* node) { return Take(xmlNodeGetContent(node)); }

std::string Attribute(const xmlNode* node, const char* name)
{
    return IsElement(node) ? Take(xmlGetNoNsProp(node, Chars(name))) : std::string();
}

xmlNode* NextElement(xmlNode* from, const xmlNode* top)
{
    xmlNode* node = from;
    do
    {
        if ((node == top || node->type == XML_ELEMENT_NODE) && node->children != nullptr)
            node = node->children;
        else
        {
            while (node != top && node->next == nullptr)
                node = node->parent;
            node = node == top ? nullptr : node->next;
        }
    } while (node != nullptr && node->type != XML_ELEMENT_NODE);
    return node;
}

void Move(xmlNode* node, xmlNode* parent)
{
    Tree::Of(node).Release(node);
    xmlUnlinkNode(node);
    xmlNode* moved = xmlAddChild(parent, node);
    if (!IsElement(moved))
        return;
    xmlReconciliateNs(parent->doc, moved);
    bool declares = false;
    for (xmlNode* element = moved; element != nullptr; element = NextElement(element, moved))
        declares = declares || element->nsDef != nullptr;
    if (declares)
        Tree::Of(parent).ForgetPrefixes();
}

Tree::Tree(DocPointer doc) : m_doc(std::move(doc)) { m_doc->_private = this; }

Tree::~Tree()
{
    for (xmlNode* node : m_detached)
        xmlFreeNode(node);
}

Tree& Tree::Of(const xmlNode* node) { return *static_cast<Tree*>(node->doc->_private); }

const Tree::Prefixes& Tree::Bindings()
{
    if (m_prefixes == nullptr)
    {
        m_prefixes = std::make_unique<Prefixes>();
        for (xmlNode* node = NextElement(Top(), Top()); node != nullptr; node = NextElement(node, Top()))
            for (const xmlNs* space = node->nsDef; space != nullptr; space = space->next)
                if (space->prefix != nullptr)
                    m_prefixes->emplace(View(space->prefix), View(space->href));
    }
    return *m_prefixes;
}

const std::string& Tree::NamespaceOf(const std::string& prefix)
{
    static const std::string kNone;
    const auto found = Bindings().find(prefix);
    return found == Bindings().end() ? kNone : found->second;
}

xmlXPathContext& Tree::Queries()
{
    if (m_queries == nullptr)
    {
        m_queries.reset(xmlXPathNewContext(Doc()));
        m_queries->error = Ignore;
        for (const auto& [prefix, space] : Bindings())
            xmlXPathRegisterNs(m_queries.get(), Chars(prefix), Chars(space));
    }
    return *m_queries;
}

void Tree::ForgetPrefixes()
{
    m_queries.reset();
    m_prefixes.reset();
}

bool Tree::Grow()
{
    if (m_added <= kMaxAdded)
        ++m_added;
    return !Overgrown();
}

bool Tree::Overgrown() const { return m_added > kMaxAdded; }

} // namespace analytics::xml
