#pragma once

#include <analytics/Faults.h>
#include <analytics/ProfileManager.h>

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

class StoreFixture : public PlatformTest
{
  protected:
    StoreFixture() { Open(); }

    void Open() { m_manager = std::make_unique<analytics::ProfileManager>(); }
    // As a restart of the service does.
    void Reopen()
    {
        m_manager.reset();
        Open();
    }
    int Create(const std::string& name = "profile")
    {
        int id = -1;
        EXPECT_TRUE(m_manager->CreateProfile(id, name));
        return id;
    }
    std::vector<analytics::ProfileSummary> List() const
    {
        std::vector<analytics::ProfileSummary> list;
        EXPECT_TRUE(m_manager->GetProfileList(list));
        return list;
    }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& profile : List())
            names.push_back(profile.name);
        return names;
    }
    int Active() const
    {
        int id = -1;
        EXPECT_TRUE(m_manager->GetActiveProfile(id));
        return id;
    }
    std::vector<std::string> ActiveRules(int profile) const
    {
        std::vector<std::string> rules;
        EXPECT_TRUE(m_manager->GetActiveRules(profile, rules));
        return rules;
    }
    std::string RuleConfig(int profile, const std::string& id) const
    {
        std::string config = "(none)";
        m_manager->GetRuleConfig(profile, id, config);
        return config;
    }
    std::string EngineConfig(int profile, const std::string& id) const
    {
        std::string config = "(none)";
        m_manager->GetEngineConfig(profile, id, config);
        return config;
    }

    std::unique_ptr<analytics::ProfileManager> m_manager;
};

// The fault that a client or an operator reads.
inline std::string ClientFaultOf(const std::function<void()>& action)
{
    return FaultOf<analytics::ClientFault>(action);
}
inline std::string AnalyticsFaultOf(const std::function<void()>& action)
{
    return FaultOf<analytics::AnalyticsFault>(action);
}
