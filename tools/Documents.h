#pragma once

#include "Changes.h"
#include "Model.h"
#include "Values.h"

#include <string>

namespace client
{

// A document as a person gave it, and what messages call it.
struct Source
{
    std::string name;
    std::string text;
};

// The whole of a file; "-" is standard input. Throws Failure.
Source ReadSource(const std::string& file);
// Replaces the file as a whole, or leaves it alone. Throws Failure.
void WriteFile(const std::string& file, const std::string& text);

// Says on standard error, with line numbers, what in the document a service would ignore or a user interface
// would not have allowed. `root` is the name of the element that the document is about. Throws Failure if it
// isn't XML or has no such element, or if `strict` and there is a warning.
void CheckDocument(const Source& source, const std::string& root, const Model& model, bool strict);
// The same for a behavior's document, which has to be one of this behavior. An empty model is no model.
void CheckBehavior(const Source& source, const std::string& id, const Model& model, bool strict);

// What came back different; nothing of a stored document that is empty, which is how an idle one is.
std::vector<Change> ChangesIn(const Source& sent, const std::string& stored, const std::string& root);
List Listed(const std::vector<Change>& changes);

} // namespace client
