#include "frame/StillObjectForms.h"

#include "frame/ObjectSizes.h"

namespace profile_conversion::frame
{
namespace
{
constexpr SizeFilter<StillObjectHead> kSizes[] = {
    {"minObj", "MinSize", &StillObjectHead::MinSizeFilter, &StillObjectHead::MinSizeFilter},
    {"maxObj", "MaxSize", &StillObjectHead::MaxSizeFilter, &StillObjectHead::MaxSizeFilter},
};

NodePointer FindOrAddItem(const std::string& name, analytics::DocumentNode& module,
                          analytics::DocumentNode& parameters, OnvifDoc& writer, analytics::ProfileDoc& doc)
{
    NodePointer item = SelectNode(doc, ElementItem(doc, name), &module);
    return item != nullptr ? std::move(item) : NodePointer(writer.AddElementItem(&parameters, "Name", name));
}
} // namespace

std::string StillObjectTemplate(const std::string& word)
{
    const std::string size =
        "</name><resize>3</resize><moveable>3</moveable><vertices></vertices></objectsize>";
    return R"(<?xml version="1.0" encoding="utf-8"?>)"
           R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:)" +
           word +
           R"(:1" active="0" advanceMode="0"><minPoints>3</minPoints><maxPoints>6</maxPoints>)"
           R"(<sensitivity>5</sensitivity>)"
           R"(<objectSizeFilters reqd="1"><filter>minObj</filter><filter>maxObj</filter></objectSizeFilters>)"
           R"(<filters><objectsizes><objectsize><name>minObj)" +
           size + "<objectsize><name>maxObj" + size +
           "</objectsizes></filters><excludeZones></excludeZones><rois/></behavior>";
}

void AddExcludeZoneNode(int number, const Polygon& zone, analytics::DocumentNode* parent)
{
    const NodePointer node = AddChild(parent, "excludeZone");
    AddChild(node.get(), "name", "Exclude " + std::to_string(number));
    const NodePointer vertices = AddChild(node.get(), "vertices");
    BehaviorNodes().AddPointsNodes(zone, vertices.get());
}

void ReadStillObjectHead(StillObjectHead& config, analytics::DocumentNode& behavior, analytics::Document& doc)
{
    // The line is kept from one size to the next: points that the maxObj lacks are those of the minObj.
    // The engine's reader below starts each size anew.
    Line line;
    for (const SizeFilter<StillObjectHead>& size : kSizes)
    {
        ReadObjectSize(line, size.object, behavior, doc);
        (config.*size.set)(line);
    }
    // Names are not read: the zones are numbered anew whenever they are written.
    for (const NodePointer& zone : SelectNodes(doc, "excludeZones/excludeZone", &behavior))
        config.AddExcludeZone(BehaviorNodes().ReadPoints("vertices/vertex", zone.get(), doc));
}

void WriteStillObjectHead(const StillObjectHead& config, analytics::DocumentNode& behavior,
                          analytics::Document& doc)
{
    for (const SizeFilter<StillObjectHead>& size : kSizes)
        WriteObjectSize((config.*size.get)(), size.object, behavior, doc);
    const NodePointer zones = SelectNode(doc, "excludeZones", &behavior);
    int number = 0;
    for (const Polygon& zone : config.ExcludeZones())
        AddExcludeZoneNode(++number, zone, zones.get());
}

void ReadStillObjectModule(StillObjectHead& config, analytics::DocumentNode& module,
                           analytics::ProfileDoc& doc)
{
    if (const NodePointer filters = SelectNode(doc, ElementItem(doc, kObjectSizeFilters), &module))
        for (const SizeFilter<StillObjectHead>& size : kSizes)
        {
            Line line;
            ReadRectangle(line, size.rectangle, *filters, doc);
            (config.*size.set)(line);
        }
    for (const NodePointer& zone :
         SelectNodes(doc, ElementItem(doc, "ExcludeZones") + "/" + Step("Polygon"), &module))
    {
        Polygon polygon;
        doc.GetPoints(polygon, Step("Point"), zone.get());
        config.AddExcludeZone(polygon);
    }
}

bool WriteStillObjectModule(const StillObjectHead& config, const std::string& engineId, OnvifDoc& writer,
                            analytics::ProfileDoc& doc)
{
    const NodePointer module(doc.SelectEngine(engineId));
    const NodePointer parameters =
        module == nullptr ? nullptr : SelectNode(doc, Step("Parameters"), module.get());
    if (parameters == nullptr)
        return false;
    // The default rectangles give way. The default polygons stay: they are zones that an integrator
    // excludes for good. Clients read them among their own, and have them twice if they send them back.
    const NodePointer filters = FindOrAddItem(kObjectSizeFilters, *module, *parameters, writer, doc);
    if (filters != nullptr)
        doc.DeleteNodes(Step("Rectangle"), filters.get());
    for (const SizeFilter<StillObjectHead>& size : kSizes)
        AddRectangle((config.*size.get)(), size.rectangle, filters.get());
    const NodePointer zones = FindOrAddItem("ExcludeZones", *module, *parameters, writer, doc);
    // An empty zone writes nothing and leaves a gap in the numbers.
    int number = 0;
    for (const Polygon& zone : config.ExcludeZones())
        writer.AddPolygonOrLineNode(zones.get(), "Exclude " + std::to_string(++number), zone, false, false);
    return true;
}

} // namespace profile_conversion::frame
