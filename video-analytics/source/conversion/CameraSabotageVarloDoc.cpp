#include <CameraSabotageConverter.h>

#include "frame/Nodes.h"

namespace profile_conversion::camerasabotage
{
using namespace frame;

// The delay of 5 is always written over. The model's own 3 is what counts where nothing else is said.
constexpr char kVarloDocTemplate[] =
    R"(<?xml version="1.0" encoding="utf-8"?>)"
    R"(<behavior version="2.0" id="urn:varlo-com:AlgorithmId:CameraSabotage:1" active="0" advanceMode="0">)"
    R"(<alarmDelay>5</alarmDelay><alarmSeverity>0</alarmSeverity></behavior>)";
// At any depth.
constexpr char kAlarmDelay[] = ".//alarmDelay";
constexpr char kAlarmSeverity[] = ".//alarmSeverity";

std::string VarloDoc::BehaviorNodeQry() const
{
    return BehaviorNodes::QueryFor(Config::Id(), Config::Alias());
}

bool VarloDoc::DocToConfig(const std::string& xml, Config& config)
{
    analytics::Document doc;
    const NodePointer behavior = ParseAndSelect(doc, xml, BehaviorNodeQry());
    if (behavior == nullptr)
        return false;
    config.Active(behavior->GetProperty("active", 0) != 0);
    if (const NodePointer delay = SelectNode(doc, kAlarmDelay, behavior.get()))
        config.AlarmDelay(delay->GetValue(config.AlarmDelay()));
    if (const NodePointer severity = SelectNode(doc, kAlarmSeverity, behavior.get()))
        config.Severity(analytics::SeverityFromInt(severity->GetValue(config.Severity())));
    return true;
}

bool VarloDoc::ConfigToDoc(const Config& config, std::string& xml)
{
    analytics::Document doc;
    const NodePointer behavior = ParseAndSelect(doc, kVarloDocTemplate, BehaviorNodeQry());
    if (behavior == nullptr)
        return false;
    behavior->SetProperty("active", config.Active() ? 1 : 0);
    if (const NodePointer delay = SelectNode(doc, kAlarmDelay, behavior.get()))
        delay->SetValue(config.AlarmDelay());
    if (const NodePointer severity = SelectNode(doc, kAlarmSeverity, behavior.get()))
        severity->SetValue(config.Severity());
    xml = doc.DumpToString();
    return true;
}

} // namespace profile_conversion::camerasabotage
