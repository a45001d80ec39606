#include "xml/Namespaces.h"

#include "xml/Reader.h"

#include <new>
#include <optional>
#include <set>

namespace analytics::xml
{
namespace
{
constexpr std::string_view kDeclaration = "xmlns";
constexpr std::string_view kXmlPrefix = "xml"; // which nobody declares

// The prefix that the attribute declares, empty for the default namespace; nothing if it declares none.
std::optional<std::string_view> Declared(std::string_view attribute)
{
    if (!attribute.starts_with(kDeclaration))
        return std::nullopt;
    attribute.remove_prefix(kDeclaration.size());
    if (attribute.starts_with(':'))
        attribute.remove_prefix(1);
    else if (!attribute.empty())
        return std::nullopt;
    return attribute;
}
} // namespace

QName::QName(const char* name)
{
    const std::string_view whole(name);
    const std::size_t colon = whole.find(':');
    prefix = whole.substr(0, colon == std::string_view::npos ? 0 : colon);
    local = whole.substr(colon + 1); // all of it if there is none
}

bool IsElement(pugi::xml_node node) { return node.type() == pugi::node_element && *node.name() != '\0'; }

pugi::xml_node Root(const Tree& tree) { return tree.document.find_child(IsElement); }

bool IsPlain(const Tree& tree)
{
    const pugi::xml_node last = tree.document.last_child();
    return tree.plain && (last.type() != pugi::node_element || IsElement(last));
}

bool DeclaresPlainly(pugi::xml_node root)
{
    std::set<std::string_view> spaces;
    for (const pugi::xml_attribute attribute : root.attributes())
        if (const auto prefix = Declared(attribute.name()))
            if (prefix->empty() || !spaces.insert(attribute.value()).second)
                return false;
    return true;
}

bool IsDeclaration(pugi::xml_attribute attribute) { return Declared(attribute.name()).has_value(); }

pugi::xml_attribute Declaration(pugi::xml_node element, std::string_view prefix)
{
    for (pugi::xml_attribute each = element.first_attribute(); each; each = each.next_attribute())
        if (Declared(each.name()) == prefix)
            return each;
    return {};
}

std::string_view NamespaceAt(pugi::xml_node element, std::string_view prefix)
{
    for (; element; element = element.parent())
        if (const pugi::xml_attribute declaration = Declaration(element, prefix))
            return declaration.value();
    return prefix == kXmlPrefix ? "http://www.w3.org/XML/1998/namespace" : "";
}

std::string_view FirstBinding(const Tree& tree, std::string_view prefix)
{
    pugi::xml_attribute declaration;
    ForEachNode(Root(tree), [&](pugi::xml_node node) { return !(declaration = Declaration(node, prefix)); });
    return declaration.value();
}

pugi::xml_attribute PlainAttribute(pugi::xml_node element, const std::string& name)
{
    const bool plain = name.find(':') == std::string::npos && name != kDeclaration;
    return plain ? element.attribute(name.c_str()) : pugi::xml_attribute();
}

Declarations Missing(pugi::xml_node element, pugi::xml_node place)
{
    Declarations missing;
    const auto look = [&](pugi::xml_node node, std::string_view prefix)
    {
        if (prefix == kXmlPrefix || missing.contains(prefix))
            return;
        while (!Declaration(node, prefix) && node != element)
            node = node.parent();
        if (!Declaration(node, prefix))
            missing.emplace(prefix, NamespaceAt(element, prefix));
    };
    ForEachNode(element,
                [&](pugi::xml_node node)
                {
                    if (IsElement(node))
                        look(node, QName(node.name()).prefix);
                    for (const pugi::xml_attribute attribute : node.attributes())
                        if (const QName name(attribute.name());
                            !name.prefix.empty() && !IsDeclaration(attribute))
                            look(node, name.prefix);
                    return true;
                });
    std::erase_if(missing, [place](const auto& one) { return NamespaceAt(place, one.first) == one.second; });
    return missing;
}

void Declare(pugi::xml_node element, const Declarations& declarations)
{
    // Each goes ahead of the one before.
    for (auto one = declarations.rbegin(); one != declarations.rend(); ++one)
    {
        const auto& [prefix, space] = *one;
        const std::string name =
            std::string(kDeclaration) + (prefix.empty() ? "" : ":") + std::string(prefix);
        pugi::xml_attribute declaration = element.prepend_attribute(name.c_str());
        if (!declaration.set_name(name.c_str()) || !declaration.set_value(std::string(space).c_str()))
            throw std::bad_alloc();
    }
}

} // namespace analytics::xml
