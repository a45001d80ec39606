#pragma once

#include "Probe.h"

#include "documents/Model.h"

namespace model
{

// Tells from the answers what each element and attribute is, from the root down.
client::Element Learn(const Answers& answers);

} // namespace model
