#pragma once

#include "xml/Arena.h"
#include "xml/Reader.h"

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

namespace analytics::xml
{

// A document stands in an arena of its own, which ends with it. Whoever changes it puts the arena to use.
struct DocDeleter
{
    std::shared_ptr<Arena> arena;
    void operator()(xmlDoc* doc) const;
};
using DocPointer = std::unique_ptr<xmlDoc, DocDeleter>;

// How many elements the text has if it is well-formed; what only looks like a tag may count as well.
std::size_t MostElements(std::string_view text);

// Null, and `error` filled, for a text that is refused; Document::ParseString() tells which are.
DocPointer Parse(const std::string& text, SyntaxError& error);

} // namespace analytics::xml
