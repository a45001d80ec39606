#include "xml/Tree.h"

#include <analytics/DocumentNode.h>

#include "xml/Memory.h"

#include <libxml/xpathInternals.h>

#include <algorithm>

namespace analytics::xml
{
namespace
{
constexpr int kMaxAdded = 1'000'000;

void Ignore(void*, xmlErrorPtr) {}

} // namespace

std::string Take(xmlChar* text)
{
    const std::unique_ptr<xmlChar, void (*)(void*)> owned(text, xmlFree);
    RequireMemory();
    return std::string(View(text));
}

xmlNode* NodeOf(const DocumentNode* handle)
{
    return handle == nullptr ? nullptr : static_cast<xmlNode*>(handle->Handle());
}

std::vector<DocumentNode*> HandlesOf(const std::vector<xmlNode*>& nodes)
{
    std::vector<std::unique_ptr<DocumentNode>> owned;
    for (xmlNode* node : nodes)
        owned.push_back(std::make_unique<DocumentNode>(node));
    std::vector<DocumentNode*> handles(owned.size());
    std::transform(owned.begin(), owned.end(), handles.begin(),
                   [](auto& handle) { return handle.release(); });
    return handles;
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
        return RequireMemory();
    xmlReconciliateNs(parent->doc, moved);
    bool declares = false;
    for (xmlNode* element = moved; element != nullptr; element = NextElement(element, moved))
        declares = declares || element->nsDef != nullptr;
    if (declares)
        Tree::Of(parent).ForgetPrefixes();
    RequireMemory();
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
        auto prefixes = std::make_unique<Prefixes>();
        for (xmlNode* node = NextElement(Top(), Top()); node != nullptr; node = NextElement(node, Top()))
            for (const xmlNs* space = node->nsDef; space != nullptr; space = space->next)
                if (space->prefix != nullptr)
                    prefixes->emplace(View(space->prefix), View(space->href));
        m_prefixes = std::move(prefixes);
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
        const Prefixes& bindings = Bindings();
        std::unique_ptr<xmlXPathContext, ContextDeleter> queries(xmlXPathNewContext(Doc()));
        RequireMemory();
        queries->error = Ignore;
        for (const auto& [prefix, space] : bindings)
            xmlXPathRegisterNs(queries.get(), Chars(prefix), Chars(space));
        RequireMemory();
        m_queries = std::move(queries);
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
