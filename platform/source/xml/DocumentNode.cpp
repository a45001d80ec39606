#include <analytics/DocumentNode.h>

#include "xml/Memory.h"
#include "xml/Text.h"
#include "xml/Tree.h"
#include "xml/Writer.h"

#include <algorithm>
#include <memory>

namespace analytics
{
using xml::Chars;
using xml::IsElement;
using xml::NodeOf;
using xml::Tree;

namespace
{
bool IsAttribute(const xmlNode* node) { return node != nullptr && node->type == XML_ATTRIBUTE_NODE; }

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsName(const std::string& name)
{
    return (!name.empty() && std::all_of(name.begin(), name.end(), IsLetter)) ||
           xmlValidateNCName(Chars(name), 0) == 0;
}

void SetAttribute(xmlNode* element, const std::string& name, const std::string& value)
{
    if (xml::FindAttribute(element, name) != nullptr)
        xmlSetNsProp(element, nullptr, Chars(name), Chars(value));
    else if (xmlAttr* attribute = xmlNewNsProp(element, nullptr, Chars(name), nullptr))
        xml::AddText(reinterpret_cast<xmlNode*>(attribute), value);
}

std::string Dump(xmlNode* node)
{
    // A copy of its own gets the declarations that reach the node from above.
    const auto arena = std::make_shared<xml::Arena>(0);
    const xml::Arena::Use use(*arena);
    const xml::DocPointer doc(xmlNewDoc(Chars("1.0")), {arena});
    xml::RequireMemory();
    xmlNode* copy = xmlDocCopyNode(node, doc.get(), 1);
    xmlDocSetRootElement(doc.get(), copy);
    xml::RequireMemory();
    return xml::Write(*copy);
}

bool Contains(const xmlNode* outer, const xmlNode* node)
{
    while (node != nullptr && node != outer)
        node = node->parent;
    return node != nullptr;
}
} // namespace

DocumentNode::DocumentNode() : m_handle(nullptr) {}
DocumentNode::DocumentNode(void* handle) : m_handle(handle) {}
DocumentNode::~DocumentNode() = default;

void* DocumentNode::Handle() const { return m_handle; }
void DocumentNode::Handle(void* handle) { m_handle = handle; }
void DocumentNode::DeleteHandle() { m_handle = nullptr; }

int DocumentNode::GetValue(int defaultValue) { return xml::ToInt(GetValue(), defaultValue); }

std::string DocumentNode::GetValue()
{
    return m_handle == nullptr ? std::string() : xml::Content(NodeOf(this));
}

void DocumentNode::SetValue(int value) { SetValue(std::to_string(value)); }

void DocumentNode::SetValue(const std::string& value)
{
    xmlNode* node = NodeOf(this);
    if (node == nullptr)
        return;
    const xml::Arena::Use use(Tree::Of(node).Memory());
    const std::string text = xml::ToXmlText(value);
    if (IsAttribute(node) && node->parent != nullptr)
        xmlSetNsProp(node->parent, node->ns, node->name, Chars(text));
    if (!IsElement(node))
        return xml::RequireMemory();
    // Content that is set is read as markup, content that is added as text.
    xmlNodeSetContent(node, nullptr);
    if (!text.empty())
        xmlNodeAddContent(node, Chars(text));
    xml::RequireMemory();
}

int DocumentNode::GetProperty(const std::string& name, int defaultValue)
{
    return xml::ToInt(GetProperty(name), defaultValue);
}

std::string DocumentNode::GetProperty(const std::string& name)
{
    return xml::Attribute(NodeOf(this), name.c_str());
}

void DocumentNode::SetProperty(const std::string& name, int value)
{
    SetProperty(name, std::to_string(value));
}

void DocumentNode::SetProperty(const std::string& name, const std::string& value)
{
    xmlNode* node = NodeOf(this);
    if (!IsElement(node) || !IsName(name))
        return;
    const xml::Arena::Use use(Tree::Of(node).Memory());
    SetAttribute(node, name, xml::ToXmlText(value));
    xml::RequireMemory();
}

DocumentNode* DocumentNode::AddNewChild(const std::string& name, int value)
{
    return AddNewChild(name, std::to_string(value));
}

DocumentNode* DocumentNode::AddNewChild(const std::string& name, const std::string& value)
{
    xmlNode* node = NodeOf(this);
    if (!IsElement(node) || !IsName(name) || !Tree::Of(node).Grow())
        return nullptr;
    const xml::Arena::Use use(Tree::Of(node).Memory());
    const std::string text = xml::ToXmlText(value);
    auto child = std::make_unique<DocumentNode>();
    child->Handle(xmlNewChild(node, node->ns, Chars(name), nullptr));
    if (!text.empty() && child->Handle() != nullptr)
        xml::AddText(NodeOf(child.get()), text);
    xml::RequireMemory();
    return child.release();
}

void DocumentNode::AddChild(DocumentNode* child)
{
    xmlNode* node = NodeOf(this);
    xmlNode* moved = NodeOf(child);
    if (IsElement(node) && IsElement(moved) && !Contains(moved, node))
        xml::Move(moved, node);
}

void DocumentNode::Unlink(bool destroy)
{
    xmlNode* node = NodeOf(this);
    if (!IsElement(node) && !IsAttribute(node))
        return;
    Tree& tree = Tree::Of(node);
    const xml::Arena::Use use(tree.Memory());
    if (!destroy)
        tree.Keep(node); // which may throw, and then nothing has changed
    xmlUnlinkNode(node);
    if (destroy)
    {
        tree.Release(node);
        xmlFreeNode(node);
        m_handle = nullptr;
        return;
    }
    // The declarations above may end before this node does.
    ReconciliateNs();
}

void DocumentNode::ReconciliateNs()
{
    xmlNode* node = NodeOf(this);
    if (!IsElement(node))
        return;
    const xml::Arena::Use use(Tree::Of(node).Memory());
    xmlReconciliateNs(node->doc, node);
    xml::RequireMemory();
}

std::string DocumentNode::DumpToString()
{
    return IsElement(NodeOf(this)) ? Dump(NodeOf(this)) : GetValue();
}

} // namespace analytics
