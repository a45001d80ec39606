#pragma once

#include <analytics/DocumentNode.h>

#include "xml/Path.h"

#include <new>
#include <string>
#include <vector>

// What a handle stands for. An attribute is marked in the lowest bit, which no address of a node has.
namespace analytics::xml
{

// Null for no match; a list of them in the same order. The caller owns what it gets.
DocumentNode* HandleOf(const Match& match);
std::vector<DocumentNode*> HandlesOf(const std::vector<Match>& matches);
pugi::xml_node NodeOf(const DocumentNode* handle); // null for that of an attribute, an empty or no one
pugi::xml_attribute AttributeOf(const DocumentNode& handle); // null for that of a node or an empty one

// Path::ForEach() of a query from `context`, or from the document where that is null; nothing without a tree.
void ForEach(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& visit);

inline constexpr char kXmlDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// What pugixml has made. Without memory it gives null or false, which each change of a tree has to look at.
template <class T>
T Require(T made)
{
    if (!made)
        throw std::bad_alloc();
    return made;
}

// Behind the children that the parent has. (pugixml's own takes a name for which it has no memory as none.)
pugi::xml_node AppendElement(pugi::xml_node parent, const std::string& name);
// Replaces the value of the attribute, or appends it.
void SetAttribute(pugi::xml_node element, const char* name, const std::string& value);

bool Contains(pugi::xml_node outer, pugi::xml_node node); // or is it

// The node with all below it as text.
std::string Print(pugi::xml_node node);

} // namespace analytics::xml
