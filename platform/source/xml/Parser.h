#pragma once

#include "xml/Arena.h"

#include <libxml/tree.h>

#include <memory>
#include <string>

namespace analytics::xml
{

// What is wrong with a text that is refused.
struct SyntaxError
{
    int line = 0;        // counted from 1; 0 if it concerns the text as a whole
    std::string message; // a phrase for a person, without a full stop at its end
};

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
