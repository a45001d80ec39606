#pragma once

#include "XmlDocument.h"
#include "documents/Finding.h"
#include "documents/Frame.h"
#include "documents/Model.h"

namespace client
{

// Points, zones and boxes: all warnings.
Findings CheckZones(const DocumentModel& model, const XmlDocument& document, const Frame& frame);

} // namespace client
