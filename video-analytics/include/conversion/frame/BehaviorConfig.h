#pragma once

#include <memory>
#include <string>
#include <vector>

namespace profile_conversion::frame
{

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
