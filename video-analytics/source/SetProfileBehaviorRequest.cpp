#include <BehaviorRequests.h>

#include <AnalyticsId.h>
#include <ProfileDocConverter.h>

#include <analytics/ProfileManager.h>

#include <memory>

namespace analyticsapi
{

int SetProfileBehaviorRequest::DoExecute()
{
    const std::string analyticsId = varloapi::AnalyticsId::AnalyticsIdFromVarloId(m_behaviorId);
    if (analyticsId.empty())
        return UnsupportedBehavior(m_soap);
    profile_conversion::ProfileParameters params;
    const std::unique_ptr<profile_conversion::ProfileDocConverter> conv(
        profile_conversion::Factory::CreateConverter(analyticsId));
    if (conv != nullptr)
    {
        // A document that can't be read gives an empty text, which the platform refuses in its own words.
        m_config = conv->FromVarloToOnvif(m_config, params);
        std::string engineId;
        std::string engineConfig;
        // Whether the engine's part could be stored isn't looked at: the rule's part decides.
        if (conv->AdditionalComponent(engineId, engineConfig))
            GetProfileManager()->SetEngineConfig(m_id, engineId, engineConfig);
    }
    return GetProfileManager()->SetRuleConfig(m_id, analyticsId, m_config, params.Active()) ? 0 : -1;
}

} // namespace analyticsapi
