#include "frame/RuleForm.h"

#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

namespace profile_conversion::frame
{
using analytics::Settings;

NodePointer ParseDefaultRules(const std::string& ruleId, analytics::ProfileDoc& doc)
{
    if (!doc.ParseString(analytics::PluginManager().GetDefaultConfiguration(ruleId)))
        return nullptr;
    doc.DeleteRules(ruleId);
    return SelectNode(doc, "//" + Settings::OnvifPrefix() + ":" + Settings::RulesTag());
}

Points ReadZone(analytics::ProfileDoc& doc, analytics::DocumentNode& ruleNode, bool linePossible)
{
    const std::string step = "/" + Settings::OnvifPrefix() + ":";
    Points points;
    doc.GetPoints(points, doc.ElementItemQry(true) + step + "Polygon" + step + "Point", &ruleNode);
    if (points.empty() && linePossible)
        doc.GetPoints(points, doc.ElementItemQry(true) + step + "Line" + step + "Point", &ruleNode);
    return points;
}

} // namespace profile_conversion::frame
