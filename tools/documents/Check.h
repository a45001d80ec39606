#pragma once

#include "XmlDocument.h"
#include "documents/Finding.h"
#include "documents/Frame.h"
#include "documents/Model.h"

namespace client
{

// Holds a document against its model: what the service would drop or change is an error, what lies beyond
// the advice or the frame, or can't raise an alarm, is a warning. In the order of the document. Lines are
// those of the text that `document` was parsed from.
Findings Check(const DocumentModel& model, const XmlDocument& document, const Frame& frame);

bool HasErrors(const Findings& findings);

} // namespace client
