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

// The first matches of a query from `context`, or from the document where that is null, as far as they are
// accepted. Nothing without a tree.
std::vector<Match> All(Tree* tree, const std::string& query, const DocumentNode* context,
                       const Path::Visit& accept = nullptr);
Match First(Tree* tree, const std::string& query, const DocumentNode* context,
            const Path::Visit& accept = nullptr);
void Remove(const std::vector<Match>& matches); // with all below them

inline constexpr char kXmlDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// What pugixml has made. Without memory it gives null or false, which each change of a tree has to look at.
template <class T>
T Require(T made)
{
    if (!made)
        throw std::bad_alloc();
    return made;
}

// Behind the children that the parent has. A text is the value of the element, as in one that was read.
pugi::xml_node AppendElement(pugi::xml_node parent, const std::string& name, const std::string& text = "");
// Replaces the value of the attribute, which is no declaration, or appends it.
void SetAttribute(pugi::xml_node element, const std::string& name, const std::string& value);

// What is unlinked stays in the memory of its document, below an element without a name at the end. A
// document that something of another one comes into has it as well, to tell that it isn't as it was read.
pugi::xml_node PlaceOfUnlinked(pugi::xml_node node);

bool Contains(pugi::xml_node outer, pugi::xml_node node); // or is it

// Appends the node with all below it to `text`, which is returned.
std::string& Print(pugi::xml_node node, std::string& text);

} // namespace analytics::xml
