#pragma once

#include "documents/Example.h"
#include "documents/Models.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace client
{

// The behaviors and the scene.
inline std::vector<DocumentModel> AllModels()
{
    std::vector<DocumentModel> models = BehaviorModels();
    models.push_back(SceneModel());
    return models;
}

// The example of a document with one text of it replaced by another.
inline std::string ExampleWith(const std::string& name, const std::string& text, const std::string& instead)
{
    std::string document = Example(name == "scene" ? SceneModel() : *FindModel(name), Frame());
    const std::size_t at = document.find(text);
    EXPECT_NE(at, std::string::npos) << text << " isn't in " << document;
    return at == std::string::npos ? document : document.replace(at, text.size(), instead);
}

} // namespace client
