#pragma once

#include <frame/BehaviorConfig.h>

#include "frame/RuleForm.h"

#include <analytics/PluginManager.h>

#include <OnvifDoc.h>

// The tables of what a behavior has in the module of its engine, and what EngineRuleDoc does with them, for
// the source of a family that instantiates it and its base.
namespace profile_conversion::frame
{

// An item of the engine's module, and what its reader takes for a missing one.
template <class Config>
using ModuleItem = RuleItem<Config>;

// The tables of a family's part in the module of its engine. A family specialises this, from
// EnginePartDefaults or from CopiedRules, with what differs.
template <class Config>
struct EnginePart;

template <class Config>
struct EnginePartDefaults
{
    static constexpr ModuleItem<Config> kItems[] = {
        {{"AdvancedMode", &Config::AdvancedMode, &Config::AdvancedMode}, 0},
        {{"Sensitivity", &Config::Sensitivity, &Config::Sensitivity}, 5},
    };
    // The writer looks for the items in the module, where the reader always does, and not all over the
    // engine's default document, wherever that has them.
    static constexpr bool kItemsInModule = false;

    // Whatever else stands in the module.
    static void Read(Config&, analytics::DocumentNode&, analytics::ProfileDoc&) {}
    // `items` is where the writer looks for the items, null for the whole document. False if the
    // document can't take the settings.
    static bool Write(const Config&, OnvifDoc&, analytics::ProfileDoc&, analytics::DocumentNode* /*items*/)
    {
        return true;
    }
};

// The part of an engine that wants a copy of each rule, in the first ElementItem of its default
// document. Nothing reads them back, and copies that stand there already stay. The family gives besides
//
//   static constexpr Field<Rule> kCopied[]  in written order
//   static void CopyZone(OnvifDoc& writer, analytics::DocumentNode& copy, const Points& zone)
template <class Config>
struct CopiedRules : EnginePartDefaults<Config>
{
    using Rule = typename Config::RuleType;

    static constexpr bool kEnabledOnly = false; // a rule without alarms has no copy
    static NodePointer Container(analytics::ProfileDoc& doc, analytics::DocumentNode* items)
    {
        return NodePointer(doc.SelectElementItemNode(items, true));
    }

    static bool Write(const Config& config, OnvifDoc& writer, analytics::ProfileDoc& doc,
                      analytics::DocumentNode* items)
    {
        const NodePointer container = EnginePart<Config>::Container(doc, items);
        for (const Rule* rule : config.GetRules())
            if (rule != nullptr && (rule->EnableAlarm() || !EnginePart<Config>::kEnabledOnly))
                Copy(*rule, writer, container.get());
        return true; // without a container the items go out all the same
    }

  private:
    static void Copy(const Rule& rule, OnvifDoc& writer, analytics::DocumentNode* container)
    {
        const NodePointer copy(container == nullptr ? nullptr
                                                    : writer.AddElementItem(container, "Name", rule.Name()));
        if (copy == nullptr)
            return;
        for (const Field<Rule>& field : EnginePart<Config>::kCopied)
            writer.AddSimpleItemNode(copy.get(), field.Name(), field.Get(rule));
        EnginePart<Config>::CopyZone(writer, *copy, rule.Zone());
    }
};

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
    // The engine's document exists even when the rule document can't be made.
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
