#include "Scene.h"

#include "Failure.h"
#include "Service.h"
#include "XmlDocument.h"

namespace client
{

std::optional<std::string> SceneOf(Service& service, int profile)
{
    // A service without a scene to give closes the connection; one that is disturbed may do so as well. So it
    // is asked for something else in between, which it answers if it is well.
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        try
        {
            return service.Scene(profile);
        }
        catch (const NoAnswer&)
        {
            service.Profiles();
        }
    }
    return std::nullopt;
}

std::string RenamedScene(const std::string& document, const std::string& name)
{
    const XmlDocument scene(document, "the scene");
    xmlNode* const element = scene.First(kSceneElement);
    if (element == nullptr)
        throw Failure(Exit::Document,
                      std::string("The scene has no <") + kSceneElement + "> element that bears the name");
    xmlSetProp(element, reinterpret_cast<const xmlChar*>("name"),
               reinterpret_cast<const xmlChar*>(name.c_str()));
    return scene.Text();
}

Model SceneModel(const std::vector<std::string>& documents)
{
    Model model;
    for (const std::string& document : documents)
        if (const XmlDocument parsed(document, "the service's document");
            const xmlNode* root = parsed.First(kSceneElement))
            model.Learn(root);
    return model;
}

} // namespace client
