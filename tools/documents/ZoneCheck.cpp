#include "documents/ZoneCheck.h"

#include "documents/DocumentJson.h"
#include "documents/Geometry.h"
#include "documents/Meanings.h"
#include "documents/Shape.h"

namespace client
{
namespace
{

struct Zone
{
    pugi::xml_node node;
    std::string field;
    std::string called; // as in "the zone 'Gate'"
    PointList points;
};

std::vector<Zone> ZonesOf(const pugi::xml_node& root, const char* list, const char* item,
                          const std::string& kind)
{
    std::vector<Zone> zones;
    for (const pugi::xml_node& node : Children(root.child(list), item))
    {
        const std::string number = std::to_string(zones.size());
        const std::string name = TextOf(node.child("name"));
        zones.push_back({node, Below(Below("", list), number),
                         kind + " " + (name.empty() ? std::to_string(zones.size() + 1) : "'" + name + "'"),
                         PointsOf(node.child("vertices"))});
    }
    return zones;
}

class ZoneChecker
{
  public:
    ZoneChecker(const DocumentModel& model, const XmlDocument& document, const Frame& frame)
        : m_model(model), m_document(document), m_frame(frame), m_root(RootOf(model, document.Root()))
    {
    }

    Findings Check()
    {
        const std::vector<Zone> zones = ZonesOf(m_root, "rois", "roi", "the zone");
        const std::vector<Zone> excluded = ZonesOf(m_root, "excludeZones", "excludeZone", "the exclude zone");
        m_inZone = "/vertices";
        for (const Zone& zone : zones)
        {
            Count(zone, m_model.ZonePoints());
            Shape(zone);
        }
        m_inZone.clear();
        if (m_model.HasExcludeZones())
            for (const Zone& zone : excluded)
            {
                Count(zone, Bounds{3, m_model.ZonePoints().value_or(Bounds{3, INT_MAX}).max});
                Shape(zone);
            }
        if (m_model.HasExcludeZones())
            Covered(zones, excluded);
        Boxes(m_model.root, m_root, "");
        return std::move(m_findings);
    }

  private:
    void Warn(const Zone& zone, const std::string& what, const std::string& field = "")
    {
        m_findings.push_back({Finding::Level::Warning, m_document.LineOf(zone.node), zone.field + field,
                              zone.called + " " + what});
    }

    void Count(const Zone& zone, const std::optional<Bounds>& advised)
    {
        const auto count = static_cast<long long>(zone.points.size());
        if (!advised || advised->Holds(count))
            return;
        Warn(zone, "has " + std::to_string(count) + (count == 1 ? " point" : " points") + ", too " +
                       (count < advised->min ? "few" : "many") + "; " + BoundsText(*advised) +
                       " are advised");
    }

    void Shape(const Zone& zone)
    {
        if (const std::string trouble = ShapeTrouble(zone.points); !trouble.empty())
            Warn(zone, trouble);
        InFrame(zone);
    }

    void InFrame(const Zone& zone)
    {
        for (std::size_t i = 0; i < zone.points.size(); ++i)
        {
            const Point& point = zone.points[i];
            if (point.x < 0 || point.x > m_frame.width || point.y < 0 || point.y > m_frame.height)
                Warn(zone,
                     "has the point " + std::to_string(point.x) + ", " + std::to_string(point.y) +
                         " outside of the frame of " + m_frame.Text() +
                         "; another frame is named with --frame",
                     m_inZone + "/" + std::to_string(i));
        }
    }

    void Covered(const std::vector<Zone>& zones, const std::vector<Zone>& excluded)
    {
        std::vector<PointList> shapes;
        for (const Zone& zone : excluded)
            shapes.push_back(zone.points);
        for (const Zone& zone : zones)
            if (IsCovered(zone.points, shapes))
                Warn(zone, "is covered by exclude zones altogether, so that nothing in it counts; "
                           "make them smaller or take them away");
    }

    void Boxes(const Element& element, const pugi::xml_node& node, const std::string& field)
    {
        for (const pugi::xml_node& child : Children(node))
        {
            const Element* const known = Described(element, child);
            if (known == nullptr || known->form != Element::Form::Group)
                continue;
            const std::string place = Below(field, JsonName(*known));
            if (LineOf(*known) != nullptr)
                InFrame({child, place, "'" + MeaningOf(known->key).label + "'",
                         PointsOf(child.child("vertices"))});
            else
                Boxes(*known, child, place);
        }
    }

    const DocumentModel& m_model;
    const XmlDocument& m_document;
    const Frame& m_frame;
    pugi::xml_node m_root;
    std::string m_inZone; // where its points stand in it
    Findings m_findings;
};

} // namespace

Findings CheckZones(const DocumentModel& model, const XmlDocument& document, const Frame& frame)
{
    return ZoneChecker(model, document, frame).Check();
}

} // namespace client
