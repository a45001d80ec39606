#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "platform/plugins/PluginFixture.h"
#include "request/Request.h"

#include <optional>
#include <thread>

using analytics::Manifest;
using analytics::PluginManager;
using analytics::Settings;
using analytics::platform::RequestScope;

class RequestScopeTest : public PluginFixture
{
  protected:
    RequestScopeTest() { Install(1); }

    void Install(int number)
    {
        Replace("settings.xml", "<settings><backlog>" + std::to_string(number) + "</backlog></settings>");
        WritePlugin("rule", "com.varlo.rule.r", "<name>" + std::to_string(number) + "</name>");
    }
    static std::string Seen()
    {
        Manifest manifest;
        PluginManager().GetManifest(manifest, "com.varlo.rule.r");
        return Settings::GetValue("//backlog") + " " + std::to_string(Settings::GetValue("//backlog", 0)) +
               " " + manifest.Name();
    }
};

TEST_F(RequestScopeTest, WithinARequestNothingChangesAndTheNextOneSeesIt)
{
    {
        const RequestScope request;
        EXPECT_EQ(Seen(), "1 1 1");
        Install(2);
        EXPECT_EQ(Seen(), "1 1 1");
    }
    const RequestScope next;
    EXPECT_EQ(Seen(), "2 2 2");
}

TEST_F(RequestScopeTest, OutsideOfRequestsAChangeShowsAtOnce)
{
    std::optional<RequestScope> request(std::in_place);
    EXPECT_EQ(Seen(), "1 1 1");
    Install(2);
    request.reset();
    EXPECT_EQ(Seen(), "2 2 2");
    Install(3);
    EXPECT_EQ(Seen(), "3 3 3");
}

TEST_F(RequestScopeTest, ARequestLooksForItself)
{
    const RequestScope request;
    EXPECT_EQ(Seen(), "1 1 1");
    Install(2);
    std::thread(
        []
        {
            const RequestScope other;
            EXPECT_EQ(Seen(), "2 2 2");
        })
        .join();
    EXPECT_EQ(Seen(), "1 1 1");
}

TEST_F(RequestScopeTest, ARequestHasItsCallerAndNoOtherThreadHas)
{
    using analytics::platform::CurrentCaller;
    EXPECT_EQ(CurrentCaller(), nullptr);
    {
        const analytics::platform::Caller caller{"guard", analytics::platform::Role::Operator, "192.0.2.7",
                                                 "5f3a9c01"};
        const RequestScope request(caller);
        EXPECT_EQ(CurrentCaller(), &caller);
        std::thread([] { EXPECT_EQ(CurrentCaller(), nullptr); }).join();
    }
    EXPECT_EQ(CurrentCaller(), nullptr);
    const RequestScope request;
    EXPECT_EQ(CurrentCaller(), nullptr);
}
