#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::camerasabotage
{

// The whole picture is watched: there are no zones and no rules.
class Config
{
  public:
    static std::string Id() { return "com.varlo.rule.camerasabotage"; }
    static std::string Alias() { return frame::AliasOf(Id()); }

    bool Active() const { return m_active; }
    void Active(bool active) { m_active = active; }
    int AlarmDelay() const { return m_alarmDelay; }
    void AlarmDelay(int seconds) { m_alarmDelay = seconds; }
    analytics::AlarmSeverity Severity() const { return m_severity; }
    void Severity(analytics::AlarmSeverity severity) { m_severity = severity; }

  private:
    bool m_active = false;
    int m_alarmDelay = 3;
    analytics::AlarmSeverity m_severity = analytics::Minor;
};

} // namespace profile_conversion::camerasabotage
