// The two entry points on a scripted platform. Each test is a process of its own under CTest, which
// matters here: the shutdown flag is never cleared.

#include <AnalyticsApi.h>

#include <fake-platform/FakePlatform.h>

#include <analytics/Faults.h>
#include <tarno/osa/TcpSocket.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace
{
std::atomic<int> gPauses{0};
}

// The pause of the run loop, counted.
extern "C" unsigned int sleep(unsigned int seconds)
{
    ++gPauses;
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return 0;
}

namespace
{

using testing::ElementsAre;

// Runs the service until its server listens, then ends it, as a host would.
std::vector<std::string> RunOnce(fake::Platform& platform)
{
    std::thread stopper;
    platform.onServerStarted = [&](auto*) { stopper = std::thread([] { ShutdownVarloAnalyticsApi(); }); };
    EXPECT_TRUE(StartVarloAnalyticsApi());
    stopper.join();
    return platform.serverCalls;
}

struct Backlog
{
    const char* name;
    std::vector<std::string> setting;
    const char* started;
};

void PrintTo(const Backlog& row, std::ostream* out) { *out << row.name; }

class BacklogTest : public testing::TestWithParam<Backlog>
{
};

TEST_P(BacklogTest, TheSettingReachesTheServer)
{
    fake::Platform platform;
    platform.settings["//backlog"] = GetParam().setting;
    EXPECT_THAT(RunOnce(platform), ElementsAre("TcpServer(kestrile-server, 0)", "SetBufferSize(65536)",
                                               GetParam().started, "Stop()", "~TcpServer()"));
}

INSTANTIATE_TEST_SUITE_P(All, BacklogTest,
                         testing::Values(Backlog{"Missing", {}, "Start(128)"},
                                         Backlog{"Empty", {""}, "Start(128)"},
                                         Backlog{"NoDigits", {"many"}, "Start(128)"},
                                         Backlog{"Number", {"17"}, "Start(17)"},
                                         Backlog{"NumberAndText", {" 17 or so"}, "Start(17)"},
                                         Backlog{"MoreThan16Bits", {"70000"}, "Start(4464)"},
                                         Backlog{"Negative", {"-1"}, "Start(65535)"}),
                         [](const auto& row) { return row.param.name; });

TEST(EntryTest, ShutdownBeforeStartEndsTheLaterStartAtOnce)
{
    fake::Platform platform;
    EXPECT_TRUE(ShutdownVarloAnalyticsApi());
    EXPECT_EQ(platform.managersMade, 0);
    gPauses = 0;
    EXPECT_TRUE(StartVarloAnalyticsApi());
    EXPECT_EQ(gPauses, 0);
    EXPECT_EQ(platform.managersMade, 1);
    EXPECT_THAT(platform.serverCalls, ElementsAre("TcpServer(kestrile-server, 0)", "SetBufferSize(65536)",
                                                  "Start(128)", "Stop()", "~TcpServer()"));
    EXPECT_TRUE(ShutdownVarloAnalyticsApi());
    EXPECT_EQ(platform.managersDeleted, 1);
}

TEST(EntryTest, ShutdownTwiceDeletesTheManagerOnce)
{
    fake::Platform platform;
    RunOnce(platform);
    EXPECT_EQ(platform.managersDeleted, 1);
    EXPECT_TRUE(ShutdownVarloAnalyticsApi());
    EXPECT_EQ(platform.managersDeleted, 1);
}

TEST(EntryTest, SecondStartBringsTheServerUpAndTearsItDownAtOnce)
{
    fake::Platform platform;
    RunOnce(platform);
    platform.serverCalls.clear();
    platform.onServerStarted = [](auto*) {};
    gPauses = 0;
    EXPECT_TRUE(StartVarloAnalyticsApi());
    EXPECT_EQ(gPauses, 0);
    EXPECT_THAT(platform.serverCalls, ElementsAre("TcpServer(kestrile-server, 0)", "SetBufferSize(65536)",
                                                  "Start(128)", "Stop()", "~TcpServer()"));
    ShutdownVarloAnalyticsApi();
}

void ExpectBindFailure(fake::Platform& platform)
{
    testing::internal::CaptureStdout();
    EXPECT_TRUE(StartVarloAnalyticsApi());
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Bind failed...\n");
    EXPECT_EQ(platform.managersDeleted, 0) << "the manager stays until the shutdown";
    EXPECT_TRUE(ShutdownVarloAnalyticsApi());
    EXPECT_EQ(platform.managersDeleted, 1);
}

TEST(EntryTest, ServerThatCannotBeMadeIsReportedOnStandardOutput)
{
    fake::Platform platform;
    platform.onServerMade = [] { throw std::runtime_error("no server"); };
    ExpectBindFailure(platform);
}

TEST(EntryTest, ServerThatCannotStartIsReportedAndReleased)
{
    fake::Platform platform;
    platform.onServerStarted = [](auto*)
    { throw tarno::osa::SocketException(tarno::osa::SocketException::kBindError, "in use"); };
    ExpectBindFailure(platform);
    EXPECT_EQ(platform.serverCalls.back(), "~TcpServer()");
}

TEST(EntryTest, AnExceptionOfAnyTypeCountsAsFailedBind)
{
    fake::Platform platform;
    platform.onServerStarted = [](auto*) { throw 7; };
    ExpectBindFailure(platform);
}

TEST(EntryTest, ServerThatCannotStopIsReleasedAllTheSame)
{
    fake::Platform platform;
    platform.onServerStopped = [] { throw std::runtime_error("stuck"); };
    EXPECT_EQ(RunOnce(platform).back(), "~TcpServer()");
}

TEST(EntryTest, SettingThatThrowsReachesTheHost)
{
    fake::Platform platform;
    platform.onSetting = [] { throw analytics::AnalyticsFault("no settings"); };
    EXPECT_THROW(StartVarloAnalyticsApi(), analytics::AnalyticsFault);
    EXPECT_EQ(platform.managersMade, 0);
    EXPECT_TRUE(platform.serverCalls.empty());
}

TEST(EntryTest, StoreThatCannotBeOpenedReachesTheHostAndTheNextStartTriesAgain)
{
    fake::Platform platform;
    platform.onManagerMade = [] { throw analytics::AnalyticsFault("no store"); };
    EXPECT_THROW(StartVarloAnalyticsApi(), analytics::AnalyticsFault);
    EXPECT_TRUE(platform.serverCalls.empty());
    platform.onManagerMade = [] {};
    RunOnce(platform);
    EXPECT_EQ(platform.managersMade, 1);
}

} // namespace
