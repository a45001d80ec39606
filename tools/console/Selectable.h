#pragma once

#include "documents/DocumentJson.h"

namespace client
{

class Service;

// The behaviors that a person can select in the profile, and the scene at the end: "id", "name", "state" as
// in "active" or "unavailable: budget", and for the latter "why" as a sentence.
Json AvailabilityOf(Service& service, int profile);

} // namespace client
