#pragma once

#include "documents/Frame.h"
#include "documents/Model.h"

#include <string>

namespace client
{

// A full document in the service's own order, an element in each line: active, with a zone that raises
// alarms, and an exclude zone that leaves most of it.
std::string Example(const DocumentModel& model, const Frame& frame);

} // namespace client
