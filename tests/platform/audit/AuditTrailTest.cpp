#include "audit/AuditTrail.h"

#include "metrics/Metrics.h"
#include "platform/PlatformTest.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

using namespace analytics;
using namespace analytics::platform;
using Json = nlohmann::json;

class AuditTrailTest : public PlatformTest
{
  protected:
    AuditTrailTest() { AuditTo("audit.log"); }

    void AuditTo(const std::string& target)
    {
        Write("settings.xml", "<settings><server><audit>" + target + "</audit></server></settings>");
        Configure();
    }
    std::vector<Json> Lines(const std::string& file = "audit.log") const
    {
        std::vector<Json> lines;
        std::ifstream stream(Path(file));
        for (std::string line; std::getline(stream, line);)
            lines.push_back(Json::parse(line));
        return lines;
    }
    static void AuditStop(int profile) { Audit({.change = "StopProfile", .profile = profile}); }
};

TEST_F(AuditTrailTest, ALineIsThereWhenTheChangeReturns)
{
    AuditEntry entry{.change = "CreateProfile"};
    Audited(entry,
            [&]
            {
                EXPECT_FALSE(std::filesystem::exists(Path("audit.log")));
                entry.profile = 7;
            });
    ASSERT_EQ(Lines().size(), 1U);
    EXPECT_EQ(Lines()[0]["profile"], 7);
    EXPECT_EQ(Lines()[0]["result"], "done");
    EXPECT_FALSE(Lines()[0].contains("reason"));
}

TEST_F(AuditTrailTest, WhatAChangeThrowsIsItsResult)
{
    AuditEntry entry{.change = "DeleteProfile", .profile = 9};
    EXPECT_THROW(Audited(entry, [] { throw ClientFault("Profile 9 does not exist"); }), ClientFault);
    EXPECT_THROW(Audited(entry, [] { throw AnalyticsFault("The disk is full"); }), AnalyticsFault);
    EXPECT_THROW(Audited(entry, [] { throw std::bad_alloc(); }), std::bad_alloc);
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0]["result"], "refused");
    EXPECT_EQ(lines[0]["reason"], "Profile 9 does not exist");
    EXPECT_EQ(lines[1]["result"], "failed");
    EXPECT_EQ(lines[1]["reason"], "The disk is full");
    EXPECT_EQ(lines[2]["result"], "failed");
}

TEST_F(AuditTrailTest, TheCallerOfTheRequestIsNamed)
{
    const Caller caller{"guard", Role::Operator, "192.0.2.7", "5f3a9c01"};
    const RequestScope request(caller);
    AuditStop(3);
    const Json line = Lines().at(0);
    EXPECT_EQ(line["user"], "guard");
    EXPECT_EQ(line["role"], "operator");
    EXPECT_EQ(line["peer"], "192.0.2.7");
    EXPECT_EQ(line["request"], "5f3a9c01");
}

TEST_F(AuditTrailTest, OnlyTheServiceReadsTheFile)
{
    AuditStop(1);
    struct stat status = {};
    ASSERT_EQ(stat(Path("audit.log").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(AuditTrailTest, WithoutTheSettingNothingIsWritten)
{
    Write("settings.xml", "<settings><server><maxConnections>5</maxConnections></server></settings>");
    Configure();
    EXPECT_EQ(ErrorsOf([] { AuditStop(1); }), "");
    EXPECT_FALSE(std::filesystem::exists(Path("audit.log")));
}

TEST_F(AuditTrailTest, AChangedSettingShowsAtTheNextLine)
{
    AuditStop(1);
    Replace("settings.xml", "<settings><server><audit>other.log</audit></server></settings>");
    AuditStop(2);
    EXPECT_EQ(Lines().size(), 1U);
    EXPECT_EQ(Lines("other.log").size(), 1U);
}

TEST_F(AuditTrailTest, ARenamedFileIsLeft)
{
    AuditStop(1);
    std::filesystem::rename(Path("audit.log"), Path("audit.log.1"));
    AuditStop(2);
    EXPECT_EQ(Lines("audit.log.1").size(), 1U);
    ASSERT_EQ(Lines().size(), 1U);
    EXPECT_EQ(Lines()[0]["profile"], 2);
}

TEST_F(AuditTrailTest, AFileThatIsThereIsContinued)
{
    Write("audit.log", "{\"change\":\"of yesterday\"}\n");
    AuditStop(1);
    EXPECT_EQ(Lines().size(), 2U);
}

TEST_F(AuditTrailTest, OpeningMakesTheFileAndSaysIfItCannot)
{
    OpenAuditTrail();
    EXPECT_TRUE(std::filesystem::exists(Path("audit.log")));
    AuditTo("missing/audit.log");
    const std::string errors = ErrorsOf([] { OpenAuditTrail(); });
    EXPECT_NE(errors.find("missing/audit.log can't be written: No such file or directory"), std::string::npos)
        << errors;
}

TEST_F(AuditTrailTest, AFileThatCannotBeWrittenIsSaidOnceAndCounted)
{
    AuditTo("missing/audit.log");
    const auto before = gAuditErrors.Value();
    const std::string errors = ErrorsOf(
        []
        {
            for (int profile = 1; profile <= 5; ++profile)
                AuditStop(profile);
        });
    EXPECT_EQ(std::ranges::count(errors, '\n'), 1) << errors;
    EXPECT_EQ(gAuditErrors.Value(), before + 5);
    std::filesystem::create_directory(Path("missing"));
    EXPECT_NE(ErrorsOf([] { AuditStop(6); }).find("is written again"), std::string::npos);
    EXPECT_EQ(Lines("missing/audit.log").size(), 1U);
}

TEST_F(AuditTrailTest, AFullDiskHoldsUpNothing)
{
    AuditTo("/dev/full");
    EXPECT_NE(ErrorsOf([] { AuditStop(1); }).find("No space left on device"), std::string::npos);
}

TEST_F(AuditTrailTest, APipeThatNobodyReadsHoldsUpNothing)
{
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    AuditTo("pipe");
    EXPECT_NE(ErrorsOf([] { AuditStop(1); }).find("can't be written"), std::string::npos);
}

TEST_F(AuditTrailTest, LinesOfManyThreadsStayWhole)
{
    constexpr int kThreads = 8;
    constexpr int kLines = 50;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < kThreads; ++number)
            threads.emplace_back(
                [number]
                {
                    for (int line = 0; line < kLines; ++line)
                        AuditStop(number);
                });
    }
    EXPECT_EQ(Lines().size(), kThreads * kLines);
}

TEST_F(AuditTrailTest, RefusalsOfAccessAreGatheredAndNoneIsLost)
{
    const Caller caller{"guard", Role::Viewer, "192.0.2.7", ""};
    for (int attempt = 0; attempt < 5; ++attempt)
        AuditRefusedAccess(caller, "The password is wrong.");
    ASSERT_EQ(Lines().size(), 1U);
    EXPECT_EQ(Lines()[0]["change"], "access");
    EXPECT_EQ(Lines()[0]["result"], "refused");
    EXPECT_FALSE(Lines()[0].contains("role"));
    AuditTo("other.log");
    AuditStop(1); // the trail before is closed, with what it had left
    ASSERT_EQ(Lines().size(), 2U);
    EXPECT_EQ(Lines()[1]["count"], 4);
}

// The test's machine may or may not have a journal: what is sent there is met in tests/wire.
TEST_F(AuditTrailTest, WithoutAJournalLinesGoToStandardError)
{
    if (access("/run/systemd/journal/socket", F_OK) == 0)
        return;
    AuditTo("journal");
    const std::string errors = ErrorsOf([] { AuditStop(4); });
    EXPECT_EQ(Json::parse(errors)["profile"], 4);
}
