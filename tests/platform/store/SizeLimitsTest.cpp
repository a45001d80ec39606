// What can't be given back isn't stored, in no part.

#include <analytics/ProfileDoc.h>

#include "platform/store/StoreFixture.h"
#include "request/Request.h"

#include <memory>
#include <optional>

using analytics::ProfileDoc;
using analytics::platform::RequestScope;
using testing::HasSubstr;

namespace
{
constexpr char kTooManyElements[] = "The behavior document has more than 10 elements";
constexpr char kTooManyBytes[] = "The profile would hold more than 1000 bytes";

std::string Elements(int count)
{
    std::string text = "<a>";
    for (int i = 1; i < count; ++i)
        text += "<b/>";
    return text + "</a>";
}
std::string Bytes(std::size_t count) { return "<a>" + std::string(count - 7, 'x') + "</a>"; }
} // namespace

class SizeLimitsTest : public StoreFixture
{
  protected:
    SizeLimitsTest()
    {
        SetLimits(10, 1000);
        Create("kept");
    }

    void SetLimits(int elements, int bytes)
    {
        Replace("settings.xml", "<settings><limits><documentElements>" + std::to_string(elements) +
                                    "</documentElements><profileBytes>" + std::to_string(bytes) +
                                    "</profileBytes></limits></settings>");
        Configure();
    }
    std::string RuleFault(const std::string& config, int profile = 1)
    {
        return ClientFaultOf([&] { m_manager->SetRuleConfig(profile, "r", config, true); });
    }
    std::string SceneFault(const std::string& config)
    {
        return ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", config, "renamed", ""); });
    }
};

TEST_F(SizeLimitsTest, ADocumentMayHaveSoManyElementsAndNoMore)
{
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "r", Elements(10), true));
    EXPECT_EQ(RuleFault(Elements(11)), kTooManyElements);
    EXPECT_EQ(SceneFault(Elements(11)), "The scene document has more than 10 elements");
    EXPECT_EQ(RuleConfig(1, "r"), Elements(10));
    EXPECT_EQ(EngineConfig(1, "e"), "(none)");
    EXPECT_EQ(m_manager->GetProfileName(1), "kept");
    EXPECT_EQ(RuleFault(Elements(11), 2), "Profile 2 does not exist");
}

TEST_F(SizeLimitsTest, WhatIsNoXmlHasNoElements)
{
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "r", std::string(100, '<'), false));
}

TEST_F(SizeLimitsTest, AProfileMayHoldSoManyBytesAndNoMore)
{
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "r1", Bytes(400), true));
    EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", Bytes(300)));
    EXPECT_TRUE(m_manager->SetEngineConfig(1, "scene", Bytes(200), "", ""));
    EXPECT_EQ(RuleFault(Bytes(101)), kTooManyBytes);
    EXPECT_EQ(SceneFault(Bytes(401)), kTooManyBytes);
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(1, "e", Bytes(401)); }), kTooManyBytes);
    EXPECT_EQ(RuleConfig(1, "r"), "(none)");
    EXPECT_EQ(EngineConfig(1, "e"), Bytes(300));
    EXPECT_EQ(m_manager->GetProfileName(1), "kept");
    EXPECT_EQ(RuleFault(Bytes(100)), "(no fault)");
    // In the place of another, and in another profile.
    EXPECT_TRUE(m_manager->SetRuleConfig(1, "r1", Bytes(399), true));
    Create();
    EXPECT_TRUE(m_manager->SetRuleConfig(2, "r", Bytes(1000), true));
    EXPECT_EQ(RuleFault("<a>\xc3\xa4</a>", 2), "(no fault)");
    EXPECT_TRUE(m_manager->SetRuleConfig(2, "r", Bytes(1000 - 9), true));
    EXPECT_EQ(ClientFaultOf([&] { m_manager->SetRuleConfig(2, "q", "<a>\xc3\xa4\xc3\xa4</a>", true); }),
              kTooManyBytes);
}

// ---- Within a request ----

TEST_F(SizeLimitsTest, AConversionThatCameToTooMuchIsSaidByItsSize)
{
    {
        const RequestScope request;
        EXPECT_FALSE(ProfileDoc().ParseString(Elements(11)));
        EXPECT_EQ(RuleFault(""), kTooManyElements);
        EXPECT_EQ(RuleFault("", 2), "Profile 2 does not exist");
        EXPECT_EQ(SceneFault(""), "The scene document has more than 10 elements");
    }
    const RequestScope next;
    EXPECT_EQ(RuleFault(""), "The behavior document could not be read");
    EXPECT_EQ(SceneFault(""), "The scene document could not be read");
}

TEST_F(SizeLimitsTest, AnEnginePartIsRefusedWithItsRule)
{
    for (const auto& [rule, fault] : {std::pair(Elements(11), kTooManyElements),
                                      std::pair(std::string(), "The behavior document could not be read"),
                                      std::pair(Bytes(999), kTooManyBytes)})
    {
        m_manager->SetEngineConfig(1, "e", "<before/>");
        {
            const RequestScope request;
            EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<after/>"));
            EXPECT_EQ(RuleFault(rule), fault);
        }
        EXPECT_EQ(EngineConfig(1, "e"), "<before/>");
        EXPECT_EQ(RuleConfig(1, "r"), "(none)");
    }
}

TEST_F(SizeLimitsTest, AnEnginePartIsStoredWithItsRule)
{
    {
        const RequestScope request;
        EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<e/>"));
        EXPECT_TRUE(m_manager->SetRuleConfig(1, "r", "<r/>", true));
        Reopen();
        EXPECT_EQ(EngineConfig(1, "e"), "<e/>");
        EXPECT_EQ(RuleConfig(1, "r"), "<r/>");
    }
    EXPECT_EQ(EngineConfig(1, "e"), "<e/>");
}

TEST_F(SizeLimitsTest, AnEnginePartWithoutARuleIsStoredByItself)
{
    Create();
    {
        const RequestScope request;
        EXPECT_TRUE(m_manager->SetEngineConfig(1, "e", "<e/>"));
        EXPECT_EQ(EngineConfig(1, "e"), "<e/>"); // whoever looks meanwhile finds it
        EXPECT_TRUE(m_manager->SetEngineConfig(1, "f", "<f/>"));
        EXPECT_EQ(RuleFault("", 2), "The behavior document could not be read"); // the rule of another profile
        EXPECT_TRUE(m_manager->SetEngineConfig(1, "g", "<g/>"));
        EXPECT_EQ(ClientFaultOf([&] { m_manager->SetEngineConfig(3, "e", "<e/>"); }),
                  "Profile 3 does not exist");
    }
    for (const char* id : {"e", "f", "g"})
        EXPECT_EQ(EngineConfig(1, id), "<" + std::string(id) + "/>");
    {
        const RequestScope request;
        EXPECT_TRUE(m_manager->SetEngineConfig(1, "h", "<h/>"));
        m_manager.reset();
    }
    Open();
    EXPECT_EQ(EngineConfig(1, "h"), "<h/>");
    EXPECT_FALSE(m_manager->SetEngineConfig(1, "h", ""));
}

// ---- A store that holds more already ----

TEST_F(SizeLimitsTest, AStoreThatHoldsMoreOpensAndSaysWhatIsTooLarge)
{
    SetLimits(1000, 100'000);
    m_manager->SetRuleConfig(1, "large", Bytes(2000), true);
    m_manager->SetRuleConfig(1, "r", "<r/>", true);
    Create();
    m_manager->SetRuleConfig(2, "many", Elements(40), true);
    SetLimits(10, 1000);
    const std::string said = ErrorsOf([this] { Reopen(); });
    EXPECT_THAT(said, HasSubstr("Profile 1 holds 2004 bytes, more than the 1000 of limits/profileBytes"));
    EXPECT_THAT(said, HasSubstr("Profile 2 holds a document of many with more than the 10 elements"));
    EXPECT_EQ(List().size(), 2u);
    EXPECT_EQ(AnalyticsFaultOf([this] { m_manager->GetConfig(1); }),
              "Profile 1 holds 2004 bytes, more than the 1000 that can be read; delete behaviors of it");
    EXPECT_NO_THROW(m_manager->GetConfig(2));
    EXPECT_EQ(ActiveRules(1).size(), 2u);
    EXPECT_TRUE(m_manager->DeleteRule(1, "large"));
    EXPECT_NO_THROW(m_manager->GetConfig(1));
    EXPECT_EQ(RuleConfig(1, "r"), "<r/>");
}
