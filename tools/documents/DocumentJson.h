#pragma once

#include "Json.h"
#include "documents/Finding.h"
#include "documents/Model.h"

#include <pugixml.hpp>

#include <string>

namespace client
{

// The JSON form of a document: what means something under its name, in the document's order; zones as
// lists of [x, y]; boxes and lines by their names. Constants of the service are left out. Null for a text
// without a document of this kind. Throws Failure if the text isn't XML.
Json ToJson(const DocumentModel& model, const std::string& document);

// The document, as XML, of its JSON form. Values of a wrong type are added to `findings` and left out;
// unknown names become elements, for the check to find.
pugi::xml_document FromJson(const DocumentModel& model, const Json& json, Findings& findings);

// The JSON pointer of `name` in what `pointer` points to.
std::string Below(const std::string& pointer, const std::string& name);

} // namespace client
