#pragma once

#include "documents/Model.h"

#include <string>

namespace client
{

struct Session;

// Says what the fields of a document mean, or one of them. Throws Failure (usage) if there is none of the
// name.
void Explain(Session& session, const DocumentModel& model, const std::string& field);

} // namespace client
