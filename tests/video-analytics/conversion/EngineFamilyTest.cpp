// What the families with a part in an analytics engine promise: each test once, a row per family.

#include "Families.h"

#include <AbandonedObjectConverter.h>
#include <DirectionalMotionConverter.h>
#include <ObjectRemovalConverter.h>
#include <StoppedVehicleConverter.h>

#include <analytics/ProfileDoc.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace conversiontest
{
namespace
{
using namespace profile_conversion;
using analytics::DocumentNode;

struct Abandoned
{
    using Converter = AbandonedObjectConverter;
    using Config = abandonedobject::Config;
    using Rule = abandonedobject::Rule;
    using VarloDoc = abandonedobject::VarloDoc;
    using OnvifDoc = abandonedobject::OnvifDoc;
    static constexpr char kEngine[] = "com.varlo.engine.abandonedobject";
};
struct Directional
{
    using Converter = DirectionalMotionConverter;
    using Config = directionalmotion::Config;
    using Rule = directionalmotion::Rule;
    using VarloDoc = directionalmotion::VarloDoc;
    using OnvifDoc = directionalmotion::OnvifDoc;
    static constexpr char kEngine[] = "com.varlo.engine.directionalmotion";
};
struct Removal
{
    using Converter = ObjectRemovalConverter;
    using Config = objectremoval::Config;
    using Rule = objectremoval::Rule;
    using VarloDoc = objectremoval::VarloDoc;
    using OnvifDoc = objectremoval::OnvifDoc;
    static constexpr char kEngine[] = "com.varlo.engine.objectremoval";
};
struct Stopped
{
    using Converter = StoppedVehicleConverter;
    using Config = stoppedvehicle::Config;
    using Rule = stoppedvehicle::Rule;
    using VarloDoc = stoppedvehicle::VarloDoc;
    using OnvifDoc = stoppedvehicle::OnvifDoc;
    static constexpr char kEngine[] = "com.varlo.engine.stoppedvehicle";
};

template <class FamilyT>
class EngineFamilyTest : public testing::Test
{
  protected:
    static std::string Behavior(const std::string& attributes, const std::string& content)
    {
        return "<behavior id='" + FamilyT::Config::Id() + "' " + attributes + ">" + content + "</behavior>";
    }
    // A behavior with one zone, which has alarms.
    static std::string OneZone()
    {
        return Behavior(
            "active='1' advanceMode='1'",
            "<sensitivity>9</sensitivity><rois><roi><name>Zone</name><enable>1</enable></roi></rois>");
    }
    // What the converter holds for the engine; "none" if it says that it has nothing.
    std::string Additional()
    {
        std::string config;
        return converter.AdditionalComponent(engineId, config) ? config : "none";
    }

    Plugins platform;
    typename FamilyT::Converter converter;
    ProfileParameters params;
    std::string engineId = "before";
};
using EngineFamilies = testing::Types<Abandoned, Directional, Removal, Stopped>;
TYPED_TEST_SUITE(EngineFamilyTest, EngineFamilies);

TYPED_TEST(EngineFamilyTest, HasNoAdditionalComponentBeforeAConversionAndSaysSo)
{
    std::string config = "before";
    EXPECT_FALSE(this->converter.AdditionalComponent(this->engineId, config));
    EXPECT_EQ(this->engineId, "");
    EXPECT_EQ(config, "");
}

TYPED_TEST(EngineFamilyTest, HandsOutTheEngineConfiguration)
{
    EXPECT_NE(this->converter.FromVarloToOnvif(this->OneZone(), this->params), "");
    const std::string engine = this->Additional();
    EXPECT_EQ(this->engineId, TypeParam::kEngine);
    EXPECT_EQ(TextAt(engine, "//tt:Parameters/tt:SimpleItem[@Name='AdvancedMode']/@Value"), "1");
    EXPECT_EQ(TextAt(engine, "//tt:Parameters/tt:SimpleItem[@Name='Sensitivity']/@Value"), "9");
}

TYPED_TEST(EngineFamilyTest, KeepsWhatItHasIfADocumentCannotBeRead)
{
    this->converter.FromVarloToOnvif(this->OneZone(), this->params);
    const std::string engine = this->Additional();
    EXPECT_EQ(this->converter.FromVarloToOnvif("no XML", this->params), "");
    EXPECT_EQ(this->converter.FromVarloToOnvif("<behavior id='urn:other'/>", this->params), "");
    EXPECT_EQ(this->Additional(), engine);
    EXPECT_TRUE(this->params.Active());
    this->converter.FromOnvifToVarlo("<tt:C xmlns:tt='urn:t'/>", this->params);
    EXPECT_EQ(this->Additional(), engine) << "the other direction has nothing to do with it";
}

TYPED_TEST(EngineFamilyTest, MakesTheRuleDocumentWithoutAnEngine)
{
    using Config = typename TypeParam::Config;
    auto& dependencies = this->platform.Of(Config::Id()).fields.dependencies;
    const std::vector<std::vector<std::string>> kLists = {{}, {"com.varlo.source.camera"}};
    for (const auto& list : kLists)
    {
        dependencies = list;
        EXPECT_EQ(CountAt(this->converter.FromVarloToOnvif(this->OneZone(), this->params), "//tt:Rule"), 1U);
        EXPECT_EQ(this->Additional(), "none");
        EXPECT_EQ(this->engineId, "");
    }
}

TYPED_TEST(EngineFamilyTest, MakesTheRuleDocumentWithoutAnEngineConfiguration)
{
    this->platform.Of(TypeParam::kEngine).engineDocument = "<tt:";
    EXPECT_EQ(CountAt(this->converter.FromVarloToOnvif(this->OneZone(), this->params), "//tt:Rule"), 1U);
    EXPECT_EQ(this->Additional(), "none");
    EXPECT_EQ(this->engineId, TypeParam::kEngine) << "an identifier alone is no component";
}

TYPED_TEST(EngineFamilyTest, MakesTheEngineConfigurationWithoutARuleDocument)
{
    for (const char* text : {"", "<tt:Other xmlns:tt='urn:t'/>"})
    {
        this->platform.Of(TypeParam::Config::Id()).engineDocument = text;
        EXPECT_EQ(this->converter.FromVarloToOnvif(this->OneZone(), this->params), "");
        EXPECT_EQ(CountAt(this->Additional(), "//tt:AnalyticsModule"), 1U);
    }
}

TYPED_TEST(EngineFamilyTest, AsksForTheEngineAheadOfTheRule)
{
    this->converter.FromVarloToOnvif(this->OneZone(), this->params);
    const std::vector<std::string>& calls = this->platform.calls;
    const auto engine =
        std::find(calls.begin(), calls.end(), std::string("GetDefaultConfiguration ") + TypeParam::kEngine);
    const auto rule =
        std::find(calls.begin(), calls.end(), "GetDefaultConfiguration " + TypeParam::Config::Id());
    EXPECT_LT(engine, rule);
    EXPECT_NE(rule, calls.end());
}

TYPED_TEST(EngineFamilyTest, TakesTheFirstDependencyThatIsAnEngine)
{
    using Config = typename TypeParam::Config;
    typename TypeParam::OnvifDoc doc;
    auto& dependencies = this->platform.Of(Config::Id()).fields.dependencies;
    dependencies = {"com.varlo.source.camera", "vendor:com.varlo.engine.one", "com.varlo.engine.two"};
    EXPECT_EQ(doc.EngineId(Config::Id()), "vendor:com.varlo.engine.one") << "the pattern may stand anywhere";
    EXPECT_EQ(doc.EngineId(Config::Alias()), "vendor:com.varlo.engine.one");
    EXPECT_EQ(doc.EngineId("com.varlo.rule.unknown"), "");
    dependencies.clear();
    EXPECT_EQ(doc.EngineId(Config::Id()), "");
}

TYPED_TEST(EngineFamilyTest, WritesForTheEngineThatThePluginNames)
{
    using Config = typename TypeParam::Config;
    this->platform.Of(Config::Id()).fields.dependencies = {"com.varlo.engine.objecttracker"};
    this->platform.Of("com.varlo.engine.objecttracker").engineDocument =
        "<tt:C xmlns:tt='urn:t'><tt:AnalyticsModule Type='com.varlo.engine.objecttracker'><tt:Parameters>"
        "<tt:SimpleItem Name='Sensitivity' Value='5'/></tt:Parameters></tt:AnalyticsModule></tt:C>";
    this->converter.FromVarloToOnvif(this->OneZone(), this->params);
    const std::string engine = this->Additional();
    EXPECT_EQ(this->engineId, "com.varlo.engine.objecttracker");
    EXPECT_EQ(TextAt(engine, "//tt:SimpleItem[@Name='Sensitivity']/@Value"), "9");
    EXPECT_EQ(CountAt(engine, "//tt:SimpleItem"), 1U) << "no item is added that the default has not";
}

TYPED_TEST(EngineFamilyTest, WriterStartsEmptyAndKeepsItsLastConfiguration)
{
    typename TypeParam::OnvifDoc writer;
    std::string id = "before";
    std::string config = "before";
    writer.EngineConfig(id, config);
    EXPECT_EQ(id + config, "");
    typename TypeParam::Config model;
    std::string xml;
    ASSERT_TRUE(writer.ConfigToDoc(model, xml));
    writer.EngineConfig(id, config);
    EXPECT_EQ(id, TypeParam::kEngine);
    EXPECT_EQ(config, writer.ConfigToEngineDoc(TypeParam::kEngine, model));
    EXPECT_EQ(writer.ConfigToEngineDoc("", model), "");
    EXPECT_EQ(writer.ConfigToEngineDoc("com.varlo.engine.unknown", model), "");
}

TYPED_TEST(EngineFamilyTest, ReadsTheEngineOnlyWhereItStands)
{
    const std::string profile = "<tt:C xmlns:tt='urn:t'><tt:AnalyticsModule Type='com.varlo.engine.other'>"
                                "<tt:Parameters><tt:SimpleItem Name='Sensitivity' Value='8'/>"
                                "<tt:SimpleItem Name='AdvancedMode' Value='1'/></tt:Parameters>"
                                "</tt:AnalyticsModule></tt:C>";
    typename TypeParam::Config config;
    ASSERT_TRUE(typename TypeParam::OnvifDoc().DocToConfig(profile, config));
    EXPECT_FALSE(config.AdvancedMode());
    EXPECT_EQ(config.Sensitivity(), 5);
    std::string own = profile;
    own.replace(own.find("com.varlo.engine.other"), 22, TypeParam::kEngine);
    ASSERT_TRUE(typename TypeParam::OnvifDoc().DocToConfig(own, config));
    EXPECT_TRUE(config.AdvancedMode());
    EXPECT_EQ(config.Sensitivity(), 8);
    // A module without the items resets what the model had.
    ASSERT_TRUE(typename TypeParam::OnvifDoc().DocToConfig(
        "<tt:C xmlns:tt='urn:t'><tt:AnalyticsModule Type='" + std::string(TypeParam::kEngine) + "'/></tt:C>",
        config));
    EXPECT_FALSE(config.AdvancedMode());
    EXPECT_EQ(config.Sensitivity(), 5);
    EXPECT_FALSE(typename TypeParam::OnvifDoc().DocToConfig("<tt:C", config));
}

TYPED_TEST(EngineFamilyTest, WritesNothingForAnIdleBehavior)
{
    const typename TypeParam::Config config;
    std::string xml = "before";
    EXPECT_TRUE(typename TypeParam::VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(xml, "before");
    EXPECT_EQ(this->converter.FromOnvifToVarlo("<tt:C xmlns:tt='urn:t'/>", this->params), "");
}

TYPED_TEST(EngineFamilyTest, WritesAnInactiveBehaviorWithARuleInFull)
{
    typename TypeParam::Config config;
    config.AddRule(new typename TypeParam::Rule);
    std::string xml;
    EXPECT_TRUE(typename TypeParam::VarloDoc().ConfigToDoc(config, xml));
    EXPECT_EQ(TextAt(xml, "behavior/@active"), "0");
    EXPECT_EQ(CountAt(xml, "behavior/rois/roi"), 1U);
    EXPECT_EQ(TextAt(xml, "behavior/sensitivity"), "5");
}

TYPED_TEST(EngineFamilyTest, DoesNothingWithoutNodes)
{
    analytics::ProfileDoc doc;
    ASSERT_TRUE(doc.ParseString("<a/>"));
    const std::unique_ptr<DocumentNode> node(doc.SelectNode("a", nullptr));
    typename TypeParam::Rule rule;
    typename TypeParam::VarloDoc varlo;
    typename TypeParam::OnvifDoc onvif;
    Point point(3, 4);
    EXPECT_EQ(varlo.NodeToRule(nullptr, &doc), nullptr);
    EXPECT_EQ(varlo.NodeToRule(node.get(), nullptr), nullptr);
    EXPECT_EQ(onvif.RuleFromNode(nullptr, &doc), nullptr);
    EXPECT_EQ(onvif.RuleFromNode(node.get(), nullptr), nullptr);
    varlo.AddRuleNode(&rule, nullptr);
    varlo.AddRuleNode(nullptr, node.get());
    onvif.AddRuleNode(&rule, nullptr);
    onvif.AddRuleNode(nullptr, node.get());
    varlo.AddPointsNodes({{1, 2}}, nullptr);
    varlo.NodeToPoint(point, nullptr, &doc);
    EXPECT_EQ(point.X() + point.Y(), 7);
    EXPECT_EQ(node->DumpToString(), "<a/>");
    EXPECT_EQ(varlo.BehaviorNodeQry(), "//behavior[@id='" + TypeParam::Config::Id() + "' or @id='" +
                                           TypeParam::Config::Alias() + "']");
}

TYPED_TEST(EngineFamilyTest, PassesOverRulesThatAreNone)
{
    typename TypeParam::Config config;
    auto* rule = new typename TypeParam::Rule;
    rule->EnableAlarm(true);
    config.SetRules({nullptr, rule});
    typename TypeParam::OnvifDoc writer;
    std::string xml;
    ASSERT_TRUE(writer.ConfigToDoc(config, xml));
    EXPECT_EQ(CountAt(xml, "//tt:Rule"), 1U);
    EXPECT_NE(writer.ConfigToEngineDoc(TypeParam::kEngine, config), "");
}
} // namespace
} // namespace conversiontest
