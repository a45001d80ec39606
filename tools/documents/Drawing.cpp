#include "documents/Drawing.h"

#include "Text.h"
#include "XmlDocument.h"
#include "documents/Compare.h"
#include "documents/Meanings.h"

#include <cmath>
#include <sstream>

namespace client
{
namespace
{

constexpr const char* kColors[] = {"#0b6bcb", "#c2410c", "#15803d", "#7c3aed", "#b91c1c",
                                   "#0f766e", "#a16207", "#be185d", "#475569"};
constexpr int kAllDirections = 8;

std::string Number(double value)
{
    std::ostringstream text;
    text << std::round(value * 10) / 10;
    return text.str();
}

class Picture
{
  public:
    Picture(const std::string& title, const Frame& frame) : m_frame(frame), m_unit(frame.height / 240.0)
    {
        m_svg = m_document.append_child("svg");
        Set(m_svg, {{"xmlns", "http://www.w3.org/2000/svg"}, {"font-family", "sans-serif"}});
        m_svg.append_child("title").text().set(title.c_str());
        pugi::xml_node pattern = m_svg.append_child("defs").append_child("pattern");
        const std::string step = Number(8 * m_unit);
        Set(pattern, {{"id", "excluded"},
                      {"width", step},
                      {"height", step},
                      {"patternUnits", "userSpaceOnUse"},
                      {"patternTransform", "rotate(45)"}});
        Set(pattern.append_child("line"), {{"x1", "0"},
                                           {"y1", "0"},
                                           {"x2", "0"},
                                           {"y2", step},
                                           {"stroke", "#1f2937"},
                                           {"stroke-width", Number(2 * m_unit)},
                                           {"stroke-opacity", "0.6"}});
        Set(m_svg.append_child("rect"), {{"width", "100%"}, {"height", "100%"}, {"fill", "#ffffff"}});
        Set(m_svg.append_child("rect"), {{"width", std::to_string(frame.width)},
                                         {"height", std::to_string(frame.height)},
                                         {"fill", "#f1f5f9"},
                                         {"stroke", "#334155"},
                                         {"stroke-width", Number(m_unit)}});
    }

    void Add(const DocumentModel& model, const Json& document)
    {
        const std::string color = kColors[static_cast<std::size_t>(m_documents++) % std::size(kColors)];
        if (document.contains("rois"))
            for (const Json& zone : document["rois"])
                AddZone(zone, color);
        if (document.contains("excludeZones"))
            for (const Json& zone : document["excludeZones"])
                Set(Shape(zone, color),
                    {{"fill", "url(#excluded)"}, {"stroke-dasharray", Number(4 * m_unit)}});
        AddBoxes(document, color);
        Legend(model.title, color);
    }

    std::string Text()
    {
        const double height = m_frame.height + (m_documents * 14 + 8) * m_unit;
        Set(m_svg, {{"viewBox", "-4 -4 " + std::to_string(m_frame.width + 8) + " " + Number(height)},
                    {"width", std::to_string(2 * (m_frame.width + 8))}});
        return XmlDocument(m_document).Indented();
    }

  private:
    using Attributes = std::vector<std::pair<const char*, std::string>>;

    static void Set(pugi::xml_node node, const Attributes& attributes)
    {
        for (const auto& [name, value] : attributes)
        {
            if (node.attribute(name).empty())
                node.append_attribute(name);
            node.attribute(name).set_value(value.c_str());
        }
    }

    pugi::xml_node Shape(const Json& points, const std::string& color)
    {
        std::string corners;
        for (const Json& point : points)
            corners += point[0].dump() + "," + point[1].dump() + " ";
        pugi::xml_node shape = m_svg.append_child(points.size() == 2 ? "polyline" : "polygon");
        Set(shape, {{"points", Trimmed(corners)},
                    {"fill", color},
                    {"fill-opacity", "0.18"},
                    {"stroke", color},
                    {"stroke-width", Number(1.5 * m_unit)}});
        return shape;
    }

    void Label(double x, double y, const std::string& text, const std::string& color)
    {
        pugi::xml_node label = m_svg.append_child("text");
        Set(label, {{"x", Number(x)},
                    {"y", Number(y)},
                    {"font-size", Number(9 * m_unit)},
                    {"fill", color},
                    {"paint-order", "stroke"},
                    {"stroke", "#ffffff"},
                    {"stroke-width", Number(2 * m_unit)}});
        label.text().set(text.c_str());
    }

    void AddZone(const Json& zone, const std::string& color)
    {
        const Json& points = zone["vertices"];
        if (points.empty())
            return;
        Shape(points, color);
        double x = 0;
        double y = 0;
        for (const Json& point : points)
        {
            x += point[0].get<double>() / static_cast<double>(points.size());
            y += point[1].get<double>() / static_cast<double>(points.size());
        }
        Label(points[0][0].get<double>() + 3 * m_unit, points[0][1].get<double>() + 11 * m_unit,
              zone.value("name", ""), color);
        if (const int direction = zone.value("direction", kAllDirections);
            direction >= 0 && direction < kAllDirections)
            Arrow(x, y, direction, color);
    }

    void Arrow(double x, double y, int direction, const std::string& color)
    {
        pugi::xml_node arrow = m_svg.append_child("path");
        const auto length = [this](double part) { return Number(part * m_unit); };
        Set(arrow, {{"d", "M0 " + length(14) + " V" + length(-14) + " M" + length(-5) + " " + length(-7) +
                              " L0 " + length(-14) + " L" + length(5) + " " + length(-7)},
                    {"transform", "translate(" + Number(x) + " " + Number(y) + ") rotate(" +
                                      std::to_string(direction * 45) + ")"},
                    {"fill", "none"},
                    {"stroke", color},
                    {"stroke-width", Number(2 * m_unit)}});
    }

    // Boxes and lines stand wherever the document has them by name.
    void AddBoxes(const Json& group, const std::string& color)
    {
        const Json none = {{0, 0}, {0, 0}};
        for (const auto& [name, value] : group.items())
            if (value.is_object())
                AddBoxes(value, color);
            else if (value.is_array() && value.size() == 2 && name != "rois" && name != "excludeZones" &&
                     value != none)
                AddBox(name, value, color);
    }

    void AddBox(const std::string& name, const Json& corners, const std::string& color)
    {
        const double x1 = corners[0][0].get<double>(), y1 = corners[0][1].get<double>();
        const double x2 = corners[1][0].get<double>(), y2 = corners[1][1].get<double>();
        pugi::xml_node box = m_svg.append_child(name.ends_with("Obj") ? "rect" : "line");
        if (name.ends_with("Obj"))
            Set(box, {{"x", Number(std::min(x1, x2))},
                      {"y", Number(std::min(y1, y2))},
                      {"width", Number(std::abs(x2 - x1))},
                      {"height", Number(std::abs(y2 - y1))},
                      {"fill", "none"}});
        else
            Set(box, {{"x1", Number(x1)}, {"y1", Number(y1)}, {"x2", Number(x2)}, {"y2", Number(y2)}});
        Set(box,
            {{"stroke", color}, {"stroke-width", Number(m_unit)}, {"stroke-dasharray", Number(2 * m_unit)}});
        Label(std::min(x1, x2), std::min(y1, y2) - 3 * m_unit, MeaningOf(name).label, color);
    }

    void Legend(const std::string& title, const std::string& color)
    {
        const double y = m_frame.height + m_documents * 14 * m_unit;
        Set(m_svg.append_child("rect"), {{"x", "0"},
                                         {"y", Number(y - 8 * m_unit)},
                                         {"width", Number(10 * m_unit)},
                                         {"height", Number(9 * m_unit)},
                                         {"fill", color}});
        Label(14 * m_unit, y, title, color);
    }

    pugi::xml_document m_document;
    pugi::xml_node m_svg;
    const Frame& m_frame;
    double m_unit; // what a pixel of the usual frame is here
    int m_documents = 0;
};

} // namespace

std::string Drawing(const std::string& title, const Frame& frame,
                    const std::vector<std::pair<const DocumentModel*, std::string>>& documents)
{
    Picture picture(title, frame);
    for (const auto& [model, document] : documents)
        if (!Trimmed(document).empty() && (model->IsScene() || !IsIdle(*model, document)))
            if (const Json json = ToJson(*model, document); json.is_object())
                picture.Add(*model, json);
    return picture.Text();
}

} // namespace client
