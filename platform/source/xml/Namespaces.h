#pragma once

#include <pugixml.hpp>

#include <map>
#include <string>
#include <string_view>

// Namespaces of a tree, of which each element and attribute has the name that it has in text, prefix and all,
// and declarations are attributes. Texts that are returned are those of the tree.
namespace analytics::xml
{

struct Tree
{
    pugi::xml_document document;
    // Elements are in the same namespace if their prefixes are the same, and only then; without a prefix they
    // are in none. That's as it was read.
    bool plain = false;
};

struct QName
{
    explicit QName(const char* name);
    std::string_view prefix; // empty without one
    std::string_view local;
};

// Unlinked elements stand below one without a name at the end of the document, which is no element to
// anybody.
bool IsElement(pugi::xml_node node);
pugi::xml_node Root(const Tree& tree); // null once it was removed

bool IsPlain(const Tree& tree); // as long as it has no PlaceOfUnlinked()
// Whether the root of a tree declares so that it is plain, in which no other element declares anything.
bool DeclaresPlainly(pugi::xml_node root);

bool IsDeclaration(pugi::xml_attribute attribute);
// What declares the prefix, "" for the default namespace, on the element itself; null if nothing does.
pugi::xml_attribute Declaration(pugi::xml_node element, std::string_view prefix);
// What the prefix stands for at the element; empty for no namespace.
std::string_view NamespaceAt(pugi::xml_node element, std::string_view prefix);
// The namespace that the document first binds to the prefix; empty if it binds none.
std::string_view FirstBinding(const Tree& tree, std::string_view prefix);

// An attribute without a namespace; null where absent.
pugi::xml_attribute PlainAttribute(pugi::xml_node element, const std::string& name);

// What the element and all below it use and only elements above it declare, prefix to namespace, as far as
// it isn't the same at `place`. A null `place` declares nothing.
using Declarations = std::map<std::string_view, std::string_view>;
Declarations Missing(pugi::xml_node element, pugi::xml_node place);
// Ahead of the element's attributes. Throws std::bad_alloc.
void Declare(pugi::xml_node element, const Declarations& declarations);

} // namespace analytics::xml
