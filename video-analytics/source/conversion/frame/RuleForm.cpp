#include "frame/RuleForm.h"

#include <analytics/PluginManager.h>

namespace profile_conversion::frame
{

NodePointer ParseDefaultRules(const std::string& ruleId, analytics::ProfileDoc& doc)
{
    if (!doc.ParseString(analytics::PluginManager().GetDefaultConfiguration(ruleId)))
        return nullptr;
    doc.DeleteRules(ruleId);
    return SelectNode(doc, "//" + Step(analytics::Settings::RulesTag()));
}

Points ReadZone(analytics::ProfileDoc& doc, analytics::DocumentNode& ruleNode, bool linePossible)
{
    const std::string step = "/" + Step("");
    Points points;
    doc.GetPoints(points, doc.ElementItemQry(true) + step + "Polygon" + step + "Point", &ruleNode);
    if (points.empty() && linePossible)
        doc.GetPoints(points, doc.ElementItemQry(true) + step + "Line" + step + "Point", &ruleNode);
    return points;
}

} // namespace profile_conversion::frame
