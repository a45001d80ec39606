#pragma once

#include <frame/StillObject.h>

#include "frame/BehaviorForm.h"
#include "frame/EnginePart.h"

#include <string>

// The tables of the behaviors that look for something which came and stays. They differ in their
// identifiers and in the advice on two numbers.
namespace profile_conversion::frame
{

// The document without rules, of the behavior with this word in its URN.
std::string StillObjectTemplate(const std::string& word);
void ReadStillObjectHead(StillObjectHead& config, analytics::DocumentNode& behavior,
                         analytics::Document& doc);
void WriteStillObjectHead(const StillObjectHead& config, analytics::DocumentNode& behavior,
                          analytics::Document& doc);
void ReadStillObjectModule(StillObjectHead& config, analytics::DocumentNode& module,
                           analytics::ProfileDoc& doc);
// False if the document has no module of the engine, or no Parameters in it.
bool WriteStillObjectModule(const StillObjectHead& config, const std::string& engineId, OnvifDoc& writer,
                            analytics::ProfileDoc& doc);

// The family adds its kVarloDocTemplate.
template <class Config, Bounds kDwellTime, Bounds kAlarmDelay>
struct StillObjectBehaviorForm : EngineBehaviorFormDefaults<Config>
{
    static constexpr auto kRoiChildren = DelayRoi<typename Config::RuleType>(kDwellTime, kAlarmDelay);
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
