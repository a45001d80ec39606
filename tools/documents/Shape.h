#pragma once

#include "documents/Geometry.h"
#include "documents/Model.h"

#include <pugixml.hpp>

namespace client
{

// How a part of a document stands in its JSON form.

// A list item that is nothing but its points, like an exclude zone: a list of points.
bool IsPoints(const Element& item);
// One of several boxes or lines: its two points under its name. Its "vertices"; null for anything else.
const Element* LineOf(const Element& element);
// What a person may set, or read.
bool MeansSomething(const Field& field);

// The element that this one is described by: by its name, and by the text of its child "name" where there
// are several of that name. Null if nothing is known of it.
const Element* Described(const Element& parent, const pugi::xml_node& child);
// False for a group of nothing but constants, which the JSON form has no room for.
bool InJson(const Element& element);
// The name that an element has in its parent's JSON form.
std::string JsonName(const Element& element);

// The points of a list of vertices. What isn't a number counts as 0.
PointList PointsOf(const pugi::xml_node& vertices);

// The document's root in a text that may hold more; empty if there is none.
pugi::xml_node RootOf(const DocumentModel& model, const pugi::xml_node& from);

} // namespace client
