#pragma once

#include "xml/Arena.h"
#include "xml/Reader.h"

#include <libxml/tree.h>

#include <memory>
#include <string>

namespace analytics::xml
{

// A document stands in an arena of its own, which ends with it. Whoever changes it puts the arena to use.
struct DocDeleter
{
    std::shared_ptr<Arena> arena;
    void operator()(xmlDoc* doc) const;
};
using DocPointer = std::unique_ptr<xmlDoc, DocDeleter>;

// Null, and `error` filled, for a text that is refused; Document::ParseString() tells which are.
DocPointer Parse(const std::string& text, SyntaxError& error);

} // namespace analytics::xml
