#include "Scene.h"

#include "Failure.h"
#include "Service.h"
#include "XmlDocument.h"
#include "documents/Models.h"
#include "documents/Shape.h"

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

std::string BehaviorOf(Service& service, int profile, const std::string& id)
{
    try
    {
        return service.ProfileBehavior(profile, id);
    }
    catch (const Failure& failure)
    {
        // That is what the service says of a profile without any behavior as well.
        if (failure.Code() != Exit::Refused)
            throw;
        service.DefaultBehavior(id); // throws as well if the behavior is unknown indeed
        return "";
    }
}

std::string RenamedScene(const std::string& document, const std::string& name)
{
    const XmlDocument scene(document, "the scene");
    pugi::xml_node root = RootOf(SceneModel(), scene.Root());
    if (root.empty())
        throw Failure(Exit::Document,
                      "The scene has no <" + SceneModel().root.name + "> element that bears the name");
    if (root.attribute("name").empty())
        root.append_attribute("name");
    root.attribute("name").set_value(name.c_str());
    return scene.Text();
}

} // namespace client
