#pragma once

#include "documents/Model.h"

#include <string>
#include <vector>

namespace client
{

// What a value says, for people. All behaviors share one table of them, by the name in the document.
struct Meaning
{
    std::string name;  // of an element or attribute, or of one of several boxes and lines
    std::string label; // as in a form
    std::string unit;  // empty: none
    std::string text;
    std::optional<Bounds> advised;    // where the document has none
    std::vector<std::string> choices; // of 0, 1, 2 and so on
};

// The meaning of the field; an empty one if it is unknown.
const Meaning& MeaningOf(const std::string& name);

// Between which numbers a field is advised to be: those that the document gives, else those of its
// meaning, else nothing.
std::optional<Bounds> Advised(const Field& field);
// As in "5 to 1000", or "1 or more".
std::string BoundsText(const Bounds& bounds);
// The word for a number of the field, as in "major"; empty if it has none.
std::string Choice(const Field& field, long long number);

} // namespace client
