#pragma once

#include "documents/Model.h"

#include <string>
#include <vector>

namespace model
{

// The C++ that defines BehaviorModels() and SceneModel().
std::string AsSource(const std::vector<client::DocumentModel>& behaviors, const client::DocumentModel& scene);

} // namespace model
