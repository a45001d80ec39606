#include "audit/AuditTrail.h"

#include <Drawn.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

using namespace analytics::platform;
using Json = nlohmann::json;
using namespace std::chrono_literals;

namespace
{
const std::chrono::system_clock::time_point kTime(1795311932123ms); // 2026-11-22T01:45:32.123Z

AuditEntry Example()
{
    AuditEntry entry{.change = "SetRuleConfig", .profile = 3, .plugin = "com.varlo.rule.loiteringdetection"};
    entry.caller = Caller{"installer", Role::Administrator, "192.0.2.7", "5f3a9c01"};
    return entry;
}

std::string TextOf(const AuditEntry& entry) { return FormatAudit(entry, kTime).text; }

AuditEntry Named(const std::string& name)
{
    AuditEntry entry = Example();
    entry.caller->name = name;
    entry.reason = name;
    return entry;
}

std::string RoundTrip(const std::string& name)
{
    const Json json = Json::parse(TextOf(Named(name)));
    EXPECT_EQ(json["user"], json["reason"]);
    return json["user"];
}

// One of the characters that make trouble somewhere, or any other.
std::string DrawCharacter(std::mt19937& random)
{
    static const std::string kTroublesome[] = {
        "\n",     "\r",     "\"",     "\\",     "\t",     std::string(1, '\0'), "\x1b", "\x7f",
        "\u0085", "\u2028", "\u2029", "\u202e", "\ufeff", "\U0001F600",         "}",    "<"};
    constexpr std::size_t kCount = std::size(kTroublesome);
    const std::size_t drawn = random() % (2 * kCount);
    return drawn < kCount ? kTroublesome[drawn] : std::string(1, static_cast<char>('!' + random() % 90));
}

bool IsOneLine(const std::string& text)
{
    for (const char* end : {"\n", "\r", "\v", "\f", "\x1c", "\x1d", "\x1e", "\u0085", "\u2028", "\u2029"})
        if (text.find(end) != std::string::npos)
            return false;
    return text.find('\0') == std::string::npos;
}
} // namespace

TEST(AuditEntryTest, ALineHoldsItsFieldsInOrder)
{
    EXPECT_EQ(
        TextOf(Example()),
        R"({"time":"2026-11-22T01:45:32.123Z","request":"5f3a9c01","user":"installer","role":"administrator",)"
        R"("peer":"192.0.2.7","change":"SetRuleConfig","profile":3,)"
        R"("plugin":"com.varlo.rule.loiteringdetection","result":"done"})");
}

TEST(AuditEntryTest, FieldsThatDoNotApplyAreLeftOut)
{
    EXPECT_EQ(
        TextOf({.change = "AlgorithmControl", .command = 0}),
        R"({"time":"2026-11-22T01:45:32.123Z","change":"AlgorithmControl","command":0,"result":"done"})");
    AuditEntry refusal{.change = "access", .result = AuditResult::Refused, .reason = "No.", .count = 12};
    refusal.caller = Caller{"", Role::Administrator, "::1", ""};
    EXPECT_EQ(
        TextOf(refusal),
        R"({"time":"2026-11-22T01:45:32.123Z","peer":"::1","change":"access","result":"refused","reason":"No.","count":12})");
}

TEST(AuditEntryTest, TimesBefore1970AreWhole)
{
    EXPECT_NE(FormatAudit(Example(), std::chrono::system_clock::time_point(-1ms))
                  .text.find("1969-12-31T23:59:59.999Z"),
              std::string::npos);
}

TEST(AuditEntryTest, RolesAndResultsHaveTheirWords)
{
    AuditEntry entry = Example();
    for (const auto& [role, word] : {std::pair(Role::Viewer, "viewer"), {Role::Operator, "operator"}})
    {
        entry.caller->role = role;
        EXPECT_EQ(Json::parse(TextOf(entry))["role"], word);
    }
    entry.result = AuditResult::Failed;
    EXPECT_EQ(Json::parse(TextOf(entry))["result"], "failed");
}

TEST(AuditEntryTest, NoNameBreaksALine)
{
    const std::string awkward = std::string("a\nb\"c\\\r\u2028\u2029\u0085\x7f") + '\0' + "ü";
    EXPECT_TRUE(IsOneLine(TextOf(Named(awkward))));
    EXPECT_EQ(RoundTrip(awkward), awkward);
}

TEST(AuditEntryTest, LettersStayReadable)
{
    EXPECT_NE(TextOf(Named("Müller \U0001F600")).find("Müller \U0001F600"), std::string::npos);
}

TEST(AuditEntryTest, BytesThatAreNoTextAreReplaced)
{
    EXPECT_EQ(RoundTrip("a\xff\xc3"), "a\ufffd\ufffd");
    EXPECT_EQ(RoundTrip("\xed\xa0\x80").find('\xed'), std::string::npos);
}

TEST(AuditEntryTest, LongTextsAreCutBetweenCharacters)
{
    EXPECT_EQ(RoundTrip(std::string(255, 'x')).size(), 255U);
    EXPECT_EQ(RoundTrip(std::string(1024, 'x')).size(), 1024U);
    EXPECT_EQ(RoundTrip(std::string(100000, 'x')).size(), 1024U);
    EXPECT_EQ(RoundTrip(std::string(1023, 'x') + "ü"), std::string(1023, 'x'));
    EXPECT_LE(TextOf(Named(std::string(100000, '\x80'))).size(), 8000U);
}

TEST(AuditEntryTest, DrawnNamesComeBackFromOneLineOfJson)
{
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < Drawn("DRAWN_NAMES", 2000); ++round)
    {
        std::string name;
        for (std::size_t length = random() % 255; name.size() < length;)
            name += DrawCharacter(random);
        const AuditLine line = FormatAudit(Named(name), kTime);
        ASSERT_TRUE(IsOneLine(line.text)) << line.text;
        const Json json = Json::parse(line.text);
        ASSERT_EQ(name.empty() ? "" : json["user"].get<std::string>(), name);
        for (const auto& [key, value] : line.fields)
        {
            if (key == "user")
            {
                ASSERT_EQ(value, name);
            }
        }
    }
}
