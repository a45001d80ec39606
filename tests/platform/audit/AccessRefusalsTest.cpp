#include "audit/AuditTrail.h"

#include <gtest/gtest.h>

using namespace analytics::platform;
using namespace std::chrono_literals;

namespace
{
const AccessRefusals::Clock::time_point kStart(1000s);
constexpr auto kWindow = AccessRefusals::kWindow;

AuditEntry From(const std::string& peer, const std::string& user = "guard")
{
    AuditEntry entry{.change = "access", .result = AuditResult::Refused, .reason = "password"};
    entry.caller = Caller{user, Role::Viewer, peer, ""};
    return entry;
}

// "peer user count" of each.
std::vector<std::string> Told(const std::vector<AuditEntry>& entries)
{
    std::vector<std::string> told;
    for (const AuditEntry& entry : entries)
        told.push_back(entry.caller->peer + " " + entry.caller->name + " " + std::to_string(entry.count));
    return told;
}
using Lines = std::vector<std::string>;
} // namespace

TEST(AccessRefusalsTest, TheFirstOfEachAddressIsToldAtOnce)
{
    AccessRefusals refusals;
    EXPECT_EQ(Told(refusals.Add(From("192.0.2.1"), kStart)), Lines{"192.0.2.1 guard 0"});
    EXPECT_EQ(Told(refusals.Add(From("192.0.2.2"), kStart)), Lines{"192.0.2.2 guard 0"});
    EXPECT_EQ(Told(refusals.Add(From("192.0.2.1"), kStart + 1s)), Lines{});
}

TEST(AccessRefusalsTest, FurtherOnesAreToldTogetherAfterTenSeconds)
{
    AccessRefusals refusals;
    refusals.Add(From("192.0.2.1"), kStart);
    for (int attempt = 1; attempt <= 41; ++attempt)
        refusals.Add(From("192.0.2.1", "user" + std::to_string(attempt)), kStart + 1s);
    EXPECT_EQ(Told(refusals.Due(kStart + 9999ms)), Lines{});
    EXPECT_EQ(Told(refusals.Due(kStart + 10s)), Lines{"192.0.2.1 user41 41"});
    EXPECT_EQ(Told(refusals.Due(kStart + 10s)), Lines{});
}

TEST(AccessRefusalsTest, EachTenSecondsHaveALineWhileItGoesOn)
{
    AccessRefusals refusals;
    refusals.Add(From("192.0.2.1"), kStart);
    refusals.Add(From("192.0.2.1"), kStart + 5s);
    EXPECT_EQ(Told(refusals.Due(kStart + 10s)), Lines{"192.0.2.1 guard 1"});
    refusals.Add(From("192.0.2.1"), kStart + 12s);
    refusals.Add(From("192.0.2.1"), kStart + 13s);
    EXPECT_EQ(Told(refusals.Due(kStart + 19s)), Lines{});
    EXPECT_EQ(Told(refusals.Due(kStart + 20s)), Lines{"192.0.2.1 guard 2"});
}

TEST(AccessRefusalsTest, AfterTenQuietSecondsTheNextIsTheFirstAgain)
{
    AccessRefusals refusals;
    refusals.Add(From("192.0.2.1"), kStart);
    EXPECT_EQ(Told(refusals.Add(From("192.0.2.1"), kStart + 10s)), Lines{"192.0.2.1 guard 0"});
}

TEST(AccessRefusalsTest, WhatIsDueIsToldBeforeTheNextRefusal)
{
    AccessRefusals refusals;
    refusals.Add(From("192.0.2.1"), kStart);
    refusals.Add(From("192.0.2.1"), kStart + 1s);
    EXPECT_EQ(Told(refusals.Add(From("192.0.2.2"), kStart + 11s)),
              (Lines{"192.0.2.1 guard 1", "192.0.2.2 guard 0"}));
}

TEST(AccessRefusalsTest, ManyAddressesAreToldTogether)
{
    AccessRefusals refusals;
    for (std::size_t address = 0; address < AccessRefusals::kMost; ++address)
        EXPECT_EQ(refusals.Add(From(std::to_string(address)), kStart).size(), 1U);
    EXPECT_EQ(Told(refusals.Add(From("beyond"), kStart)), Lines{" guard 0"});
    EXPECT_EQ(Told(refusals.Add(From("further"), kStart)), Lines{});
    EXPECT_EQ(Told(refusals.Add(From("0"), kStart)), Lines{}) << "a known address keeps its own line";
    EXPECT_EQ(Told(refusals.Due(kStart + 10s)), (Lines{" guard 1", "0 guard 1"}));
}

TEST(AccessRefusalsTest, WhatIsLeftIsToldAtTheEnd)
{
    AccessRefusals refusals;
    refusals.Add(From("192.0.2.1"), kStart);
    EXPECT_EQ(Told(refusals.Due(kStart + kWindow)), Lines{});
    refusals.Add(From("192.0.2.1"), kStart);
    refusals.Add(From("192.0.2.1"), kStart + 1s);
    EXPECT_EQ(Told(refusals.Due(kStart + 1s + kWindow)), Lines{"192.0.2.1 guard 1"});
    EXPECT_EQ(Told(refusals.Due(kStart + 1s + 2 * kWindow)), Lines{});
}
