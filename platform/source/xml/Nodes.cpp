#include "xml/Nodes.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace analytics::xml
{
namespace
{
constexpr std::uintptr_t kAttribute = 1;

std::uintptr_t Bits(const DocumentNode& handle) { return reinterpret_cast<std::uintptr_t>(handle.Handle()); }

class Text : public pugi::xml_writer
{
  public:
    // A return stands in texts alone, and would be read again as a line feed.
    void write(const void* data, std::size_t size) override
    {
        std::string_view rest(static_cast<const char*>(data), size);
        for (std::size_t end = rest.find('\r'); end != std::string_view::npos; end = rest.find('\r'))
        {
            (text += rest.substr(0, end)) += "&#13;";
            rest.remove_prefix(end + 1);
        }
        text += rest;
    }

    std::string text;
};
} // namespace

DocumentNode* HandleOf(const Match& match)
{
    if (!match.element)
        return nullptr;
    if (!match.attribute)
        return new DocumentNode(match.element.internal_object());
    const auto address = reinterpret_cast<std::uintptr_t>(match.attribute.internal_object());
    return new DocumentNode(reinterpret_cast<void*>(address | kAttribute));
}

std::vector<DocumentNode*> HandlesOf(const std::vector<Match>& matches)
{
    std::vector<std::unique_ptr<DocumentNode>> owned;
    owned.reserve(matches.size());
    for (const Match& match : matches)
        owned.emplace_back(HandleOf(match));
    std::vector<DocumentNode*> handles(owned.size());
    std::ranges::transform(owned, handles.begin(), [](auto& handle) { return handle.release(); });
    return handles;
}

void ForEach(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& visit)
{
    if (tree == nullptr)
        return;
    if (const pugi::xml_node start = context == nullptr ? tree->document : NodeOf(context))
        Path::Of(query).ForEach(*tree, start, visit);
}

pugi::xml_node NodeOf(const DocumentNode* handle)
{
    if (handle == nullptr || (Bits(*handle) & kAttribute) != 0)
        return {};
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(handle->Handle()));
}

pugi::xml_attribute AttributeOf(const DocumentNode& handle)
{
    if ((Bits(handle) & kAttribute) == 0)
        return {};
    return pugi::xml_attribute(reinterpret_cast<pugi::xml_attribute_struct*>(Bits(handle) & ~kAttribute));
}

pugi::xml_node AppendElement(pugi::xml_node parent, const std::string& name)
{
    pugi::xml_node element = Require(parent.append_child(pugi::node_element));
    Require(element.set_name(name.c_str()));
    return element;
}

void SetAttribute(pugi::xml_node element, const char* name, const std::string& value)
{
    pugi::xml_attribute attribute = PlainAttribute(element, name);
    if (!attribute)
    {
        attribute = Require(element.append_attribute(""));
        Require(attribute.set_name(name));
    }
    Require(attribute.set_value(value.c_str()));
}

bool Contains(pugi::xml_node outer, pugi::xml_node node)
{
    while (node && node != outer)
        node = node.parent();
    return !node.empty();
}

std::string Print(pugi::xml_node node)
{
    Text out;
    node.print(out, "", pugi::format_raw, pugi::encoding_utf8);
    return std::move(out.text);
}

} // namespace analytics::xml
