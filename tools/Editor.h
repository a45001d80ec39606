#pragma once

#include "Documents.h"

#include <functional>
#include <string>

namespace client
{

// Lets a person change a text with the program that EDITOR or VISUAL names, else vi, and gives what was
// written to `store`, unless nothing was changed; then false. Throws Failure; what was written is kept then,
// in the file that the sentence names.
bool Edit(const std::string& name, const std::string& text, const std::function<void(const Source&)>& store);

} // namespace client
