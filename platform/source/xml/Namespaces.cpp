#include "xml/Namespaces.h"

#include "xml/Reader.h"

#include <algorithm>
#include <new>
#include <optional>

namespace analytics::xml
{
namespace
{
constexpr std::string_view kDeclaration = "xmlns";
constexpr std::string_view kXmlPrefix = "xml"; // which nobody declares

// The prefix that the attribute declares, empty for the default namespace; nothing if it is no declaration.
std::optional<std::string_view> Declared(const char* attribute)
{
    const QName name(*attribute == kDeclaration.front() ? attribute : "");
    if (name.prefix == kDeclaration)
        return name.local;
    return name.local == kDeclaration ? std::optional(name.prefix) : std::nullopt;
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

QName::QName(const char* name)
{
    const char* end = name;
    while (*end != '\0' && *end != ':')
        ++end;
    const std::string_view first(name, static_cast<std::size_t>(end - name));
    prefix = *end == ':' ? first : std::string_view();
    local = *end == ':' ? std::string_view(end + 1) : first;
}

bool IsElement(pugi::xml_node node) { return node.type() == pugi::node_element && *node.name() != '\0'; }

pugi::xml_node Root(const Tree& tree) { return tree.document.find_child(IsElement); }

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
        if (name == each.name())
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
