#pragma once

#include "Json.h"
#include "documents/Model.h"

#include <string>

namespace client
{

// What the check takes for an error is not valid by either; of warnings they know nothing.
std::string XmlSchema(const DocumentModel& model);    // W3C XML Schema 1.0
Json JsonSchema(const DocumentModel& model);          // draft 7, of the JSON form
std::string ManPageTable(const DocumentModel& model); // the fields, for a man page

} // namespace client
