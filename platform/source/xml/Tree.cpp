#include "xml/Tree.h"

#include <analytics/DocumentNode.h>

#include "types/DocumentLimit.h"
#include "xml/Memory.h"

#include <libxml/xpathInternals.h>

#include <algorithm>

namespace analytics::xml
{
namespace
{

void Ignore(void*, xmlErrorPtr) {}

// Shows the bindings of prefixes below `top` in document order until `visit` returns false.
template <class Visit>
void ForEachBinding(xmlNode* top, const Visit& visit)
{
    for (xmlNode* node = NextElement(top, top); node != nullptr; node = NextElement(node, top))
        for (const xmlNs* space = node->nsDef; space != nullptr; space = space->next)
            if (space->prefix != nullptr && !visit(*space))
                return;
}

// Gives a string that belongs to the dictionary of one document to the other. Names live in the other's,
// contents on their own.
void HandOver(const xmlChar*& text, xmlDict* from, xmlDict* to)
{
    if (text != nullptr && xmlDictOwns(from, text) == 1)
        text = to == nullptr ? xmlStrdup(text) : xmlDictLookup(to, text, -1);
}

// The same for what hangs on an element: its name, its attributes and whatever else is no element.
void HandOver(xmlNode* element, xmlDict* from, xmlDict* to)
{
    const auto one = [=](xmlNode* node)
    {
        HandOver(const_cast<const xmlChar*&>(node->name), from, to);
        if (node->type != XML_ELEMENT_NODE && node->type != XML_ATTRIBUTE_NODE)
            HandOver(const_cast<const xmlChar*&>(node->content), from, nullptr);
    };
    one(element);
    for (xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next)
    {
        one(reinterpret_cast<xmlNode*>(attribute));
        for (xmlNode* text = attribute->children; text != nullptr; text = text->next)
            one(text);
    }
    for (xmlNode* child = element->children; child != nullptr; child = child->next)
        if (!IsElement(child))
            one(child);
}

std::string FirstBinding(xmlNode* top, const std::string& prefix)
{
    std::string bound;
    ForEachBinding(top,
                   [&](const xmlNs& space)
                   {
                       if (View(space.prefix) != prefix)
                           return true;
                       bound = View(space.href);
                       return false;
                   });
    return bound;
}
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

std::string Content(const xmlNode* node)
{
    // Nearly all texts stand in one piece.
    const bool leaf = IsElement(node) || node->type == XML_ATTRIBUTE_NODE;
    const xmlNode* text = leaf ? node->children : nullptr;
    if (leaf && text == nullptr)
        return {};
    if (leaf && text->next == nullptr && text->type == XML_TEXT_NODE)
        return std::string(View(text->content));
    return Take(xmlNodeGetContent(node));
}

const xmlNode* FindAttribute(const xmlNode* element, std::string_view name)
{
    const xmlAttr* attribute = element->properties;
    while (attribute != nullptr && (attribute->ns != nullptr || View(attribute->name) != name))
        attribute = attribute->next;
    return reinterpret_cast<const xmlNode*>(attribute);
}

std::string Attribute(const xmlNode* node, std::string_view name)
{
    const xmlNode* attribute = IsElement(node) ? FindAttribute(node, name) : nullptr;
    return attribute == nullptr ? std::string() : Content(attribute);
}

void AddText(xmlNode* parent, const std::string& text)
{
    xmlNode* node = xmlNewText(nullptr);
    if (node == nullptr)
        return; // RequireMemory() says it
    // A short one stands in the node, as the parser places it (XML_PARSE_COMPACT).
    if (text.size() < sizeof(node->properties) + sizeof(node->nsDef))
    {
        node->content = reinterpret_cast<xmlChar*>(&node->properties);
        text.copy(reinterpret_cast<char*>(node->content), text.size());
        node->content[text.size()] = 0;
    }
    else
        node->content = xmlStrndup(Chars(text), static_cast<int>(text.size()));
    node->parent = parent;
    node->doc = parent->doc;
    parent->children = parent->last = node;
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
    Tree& from = Tree::Of(node);
    Tree& to = Tree::Of(parent);
    from.Release(node);
    if (&from != &to)
        to.Memory().Share(from.Memory());
    const Arena::Use use(to.Memory());
    xmlUnlinkNode(node);
    if (node->doc != parent->doc)
        for (xmlNode* element = node; element != nullptr; element = NextElement(element, node))
            HandOver(element, node->doc->dict, parent->doc->dict);
    xmlNode* moved = xmlAddChild(parent, node);
    if (moved == nullptr)
        return RequireMemory();
    xmlReconciliateNs(parent->doc, moved);
    bool declares = false;
    for (xmlNode* element = moved; element != nullptr; element = NextElement(element, moved))
        declares = declares || element->nsDef != nullptr;
    if (declares)
        to.ForgetPrefixes();
    RequireMemory();
}

Tree::Tree(DocPointer doc, std::size_t elements) : m_doc(std::move(doc)), m_elements(elements)
{
    m_doc->_private = this;
}

Tree::~Tree()
{
    if (!Memory().Lent())
        return;
    const Arena::Use use(Memory());
    for (xmlNode* node : m_detached)
        xmlFreeNode(node);
}

Tree& Tree::Of(const xmlNode* node) { return *static_cast<Tree*>(node->doc->_private); }

const std::string& Tree::NamespaceOf(const std::string& prefix)
{
    auto found = m_prefixes.find(prefix);
    if (found == m_prefixes.end())
        found = m_prefixes.emplace(prefix, FirstBinding(Top(), prefix)).first;
    return found->second;
}

xmlXPathContext& Tree::Queries()
{
    if (m_queries == nullptr)
    {
        std::unique_ptr<xmlXPathContext, ContextDeleter> queries(xmlXPathNewContext(Doc()));
        RequireMemory();
        queries->error = Ignore;
        ForEachBinding(Top(),
                       [&queries](const xmlNs& space)
                       {
                           if (xmlXPathNsLookup(queries.get(), space.prefix) == nullptr)
                               xmlXPathRegisterNs(queries.get(), space.prefix, space.href);
                           return true;
                       });
        RequireMemory();
        m_queries = std::move(queries);
    }
    return *m_queries;
}

void Tree::ForgetPrefixes()
{
    m_queries.reset();
    m_prefixes.clear();
}

bool Tree::Grow()
{
    m_overgrown = m_overgrown || !platform::AdmitElements(++m_elements);
    return !m_overgrown;
}

} // namespace analytics::xml
