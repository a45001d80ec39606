#pragma once

#include "documents/Model.h"

#include <string>

namespace client
{

struct Session;

// Explains the fields of a document, or one of them. Throws Failure (usage) if it has no field of that
// name.
void Explain(Session& session, const DocumentModel& model, const std::string& field);

} // namespace client
