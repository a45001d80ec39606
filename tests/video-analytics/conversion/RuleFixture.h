#pragma once

#include "Families.h"

#include <AdaptiveMotionConverter.h>
#include <LoiteringConverter.h>
#include <ObjectCountingConverter.h>

#include <gtest/gtest.h>

// The families that are a rule and nothing else: no part in an engine.
namespace conversiontest
{

struct Loitering
{
    using Converter = profile_conversion::LoiteringConverter;
    using Config = profile_conversion::loitering::Config;
    using VarloDoc = profile_conversion::loitering::VarloDoc;
    using OnvifDoc = profile_conversion::loitering::OnvifDoc;
    static constexpr bool kLinePossible = false;
};
struct AdaptiveMotion
{
    using Converter = profile_conversion::AdaptiveMotionConverter;
    using Config = profile_conversion::adaptivemotion::Config;
    using VarloDoc = profile_conversion::adaptivemotion::VarloDoc;
    using OnvifDoc = profile_conversion::adaptivemotion::OnvifDoc;
    static constexpr bool kLinePossible = true;
};
struct ObjectCounting
{
    using Converter = profile_conversion::ObjectCountingConverter;
    using Config = profile_conversion::objectcounting::Config;
    using VarloDoc = profile_conversion::objectcounting::VarloDoc;
    using OnvifDoc = profile_conversion::objectcounting::OnvifDoc;
    static constexpr bool kLinePossible = true;
};

template <class FamilyT>
class RuleFixture : public testing::Test
{
  protected:
    using Config = typename FamilyT::Config;
    using Rule = typename Config::RuleType;

    static std::string Behavior(const std::string& content)
    {
        return "<behavior id='" + Config::Id() + "' active='1'>" + content + "</behavior>";
    }
    static std::string Rois(const std::string& rois) { return Behavior("<rois>" + rois + "</rois>"); }
    static std::string RuleText(const std::string& parameters)
    {
        return "<tt:Rule Name='n' Type='" + Config::Id() + "'><tt:Parameters>" + parameters +
               "</tt:Parameters></tt:Rule>";
    }
    static std::string Engine(const std::string& rules)
    {
        return "<tt:C xmlns:tt='urn:t'>" + rules + "</tt:C>";
    }

    // The only rule of a document.
    const Rule& Read(const std::string& roi)
    {
        config.DeleteAllRules();
        EXPECT_TRUE(typename FamilyT::VarloDoc().DocToConfig(Rois(roi), config));
        EXPECT_EQ(config.GetRules().size(), 1U);
        return *config.GetRules().front();
    }
    const Rule& ReadEngine(const std::string& parameters)
    {
        config.DeleteAllRules();
        EXPECT_TRUE(typename FamilyT::OnvifDoc().DocToConfig(Engine(RuleText(parameters)), config));
        EXPECT_EQ(config.GetRules().size(), 1U);
        return *config.GetRules().front();
    }
    std::string WriteEngine()
    {
        std::string xml;
        EXPECT_TRUE(typename FamilyT::OnvifDoc().ConfigToDoc(config, xml));
        return xml;
    }
    std::string Write()
    {
        std::string xml;
        EXPECT_TRUE(typename FamilyT::VarloDoc().ConfigToDoc(config, xml));
        return xml;
    }

    Plugins platform;
    Config config;
};

} // namespace conversiontest
