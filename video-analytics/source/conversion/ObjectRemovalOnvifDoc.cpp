#include <ObjectRemovalConfig.h>

#include "frame/EnginePart.h"

namespace profile_conversion::frame
{
using objectremoval::Config;
using objectremoval::Rule;

template <>
struct RuleForm<Config> : RuleFormDefaults<Config>
{
    // A missing delay is 5 here and 3 in the clients' form, and that stands.
    static constexpr auto kItems = DelayItems<Rule>(5);
};

template <>
struct EnginePart<Config> : CopiedRules<Config>
{
    // The first one of the document, whatever it stands in.
    static NodePointer Container(analytics::ProfileDoc& doc, analytics::DocumentNode*)
    {
        return SelectNode(doc, doc.ElementItemQry(true));
    }
    static constexpr Field<Rule> kCopied[] = {
        {"AlarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay},
        {"DwellTime", &Rule::DwellTime, &Rule::DwellTime},
    };
    // Unlike in the rule, the polygon stands in no item of its own, and also for an empty zone.
    static void CopyZone(OnvifDoc& writer, analytics::DocumentNode& copy, const Points& zone)
    {
        const NodePointer polygon = AddChild(&copy, "Polygon");
        for (const Point& point : zone)
            writer.AddPointNode(polygon.get(), point);
    }
};

template class RuleDoc<Config>;
template class EngineRuleDoc<Config>;

} // namespace profile_conversion::frame
