#pragma once

#include <ProfileDocConverter.h>
#include <frame/BehaviorDoc.h>
#include <frame/RuleDoc.h>

#include <string>

namespace profile_conversion::frame
{

// The converter of a family, from its model and its two documents.
template <class Config, class VarloDoc, class OnvifDoc>
class BehaviorConverter : public ProfileDocConverter
{
  public:
    static bool CanConvert(const std::string& id) { return id == Config::Id() || id == Config::Alias(); }

    std::string FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params) override
    {
        std::string result;
        Config config;
        if (!VarloDoc().DocToConfig(varloDoc, config)) // whose tree isn't needed any more
            return result;
        params.Active(config.Active());
        OnvifDoc onvifParser;
        onvifParser.ConfigToDoc(config, result); // on failure the result stays empty, which says it
        TakeEngine(onvifParser);
        return result;
    }

    std::string FromOnvifToVarlo(const std::string& onvifDoc, const ProfileParameters&) override
    {
        std::string result;
        Config config;
        if (!OnvifDoc().DocToConfig(onvifDoc, config))
            return result;
        VarloDoc varloParser;
        varloParser.ConfigToDoc(config, result);
        return result;
    }

  private:
    // What the writer has made beside the rule document, also when it made none.
    virtual void TakeEngine(OnvifDoc&) {}
};

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
