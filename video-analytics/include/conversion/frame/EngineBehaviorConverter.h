#pragma once

#include <frame/BehaviorConverter.h>

namespace profile_conversion::frame
{

// The converter of a family with an engine part. What FromVarloToOnvif() leaves for
// AdditionalComponent() stays as it was if the behavior document can't be read.
template <class Config, class VarloDoc, class OnvifDoc>
class EngineBehaviorConverter : public BehaviorConverter<Config, VarloDoc, OnvifDoc>
{
  public:
    bool AdditionalComponent(std::string& id, std::string& config) const override
    {
        id = m_additionalId;
        config = m_additionalConfig;
        return !id.empty() && !config.empty();
    }

  private:
    void TakeEngine(OnvifDoc& writer) override { writer.EngineConfig(m_additionalId, m_additionalConfig); }

    std::string m_additionalId;
    std::string m_additionalConfig;
};

} // namespace profile_conversion::frame
