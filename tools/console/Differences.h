#pragma once

#include "documents/DocumentJson.h"

namespace client
{

// What differs between two documents in their JSON form, for people: a list of {"field", "before", "after"}.
Json Differences(const Json& before, const Json& after);
// Whether they say the same, in whatever order.
bool SameValue(const Json& a, const Json& b);

} // namespace client
