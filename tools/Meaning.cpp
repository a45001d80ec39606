#include "Meaning.h"

#include "Scene.h"
#include "Text.h"
#include "documents/Models.h"

namespace client
{

std::vector<Change> Differences(const std::string& id, const std::string& before, const std::string& after)
{
    const DocumentModel* const model = id == kSceneElement ? &SceneModel() : FindModel(id);
    if (model != nullptr)
        return Differences(*model, before, after);
    // Of a behavior that isn't known here, only the text can be compared.
    if (Trimmed(before) == Trimmed(after))
        return {};
    return {{0, "", "(a document)", "(another document)"}};
}

bool IsActive(const std::string& id, const std::string& document)
{
    const DocumentModel* const model = FindModel(id);
    return model != nullptr && !Trimmed(document).empty() && IsActive(*model, document);
}

bool IsIdle(const std::string& id, const std::string& document)
{
    const DocumentModel* const model = FindModel(id);
    return model == nullptr ? Trimmed(document).empty() : IsIdle(*model, document);
}

} // namespace client
