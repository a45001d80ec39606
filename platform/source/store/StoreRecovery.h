#pragma once

#include <string>

namespace analytics::platform
{

// Saves what can be read of a damaged database into a new one, which takes its place; the damaged files
// stay beside it under another name. Does nothing to a sound one. Returns a sentence on what was done.
// The caller holds the state folder's lock, and no connection is open. Throws AnalyticsFault.
std::string RecoverDatabase(const std::string& file);

// Brings a recovery to its end that was cut off once all had been saved. Under the same conditions.
void FinishRecovery(const std::string& file);

} // namespace analytics::platform
