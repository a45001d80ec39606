#pragma once

#include "documents/Model.h"

namespace client
{

// All behaviors in the order of their names. They live as long as the program.
const std::vector<DocumentModel>& BehaviorModels();
const DocumentModel& SceneModel();
// That of a behavior by its name, alias or identifier in the camera; null if it is unknown.
const DocumentModel* FindModel(const std::string& behavior);

} // namespace client
