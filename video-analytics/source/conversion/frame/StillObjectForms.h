#pragma once

#include <frame/StillObjectConfig.h>
#include <frame/StillObjectVarloDoc.h>

#include "frame/BehaviorDocTemplate.h"
#include "frame/EngineForm.h"
#include "frame/EngineRuleDocTemplate.h"

#include <string>

// The tables of the behaviors that look for something which came and stays. They differ in their
// identifiers and in the advice on two numbers.
namespace profile_conversion::frame
{

// The document without rules, of the behavior with this word in its URN.
std::string StillObjectTemplate(const std::string& word);
void ReadStillObjectHead(StillObjectConfig& config, analytics::DocumentNode& behavior,
                         analytics::Document& doc);
void WriteStillObjectHead(const StillObjectConfig& config, analytics::DocumentNode& behavior,
                          analytics::Document& doc);
void ReadStillObjectModule(StillObjectConfig& config, analytics::DocumentNode& module,
                           analytics::ProfileDoc& doc);
// False if the document has no module of the engine, or no Parameters in it.
bool WriteStillObjectModule(const StillObjectConfig& config, const std::string& engineId, OnvifDoc& writer,
                            analytics::ProfileDoc& doc);

// The family adds its kTemplate.
template <class Config, Bounds kDwellTime, Bounds kAlarmDelay>
struct StillObjectBehaviorForm : BehaviorFormDefaults<Config>
{
    using Rule = typename Config::RuleType;

    static constexpr Field<Config> kAttributes[] = {
        {"advanceMode", &Config::AdvancedMode, &Config::AdvancedMode},
    };
    static constexpr Field<Config> kElements[] = {
        {"sensitivity", &Config::Sensitivity, &Config::Sensitivity},
    };
    static constexpr RoiChild<Rule> kRoiChildren[] = {
        {{"enable", &Rule::EnableAlarm, &Rule::EnableAlarm}},
        {{"alarmSeverity", &Rule::Severity, &Rule::Severity}},
        {{"dwellTime", &Rule::DwellTime, &Rule::DwellTime}, kDwellTime},
        {{"alarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, kAlarmDelay},
    };
    static constexpr auto ReadHead = ReadStillObjectHead;
    static constexpr auto WriteHead = WriteStillObjectHead;
};

template <class Config>
struct StillObjectRuleForm : RuleFormDefaults<Config>
{
    using Rule = typename Config::RuleType;

    static constexpr RuleItem<Rule> kItems[] = {
        {{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
        // A missing delay is 5 here and 3 in the clients' form, and that stands.
        {{"AlarmDelay", &Rule::AlarmDelay, &Rule::AlarmDelay}, 5},
        {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 5},
        {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
    };
};

template <class Config>
struct StillObjectEnginePart : EnginePartDefaults<Config>
{
    static constexpr auto Read = ReadStillObjectModule;
    static bool Write(const Config& config, OnvifDoc& writer, analytics::ProfileDoc& doc,
                      analytics::DocumentNode*)
    {
        return WriteStillObjectModule(config, EngineOf(Config::Id()), writer, doc);
    }
};

} // namespace profile_conversion::frame
