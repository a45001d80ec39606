#include "xml/Namespaces.h"

#include "xml/Reader.h"

#include <algorithm>
#include <new>

namespace analytics::xml
{
namespace
{
constexpr std::string_view kDeclaration = "xmlns";
constexpr std::string_view kXmlPrefix = "xml"; // which nobody declares

bool Declares(std::string_view name, std::string_view prefix)
{
    if (!name.starts_with(kDeclaration))
        return false;
    name.remove_prefix(kDeclaration.size());
    return prefix.empty() ? name.empty() : name.starts_with(':') && name.substr(1) == prefix;
}

// Shows the prefixes that the element itself uses.
template <class Visit>
void ForEachPrefix(pugi::xml_node element, const Visit& visit)
{
    visit(QName(element.name()).prefix);
    for (const pugi::xml_attribute attribute : element.attributes())
        if (const std::string_view prefix = QName(attribute.name()).prefix;
            !prefix.empty() && !IsDeclaration(attribute))
            visit(prefix);
}

bool IsDeclaredWithin(pugi::xml_node top, pugi::xml_node element, std::string_view prefix)
{
    while (!Declaration(element, prefix) && element != top)
        element = element.parent();
    return !Declaration(element, prefix).empty();
}
} // namespace

QName::QName(std::string_view name)
{
    const std::size_t colon = name.find(':');
    prefix = colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
    local = colon == std::string_view::npos ? name : name.substr(colon + 1);
}

bool IsElement(pugi::xml_node node) { return node.type() == pugi::node_element && *node.name() != '\0'; }

pugi::xml_node Root(const Tree& tree) { return tree.document.find_child(IsElement); }

bool IsDeclaration(pugi::xml_attribute attribute)
{
    const std::string_view name = attribute.name();
    return name.starts_with(kDeclaration) &&
           (name.size() == kDeclaration.size() || name[kDeclaration.size()] == ':');
}

pugi::xml_attribute Declaration(pugi::xml_node element, std::string_view prefix)
{
    for (pugi::xml_attribute each = element.first_attribute(); each; each = each.next_attribute())
        if (Declares(each.name(), prefix))
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

std::string_view FirstBinding(Tree& tree, std::string_view prefix)
{
    if (const auto found = tree.spaces.find(prefix); found != tree.spaces.end())
        return found->second;
    for (pugi::xml_node node = Root(tree); node; node = Next(node, Root(tree)))
        if (const pugi::xml_attribute declaration = Declaration(node, prefix))
            return tree.spaces.emplace(prefix, declaration.value()).first->second;
    return {};
}

pugi::xml_attribute PlainAttribute(pugi::xml_node element, std::string_view name)
{
    for (pugi::xml_attribute each = element.first_attribute(); each; each = each.next_attribute())
        if (each.name() == name)
            return IsDeclaration(each) || name.find(':') != std::string_view::npos ? pugi::xml_attribute()
                                                                                   : each;
    return {};
}

Declarations Missing(pugi::xml_node element, pugi::xml_node place)
{
    Declarations missing;
    for (pugi::xml_node node = element; node; node = Next(node, element))
        if (IsElement(node))
            ForEachPrefix(node,
                          [&](std::string_view prefix)
                          {
                              if (prefix != kXmlPrefix && !missing.contains(prefix) &&
                                  !IsDeclaredWithin(element, node, prefix))
                                  missing.emplace(prefix, NamespaceAt(element, prefix));
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
