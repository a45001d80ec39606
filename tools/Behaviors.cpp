#include "Behaviors.h"

#include "Failure.h"
#include "documents/Models.h"

#include <cctype>

namespace client
{
namespace
{

// Without case and without what stands between words.
std::string Plain(const std::string& text)
{
    std::string plain;
    for (const char c : text)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return plain;
}

} // namespace

std::string BehaviorId(const std::string& text)
{
    if (text.find_first_of(":.") != std::string::npos)
        return text;
    std::string names;
    for (const DocumentModel& model : BehaviorModels())
    {
        if (Plain(text) == Plain(model.name) || Plain(text) == Plain(model.title))
            return model.alias;
        names += (names.empty() ? "" : ", ") + model.name;
    }
    throw Failure(Exit::Usage,
                  "'" + text + "' isn't a behavior. Name one of " + names + ", or give an identifier");
}

std::string BehaviorName(const std::string& id)
{
    const DocumentModel* const model = FindModel(id);
    return model == nullptr ? "" : model->name;
}

std::string BehaviorCalled(const std::string& id)
{
    const std::string name = BehaviorName(id);
    return name.empty() ? id : name;
}

std::vector<std::string> BehaviorNames()
{
    std::vector<std::string> names;
    for (const DocumentModel& model : BehaviorModels())
        names.push_back(model.name);
    return names;
}

} // namespace client
