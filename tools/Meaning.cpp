#include "Meaning.h"

#include "Failure.h"
#include "Model.h"
#include "Scene.h"
#include "Text.h"
#include "XmlDocument.h"

namespace client
{

std::vector<Change> Differences(const std::string& id, const std::string& before, const std::string& after)
{
    const bool scene = id == kSceneElement;
    const std::string root = scene ? kSceneElement : "behavior";
    const XmlDocument old(scene ? RenamedScene(before, "") : before, "the document of the service");
    const XmlDocument wanted(scene ? RenamedScene(after, "") : after, "the document of the folder");
    const xmlNode* const first = old.First(root);
    const xmlNode* const second = wanted.First(root);
    if (first == nullptr || second == nullptr)
        throw Failure(Exit::Document, "A document has no <" + root + "> element");
    return Changes(first, second);
}

bool IsIdle(const std::string& document)
{
    if (Trimmed(document).empty())
        return true;
    const XmlDocument parsed(document, "the document");
    const xmlNode* const root = parsed.First("behavior");
    const xmlNode* const zones = root == nullptr ? nullptr : Child(root, "rois");
    return root != nullptr && Integer(AttributeOf(root, "active")).value_or(0) == 0 &&
           (zones == nullptr || Children(zones, "roi").empty());
}

} // namespace client
