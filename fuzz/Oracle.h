#pragma once

#include <string>

namespace fuzzing
{

// Expects that analytics::Document takes the text if libxml2 finds it well-formed, and then holds the same
// tree, but for what a document may not be: with a type that has more than a name, deeper than 256 elements,
// with more than 256 attributes, or with characters or names that XML 1.0 (4th edition) doesn't know.
void CompareReading(const std::string& text);

// Expects that the path finds in the document what libxml2's XPath finds.
void CompareQuery(const std::string& text, const std::string& query);

} // namespace fuzzing
