#include "documents/ZoneEdit.h"

#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"
#include "documents/Example.h"
#include "documents/Shape.h"

namespace client
{
namespace
{

struct Place
{
    const char* list;
    const char* item;
    bool excluded;
};
constexpr Place kPlaces[] = {{"rois", "roi", false}, {"excludeZones", "excludeZone", true}};

// The example has every element in its place, and a zone with valid values.
XmlDocument Bare(const DocumentModel& model)
{
    const XmlDocument example(Example(model, Frame()), "the example");
    for (const Place& place : kPlaces)
        for (const pugi::xml_node& zone : Children(example.Root().child(place.list)))
            example.Root().child(place.list).remove_child(zone);
    return XmlDocument(example.Text(), "the example");
}

XmlDocument Parsed(const DocumentModel& model, const std::string& document)
{
    return Trimmed(document).empty() ? Bare(model) : XmlDocument(document, "the document of " + model.name);
}

const Place& PlaceOf(const DocumentModel& model, bool excluded)
{
    if (!(excluded ? model.HasExcludeZones() : model.HasZones()))
        throw Failure(Exit::Usage, model.name + " has no " + (excluded ? "exclude zones" : "zones") +
                                       ". 'varlo-analytics behavior explain " + model.name +
                                       "' shows what it has");
    return kPlaces[excluded ? 1 : 0];
}

void SetPoints(pugi::xml_node zone, const PointList& points)
{
    zone.remove_child("vertices");
    pugi::xml_node vertices = zone.append_child("vertices");
    for (const Point& point : points)
    {
        pugi::xml_node vertex = vertices.append_child("vertex");
        vertex.append_child("x").text().set(point.x);
        vertex.append_child("y").text().set(point.y);
    }
}

std::vector<pugi::xml_node> Find(const XmlDocument& document, const std::string& name)
{
    std::vector<pugi::xml_node> found;
    for (const Place& place : kPlaces)
        for (const pugi::xml_node& zone : Children(document.Root().child(place.list), place.item))
            if (TextOf(zone.child("name")) == Trimmed(name))
                found.push_back(zone);
    return found;
}

pugi::xml_node TheOne(const DocumentModel& model, const XmlDocument& document, const std::string& name)
{
    const std::vector<pugi::xml_node> found = Find(document, name);
    if (found.size() == 1)
        return found.front();
    throw Failure(Exit::Refused,
                  (found.empty() ? "There is no zone '" : "There is more than one zone '") + name + "' in " +
                      model.name + ". 'varlo-analytics zone list' shows those that there are" +
                      (found.empty() ? "" : "; 'varlo-analytics behavior edit' gives them other names"));
}

} // namespace

std::vector<NamedZone> ZonesOf(const DocumentModel& model, const std::string& document)
{
    const XmlDocument parsed = Parsed(model, document);
    std::vector<NamedZone> zones;
    for (const Place& place : kPlaces)
        for (const pugi::xml_node& zone : Children(parsed.Root().child(place.list), place.item))
            zones.push_back({TextOf(zone.child("name")), place.excluded, PointsOf(zone.child("vertices"))});
    return zones;
}

std::string WithZone(const DocumentModel& model, const std::string& document, const NamedZone& zone)
{
    const Place& place = PlaceOf(model, zone.excluded);
    const XmlDocument parsed = Parsed(model, document);
    if (!zone.excluded && !Find(parsed, zone.name).empty())
        throw Failure(
            Exit::Refused,
            "There is a zone '" + zone.name + "' in " + model.name +
                " already. Give this one another name, or change that one with 'varlo-analytics zone move'");
    const XmlDocument example(Example(model, Frame()), "the example");
    pugi::xml_node list = parsed.Root().child(place.list);
    if (list.empty())
        list = parsed.Root().append_child(place.list);
    const std::size_t number = Children(list).size() + 1;
    pugi::xml_node added = list.append_copy(example.Root().child(place.list).child(place.item));
    added.child("name").text().set(zone.excluded ? ("Exclude " + std::to_string(number)).c_str()
                                                 : zone.name.c_str());
    SetPoints(added, zone.points);
    return parsed.Text();
}

std::string WithPoints(const DocumentModel& model, const std::string& document, const NamedZone& zone)
{
    const XmlDocument parsed = Parsed(model, document);
    SetPoints(TheOne(model, parsed, zone.name), zone.points);
    return parsed.Text();
}

std::string WithoutZone(const DocumentModel& model, const std::string& document, const std::string& name)
{
    const XmlDocument parsed = Parsed(model, document);
    pugi::xml_node zone = TheOne(model, parsed, name);
    pugi::xml_node list = zone.parent();
    list.remove_child(zone);
    // The service numbers exclude zones by where they stand.
    std::size_t number = 0;
    if (std::string_view(list.name()) == kPlaces[1].list)
        for (const pugi::xml_node& left : Children(list))
            left.child("name").text().set(("Exclude " + std::to_string(++number)).c_str());
    return parsed.Text();
}

NamedZone ZoneNamed(const DocumentModel& model, const std::string& document, const std::string& name)
{
    const XmlDocument parsed = Parsed(model, document);
    const pugi::xml_node zone = TheOne(model, parsed, name);
    return {name, std::string_view(zone.name()) == kPlaces[1].item, PointsOf(zone.child("vertices"))};
}

} // namespace client
