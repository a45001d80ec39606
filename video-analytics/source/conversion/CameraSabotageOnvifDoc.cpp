#include <CameraSabotageConverter.h>

#include "frame/Nodes.h"

#include <analytics/PluginManager.h>
#include <analytics/ProfileDoc.h>

namespace profile_conversion::camerasabotage
{
using namespace frame;

bool OnvifDoc::DocToConfig(const std::string& xml, Config& config)
{
    analytics::ProfileDoc doc;
    const NodePointer rule(doc.ParseString(xml) ? doc.SelectRule(Config::Id()) : nullptr);
    if (rule == nullptr)
        return false; // a profile without the rule has no such behavior, not an empty one
    config.AlarmDelay(doc.GetSimpleItemValue("AlarmDelay", config.AlarmDelay(), rule.get(), true));
    config.Severity(analytics::SeverityFromInt(doc.GetSimpleItemValue("Severity", 0, rule.get(), true)));
    config.Active(doc.RuleIsActive(Config::Id()));
    return true;
}

bool OnvifDoc::ConfigToDoc(const Config& config, std::string& xml)
{
    analytics::ProfileDoc doc;
    if (!doc.ParseString(analytics::PluginManager().GetDefaultConfiguration(Config::Id())))
        return false;
    const std::pair<std::string, int> items[] = {{"AlarmDelay", config.AlarmDelay()},
                                                 {"Severity", config.Severity()}};
    if (const NodePointer rule{doc.SelectRule(Config::Id())})
        for (const auto& [name, value] : items)
            if (const NodePointer item =
                    SelectNode(doc, doc.SimpleItemQry(true) + "[@Name='" + name + "']", rule.get()))
                item->SetProperty("Value", value);
    xml = doc.DumpToString();
    return true;
}

} // namespace profile_conversion::camerasabotage
