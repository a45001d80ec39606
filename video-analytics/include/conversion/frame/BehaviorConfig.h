#pragma once

#include <Shapes.h>

#include <memory>
#include <string>
#include <vector>

namespace analytics
{

// As both document forms write it.
enum AlarmSeverity
{
    Minor = 0,
    Normal = 1,
    Major = 2,
    Critical = 3
};

// A number beyond the range is the nearest severity.
inline AlarmSeverity SeverityFromInt(int number)
{
    if (number < Minor)
        return Minor;
    return number > Critical ? Critical : static_cast<AlarmSeverity>(number);
}

} // namespace analytics

namespace profile_conversion::frame
{

// What the rules of all families have in common. No number is held to a range: clients are told the
// bounds and may pass them.
class ZoneRule
{
  public:
    std::string Name() const { return m_name; }
    void Name(const std::string& name) { m_name = name; }
    bool EnableAlarm() const { return m_enableAlarm; }
    void EnableAlarm(bool enable) { m_enableAlarm = enable; }
    analytics::AlarmSeverity Severity() const { return m_severity; }
    void Severity(analytics::AlarmSeverity severity) { m_severity = severity; }
    int DwellTime() const { return m_dwellTime; }
    void DwellTime(int seconds) { m_dwellTime = seconds; }
    const Points& Zone() const { return m_zone; }
    void Zone(const Points& zone) { m_zone = zone; }

  protected:
    ~ZoneRule() = default;

  private:
    std::string m_name;
    bool m_enableAlarm = false;
    analytics::AlarmSeverity m_severity = analytics::Minor;
    int m_dwellTime = 5;
    Points m_zone;
};

// A rule with an alarm delay, which the families start from different values.
template <int kAlarmDelay>
class DelayRule : public ZoneRule
{
  public:
    int AlarmDelay() const { return m_alarmDelay; }
    void AlarmDelay(int seconds) { m_alarmDelay = seconds; }

  protected:
    ~DelayRule() = default;

  private:
    int m_alarmDelay = kAlarmDelay;
};

// A rule that alarms on one direction of movement, or on all of them.
class AnyDirectionRule : public ZoneRule
{
  public:
    int Direction() const { return m_direction; } // 0 to 7 or 8 for all, which nothing enforces
    void Direction(int direction) { m_direction = direction; }

  protected:
    ~AnyDirectionRule() = default;

  private:
    int m_direction = 8;
};

// What the manifest of a rule's plug-in says: its alias, and the first dependency that is an engine. Empty if
// there is none.
std::string AliasOf(const std::string& id);
std::string EngineOf(const std::string& id);

// The model of a behavior with rules, which it owns. A family derives its Config, with an Id() and an
// Alias() that need no object.
template <class RuleT>
class BehaviorConfig
{
  public:
    using RuleType = RuleT;
    using Rules = std::vector<RuleT*>;

    BehaviorConfig() = default;
    ~BehaviorConfig() { DeleteAllRules(); }
    BehaviorConfig(const BehaviorConfig&) = delete;
    BehaviorConfig& operator=(const BehaviorConfig&) = delete;

    bool Active() const { return m_active; }
    void Active(bool active) { m_active = active; }

    const Rules& GetRules() const { return m_rules; }
    // Deletes those it has, then takes over these.
    void SetRules(const Rules& rules)
    {
        DeleteAllRules();
        m_rules = rules;
    }
    // Takes over the rule; null is ignored.
    void AddRule(RuleT* rule)
    {
        std::unique_ptr<RuleT> owned(rule); // in case there is no memory for the list
        if (rule != nullptr)
            m_rules.push_back(rule);
        static_cast<void>(owned.release());
    }
    void DeleteAllRules()
    {
        for (const RuleT* rule : m_rules)
            delete rule;
        m_rules.clear();
    }

  private:
    bool m_active = false;
    Rules m_rules;
};

// The model of a behavior with settings above its rules, which are those of its analytics engine.
template <class RuleT>
class EngineBehaviorConfig : public BehaviorConfig<RuleT>
{
  public:
    bool AdvancedMode() const { return m_advancedMode; }
    void AdvancedMode(bool advanced) { m_advancedMode = advanced; }
    int Sensitivity() const { return m_sensitivity; }
    void Sensitivity(int sensitivity) { m_sensitivity = sensitivity; }

  private:
    bool m_advancedMode = false;
    int m_sensitivity = 5;
};

} // namespace profile_conversion::frame
