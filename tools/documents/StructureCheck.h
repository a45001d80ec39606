#pragma once

#include "XmlDocument.h"
#include "documents/Finding.h"
#include "documents/Model.h"

namespace client
{

// Elements, attributes and single values: whether they are known, where they belong, and what the service
// makes of them.
Findings CheckStructure(const DocumentModel& model, const XmlDocument& document);

} // namespace client
