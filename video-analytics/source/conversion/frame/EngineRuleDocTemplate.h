#pragma once

#include <frame/EngineRuleDoc.h>

#include "frame/EnginePart.h"
#include "frame/RuleDocTemplate.h"

#include <analytics/PluginManager.h>

// The operations of EngineRuleDoc, for the source of a family that instantiates it and its base.
namespace profile_conversion::frame
{

template <class Config>
bool EngineRuleDoc<Config>::DocToConfig(const std::string& xml, Config& config)
{
    using Part = EnginePart<Config>;
    analytics::ProfileDoc doc;
    if (!doc.ParseString(xml))
        return false;
    if (const NodePointer module{doc.SelectEngine(EngineId(Config::Id()))})
    {
        for (const ModuleItem<Config>& item : Part::kItems)
            item.field.Set(config,
                           doc.GetSimpleItemValue(item.field.Name(), item.missing, module.get(), true));
        Part::Read(config, *module, doc);
    }
    this->ReadRules(doc, config);
    return true;
}

template <class Config>
bool EngineRuleDoc<Config>::ConfigToDoc(const Config& config, std::string& xml)
{
    m_engineId = EngineId(Config::Id());
    m_engineConfig = ConfigToEngineDoc(m_engineId, config);
    return RuleDoc<Config>::ConfigToDoc(config, xml);
}

template <class Config>
void EngineRuleDoc<Config>::EngineConfig(std::string& id, std::string& config)
{
    id = m_engineId;
    config = m_engineConfig;
}

template <class Config>
std::string EngineRuleDoc<Config>::EngineId(const std::string& id)
{
    return EngineOf(id);
}

template <class Config>
std::string EngineRuleDoc<Config>::ConfigToEngineDoc(const std::string& engineId, const Config& config)
{
    using Part = EnginePart<Config>;
    analytics::ProfileDoc doc;
    if (!doc.ParseString(analytics::PluginManager().GetDefaultConfiguration(engineId)))
        return {};
    const NodePointer items(Part::kItemsInModule ? doc.SelectEngine(engineId) : nullptr);
    for (const ModuleItem<Config>& item : Part::kItems)
        doc.SetSimpleItemValue(item.field.Name(), item.field.Get(config), items.get());
    return Part::Write(config, *this, doc, items.get()) ? doc.DumpToString() : std::string();
}

} // namespace profile_conversion::frame
