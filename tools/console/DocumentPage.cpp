#include "console/DocumentPage.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Scene.h"
#include "Service.h"
#include "Text.h"
#include "XmlDocument.h"
#include "console/Differences.h"
#include "documents/Check.h"
#include "documents/Example.h"
#include "documents/Meanings.h"
#include "documents/Models.h"
#include "documents/Shape.h"

#include <algorithm>

namespace client
{
namespace
{

std::string Advice(const Field& field)
{
    const std::string& unit = MeaningOf(field.name).unit;
    const std::optional<Bounds> bounds = Advised(field);
    return Trimmed((bounds ? BoundsText(*bounds) : "") + " " +
                   (unit == "seconds" || unit == "objects" ? unit : ""));
}

bool IsSettable(const Field& field)
{
    return field.kind == Field::Kind::Number || field.kind == Field::Kind::Flag ||
           field.kind == Field::Kind::Text;
}

Json Described(const Field& field, const std::string& path)
{
    const Meaning& meaning = MeaningOf(field.name);
    const char* const type = field.kind == Field::Kind::Flag   ? "flag"
                             : field.kind == Field::Kind::Text ? "text"
                                                               : "integer";
    Json described = {{"field", path},
                      {"label", meaning.label},
                      {"type", type},
                      {"advice", Advice(field)},
                      {"meaning", meaning.text}};
    const std::optional<Bounds> bounds = Advised(field);
    if (field.kind == Field::Kind::Number && !meaning.choices.empty())
    {
        described["choices"] = meaning.choices;
        if (bounds && static_cast<std::size_t>(bounds->max) + 1 < meaning.choices.size())
            described["choices"].erase(described["choices"].begin() + bounds->max + 1,
                                       described["choices"].end());
    }
    return described;
}

// All single values below the element; those of a list stand below its name.
void Describe(const Element& element, const std::string& path, Json& list)
{
    for (const Field& field : element.attributes)
        if (IsSettable(field))
            list.push_back(Described(field, path + field.name));
    for (const Element& child : element.children)
    {
        if (LineOf(child) != nullptr || child.form == Element::Form::Points)
            continue;
        if (child.form == Element::Form::Leaf && IsSettable(child.value.front()))
            list.push_back(Described(child.value.front(), path + JsonName(child)));
        if (child.form == Element::Form::Leaf)
            Describe(child, path, list); // its attributes are next to it
        else if (child.form == Element::Form::Group)
            Describe(child, path + JsonName(child) + "/", list);
        else if (child.form == Element::Form::List && !IsPoints(child.children.front()))
            Describe(child.children.front(), path + JsonName(child) + "/", list);
    }
}

// What a new zone says of all but its name and its points.
Json NewZone(const DocumentModel& model)
{
    Json zone = ToJson(model, Example(model, Frame())).at("rois").at(0);
    zone.erase("name");
    zone.erase("vertices");
    return zone;
}

// As the program compares and stores it: without the scene's name, which is the profile's, and its preset,
// which is the camera's.
Json Own(const DocumentModel& model, Json document)
{
    if (!document.is_object())
        throw Failure(Exit::Document, "There is no document in the request");
    if (model.IsScene())
    {
        document.erase("name");
        document.erase("cameraPreset");
    }
    return document;
}

struct Made
{
    XmlDocument document;
    Findings findings;
};

Made MadeOf(const DocumentModel& model, const Json& json, const Frame& frame)
{
    Findings findings;
    XmlDocument document(FromJson(model, Own(model, json), findings));
    const Findings more = Check(model, document, frame);
    findings.insert(findings.end(), more.begin(), more.end());
    return {std::move(document), std::move(findings)};
}

// What the page calls the value that a JSON pointer leads to; empty if it has no name.
std::string LabelOf(const std::string& pointer)
{
    const std::size_t slash = pointer.rfind('/');
    if (slash == std::string::npos)
        return "";
    const std::string& label = MeaningOf(pointer.substr(slash + 1)).label;
    return label.empty() ? LabelOf(pointer.substr(0, slash)) : label + ": ";
}

Json Listed(const Findings& findings)
{
    Json list = Json::array();
    for (const Finding& finding : findings)
        list.push_back({{"field", finding.field},
                        {"level", finding.level == Finding::Level::Error ? "error" : "warning"},
                        {"text", finding.text}});
    return list;
}

} // namespace

const DocumentModel& ModelOf(const std::string& behavior)
{
    if (behavior == "scene")
        return SceneModel();
    if (const DocumentModel* const model = FindModel(behavior))
        return *model;
    throw Failure(Exit::Document, "This program doesn't know the form of the behavior " + behavior);
}

Json FindingsOf(const DocumentModel& model, const Json& document, const Frame& frame)
{
    return Listed(MadeOf(model, document, frame).findings);
}

DocumentPage::DocumentPage(Service& service, int profile, const std::string& behavior)
    : m_service(service), m_profile(profile), m_model(ModelOf(behavior))
{
}

Json DocumentPage::Current()
{
    if (m_model.IsScene())
    {
        const std::optional<std::string> scene = SceneOf(m_service, m_profile);
        return ToJson(m_model, scene ? *scene : m_service.DefaultScene());
    }
    const std::string document = StoredBehavior();
    return ToJson(m_model, Trimmed(document).empty() ? m_service.DefaultBehavior(m_model.alias) : document);
}

std::string DocumentPage::StoredBehavior()
{
    try
    {
        return m_service.ProfileBehavior(m_profile, m_model.alias);
    }
    catch (const Failure& failure)
    {
        // A profile without behaviors is answered with a fault.
        const std::vector<Profile> profiles = m_service.Profiles();
        const bool exists = std::any_of(profiles.begin(), profiles.end(),
                                        [this](const Profile& profile) { return profile.id == m_profile; });
        if (failure.Code() != Exit::Refused || !exists)
            throw;
        return "";
    }
}

void DocumentPage::Store(const std::string& document)
{
    if (m_model.IsScene())
        m_service.SetScene(m_profile, document);
    else
        m_service.SetProfileBehavior(m_profile, m_model.alias, document);
}

Json DocumentPage::Read()
{
    Json model = Json::array();
    Describe(m_model.root, "", model);
    const Bounds points = m_model.ZonePoints().value_or(Bounds{3, 100});
    return {{"document", Current()},
            {"model", model},
            {"zone", m_model.HasZones() ? NewZone(m_model) : Json()},
            {"points", {{"min", points.min}, {"max", points.max}}}};
}

Json DocumentPage::Review(const Json& base, const Json& document, const Frame& frame) const
{
    return {{"changes", Differences(Own(m_model, base), Own(m_model, document))},
            {"findings", FindingsOf(m_model, document, frame)}};
}

Json DocumentPage::Save(const Json& base, const Json& document, const Frame& frame)
{
    const Json current = Current();
    if (!SameValue(Own(m_model, base), Own(m_model, current)))
        throw ChangedMeanwhile{{{"error", "somebody else has changed this meanwhile"},
                                {"document", current},
                                {"changes", Differences(Own(m_model, base), Own(m_model, current))}}};
    const Made made = MadeOf(m_model, document, frame);
    for (const Finding& finding : made.findings)
        if (finding.level == Finding::Level::Error)
            throw Failure(Exit::Document, LabelOf(finding.field) + finding.text);
    if (SameValue(Own(m_model, document), Own(m_model, current)))
        return {{"document", current}, {"changes", Json::array()}};
    Store(made.document.Text());
    const Json stored = Current();
    return {{"document", stored}, {"changes", Differences(Own(m_model, document), Own(m_model, stored))}};
}

} // namespace client
