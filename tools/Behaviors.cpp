#include "Behaviors.h"

#include "Failure.h"
#include "Forms.h"
#include "Text.h"
#include "XmlDocument.h"

#include <algorithm>
#include <cctype>

namespace client
{
namespace
{

// "urn:…:LoiteringDetection:1" says "LoiteringDetection" in the last but one of its parts.
std::string Word(const std::string& id)
{
    const std::size_t end = id.rfind(':');
    const std::size_t start = end == std::string::npos ? end : id.rfind(':', end - 1);
    return start == std::string::npos ? id : id.substr(start + 1, end - start - 1);
}

// Without case and without what stands between words.
std::string Plain(const std::string& text)
{
    std::string plain;
    for (const char c : text)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return plain;
}

struct Known
{
    std::string name;
    std::string id;
    const std::string* document;
};

const std::vector<Known>& All()
{
    static const std::vector<Known> all = []
    {
        std::vector<Known> behaviors;
        for (const Form& form : Forms())
            behaviors.push_back({form.name,
                                 AttributeOf(XmlDocument(form.document, form.name).First("behavior"), "id"),
                                 &form.document});
        return behaviors;
    }();
    return all;
}

const Known* Find(const std::string& id)
{
    const auto found =
        std::find_if(All().begin(), All().end(), [&id](const Known& known) { return known.id == id; });
    // The camera's own identifier of a behavior ends in the word of the other one.
    const auto inside =
        std::find_if(All().begin(), All().end(),
                     [&id](const Known& known) { return id == "com.varlo.rule." + Plain(Word(known.id)); });
    return found != All().end() ? &*found : inside != All().end() ? &*inside : nullptr;
}

} // namespace

std::string BehaviorId(const std::string& text)
{
    if (text.find_first_of(":.") != std::string::npos)
        return text;
    for (const Known& known : All())
        if (Plain(text) == Plain(known.name) || Plain(text) == Plain(Word(known.id)))
            return known.id;
    std::string names;
    for (const Known& known : All())
        names += (names.empty() ? "" : ", ") + known.name;
    throw Failure(Exit::Usage,
                  "'" + text + "' is no behavior. Name one of " + names + ", or give an identifier");
}

std::string BehaviorName(const std::string& id)
{
    const Known* const known = Find(id);
    return known == nullptr ? "" : known->name;
}

std::string BehaviorCalled(const std::string& id)
{
    const std::string name = BehaviorName(id);
    return name.empty() ? id : name;
}

std::vector<std::string> BehaviorNames()
{
    std::vector<std::string> names;
    for (const Known& known : All())
        names.push_back(known.name);
    return names;
}

std::string BehaviorExample(const std::string& id)
{
    const Known* const known = Find(id);
    if (known == nullptr)
        throw Failure(Exit::Usage, "There is no example for " + id +
                                       ". Ask the service: varlo-analytics behavior default");
    return *known->document;
}

Model BehaviorModel(const std::string& id, const std::vector<std::string>& documents)
{
    Model model;
    std::vector<std::string> all = documents;
    if (const Known* const known = Find(id))
        all.insert(all.begin(), *known->document);
    for (const std::string& document : all)
        if (const XmlDocument parsed(document, "the service's document");
            const xmlNode* root = parsed.First("behavior"))
            model.Learn(root);
    return model;
}

} // namespace client
