#include "documents/Models.h"

namespace client
{

const DocumentModel* FindModel(const std::string& behavior)
{
    for (const DocumentModel& model : BehaviorModels())
        if (behavior == model.name || behavior == model.alias || behavior == model.id)
            return &model;
    return nullptr;
}

} // namespace client
