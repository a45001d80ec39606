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
    const auto pointsOf = [&doc](const char* shape)
    { return doc.ElementItemQry(true) + "/" + Step(shape) + "/" + Step("Point"); };
    Points points;
    doc.GetPoints(points, pointsOf("Polygon"), &ruleNode);
    if (points.empty() && linePossible)
        doc.GetPoints(points, pointsOf("Line"), &ruleNode);
    return points;
}

} // namespace profile_conversion::frame
