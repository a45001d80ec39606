#pragma once

#include <string>

namespace analytics::platform
{

// Why a text can't be a profile's name or camera preset, as a sentence; empty if it can. Both go out in
// XML documents, which can't hold every character.
std::string NameRefusal(const std::string& name);
std::string PresetRefusal(const std::string& preset);

} // namespace analytics::platform
