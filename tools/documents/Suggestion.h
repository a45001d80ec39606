#pragma once

#include "documents/Model.h"

#include <string>

namespace client
{

// What to do with an element that isn't known in `parent`, as the end of a sentence: where it belongs,
// what was meant, or what `parent` may hold. Empty if there is nothing to say.
std::string Suggestion(const std::string& name, const Element& parent, const Element& root);
std::string SuggestedAttribute(const std::string& name, const Element& element);

// The word among `words` that is nearest to one that was mistyped; empty if none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& words);

} // namespace client
