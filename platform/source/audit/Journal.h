#pragma once

#include "audit/AuditEntry.h"

namespace analytics::platform
{

// Whether the system's journal has taken the line; false where there is none, or none is known to this build
// (WITH_SYSTEMD).
bool SendToJournal(const AuditLine& line);

} // namespace analytics::platform
