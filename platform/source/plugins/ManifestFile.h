#pragma once

#include <analytics/Manifest.h>

#include "xml/XmlFile.h"

#include <optional>
#include <string>

namespace analytics::platform
{

// Reads the text of a manifest.xml. Nothing if it is no manifest; `error` then says why. `home` stays
// for the caller to fill.
std::optional<ManifestFields> ReadManifest(const std::string& text, xml::SyntaxError& error);

} // namespace analytics::platform
