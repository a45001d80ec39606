#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::frame
{

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
