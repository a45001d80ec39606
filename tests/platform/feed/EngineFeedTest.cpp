#include "feed/EngineFeed.h"

#include "metrics/Metrics.h"
#include "platform/PlatformTest.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <sstream>
#include <sys/stat.h>
#include <thread>

using namespace analytics;
using namespace analytics::platform;
using Json = nlohmann::json;
using testing::HasSubstr;
using namespace std::chrono_literals;

namespace
{
EngineState State(std::int64_t sequence, const std::string& document, const std::string& name = "Car park")
{
    return {sequence, 3, EngineFacts(ProfileSummary(3, name, "", true), true, false, document), document};
}
} // namespace

class EngineFeedTest : public PlatformTest
{
  protected:
    std::string Folder() const { return Path("engine"); }
    std::string InFolder(const std::string& name) const { return Path("engine/" + name); }
    std::string TextOf(const std::string& name) const
    {
        std::ifstream stream(InFolder(name), std::ios::binary);
        if (!stream)
            return "(none)";
        return (std::stringstream() << stream.rdbuf()).str();
    }
    std::int64_t SequenceShown() const { return SequenceIn(TextOf("state.json")); }
    static ino_t FileOf(const std::string& path)
    {
        struct stat status = {};
        return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
    }
    // Waits as long as it takes; a test that never ends is ended by its time limit.
    static void Until(const std::function<bool()>& condition)
    {
        while (!condition())
            std::this_thread::sleep_for(10ms);
    }
    void ExpectRight(const EngineState& state) const
    {
        EXPECT_EQ(TextOf("active.xml"), state.document.empty() ? "(none)" : state.document);
        EXPECT_EQ(TextOf("state.json"), EngineStateText(state));
    }
};

TEST_F(EngineFeedTest, BothFilesShowTheState)
{
    EngineFeed feed(Folder());
    feed.Show(State(7, "<document/>"));
    EXPECT_EQ(TextOf("active.xml"), "<document/>");
    EXPECT_EQ(TextOf("state.json"),
              R"({"sequence":7,"profile":{"id":3,"name":"Car park","preset":""},"analytics":true,)"
              R"("motionDetection":false,"document":{"file":"active.xml","bytes":11,"sha256":)"
              R"("8c92128223d6343d6b07f0cb0bbdaeddd1191862644092e5c8fe606c4285a8d9"}})"
              "\n");
}

TEST_F(EngineFeedTest, WithoutAProfileThereIsNoDocument)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, "<document/>"));
    feed.Show({2, 0, EngineFacts(std::nullopt, false, true, ""), ""});
    EXPECT_EQ(TextOf("active.xml"), "(none)");
    EXPECT_EQ(TextOf("state.json"),
              R"({"sequence":2,"profile":null,"analytics":false,"motionDetection":true,"document":null})"
              "\n");
}

TEST_F(EngineFeedTest, AProfileThatHoldsNothingHasNoDocument)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, ""));
    const Json state = Json::parse(TextOf("state.json"));
    EXPECT_EQ(state["profile"]["id"], 3);
    EXPECT_TRUE(state["document"].is_null());
}

TEST_F(EngineFeedTest, NamesComeBackAsTheyAre)
{
    const std::string name = "\"quoted\"\n\u2028 Müller \\";
    EngineFeed feed(Folder());
    feed.Show(State(1, "", name));
    EXPECT_EQ(Json::parse(TextOf("state.json"))["profile"]["name"], name);
}

TEST_F(EngineFeedTest, TheGroupReadsWhateverTheUmaskIs)
{
    const mode_t umaskBefore = umask(0077);
    EngineFeed feed(Folder());
    feed.Show(State(1, "<document/>"));
    umask(umaskBefore);
    struct stat status = {};
    for (const char* name : {"active.xml", "state.json"})
    {
        ASSERT_EQ(stat(InFolder(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0640U) << name;
    }
    ASSERT_EQ(stat(Folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0750U);
}

TEST_F(EngineFeedTest, OnlyAFileThatDiffersIsWritten)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, "<document/>"));
    const ino_t document = FileOf(InFolder("active.xml"));
    const ino_t state = FileOf(InFolder("state.json"));
    feed.Show(State(1, "<document/>"));
    EXPECT_EQ(FileOf(InFolder("state.json")), state);
    feed.Show(State(2, "<document/>", "renamed"));
    EXPECT_EQ(FileOf(InFolder("active.xml")), document);
    EXPECT_NE(FileOf(InFolder("state.json")), state);
}

TEST_F(EngineFeedTest, AnOlderStateThatComesLaterIsNotShown)
{
    EngineFeed feed(Folder());
    feed.Show(State(5, "<new/>"));
    feed.Show(State(4, "<old/>"));
    ExpectRight(State(5, "<new/>"));
    EXPECT_EQ(feed.LastSequence(), 5);
    EXPECT_EQ(feed.Profile(), 3);
}

TEST_F(EngineFeedTest, FilesThatAreRightSurviveAStart)
{
    EngineFeed(Folder()).Show(State(4, "<document/>"));
    const ino_t document = FileOf(InFolder("active.xml"));
    const ino_t state = FileOf(InFolder("state.json"));
    EngineFeed feed(Folder());
    EXPECT_EQ(feed.LastSequence(), 4);
    feed.Show(State(4, "<document/>"));
    EXPECT_EQ(FileOf(InFolder("active.xml")), document);
    EXPECT_EQ(FileOf(InFolder("state.json")), state);
}

TEST_F(EngineFeedTest, WhateverIsInTheFolderIsPutRight)
{
    Write("elsewhere", "<document/>");
    const std::function<void()> found[] = {
        [&] { Write("engine/active.xml", "<other/>"); },
        [&] { Write("engine/active.xml", ""); },
        [&] { Write("engine/active.xml/inner", "x"); },
        [&] { std::filesystem::create_symlink(Path("elsewhere"), InFolder("active.xml")); },
        [&] { std::filesystem::create_symlink("nowhere", InFolder("state.json")); },
        [&] { Write("engine/state.json", "{\"sequence\":"); },
        [&] { Write("engine/state.json/inner/inner", "x"); },
        [&] { Write("engine/.active.xml.tmp", "<half"); },
        [&] { Write("engine/.state.json.tmp/inner", "x"); },
        [&] { std::filesystem::create_symlink(Path("elsewhere"), InFolder(".state.json.tmp")); },
        [&]
        {
            Write("engine/active.xml", "<document/>");
            std::filesystem::permissions(InFolder("active.xml"), std::filesystem::perms::owner_read);
        },
    };
    for (std::size_t number = 0; number < std::size(found); ++number)
        for (const std::string document : {"<document/>", ""})
        {
            SCOPED_TRACE(std::to_string(number) + " " + document);
            std::filesystem::remove_all(Folder());
            std::filesystem::create_directory(Folder());
            found[number]();
            EngineFeed feed(Folder());
            EXPECT_EQ(ErrorsOf([&] { feed.Show(State(2, document)); }), "");
            ExpectRight(State(2, document));
            EXPECT_FALSE(std::filesystem::exists(InFolder(".active.xml.tmp")));
            EXPECT_FALSE(std::filesystem::exists(InFolder(".state.json.tmp")));
        }
    std::stringstream text;
    text << std::ifstream(Path("elsewhere")).rdbuf();
    EXPECT_EQ(text.str(), "<document/>") << "nothing is written through a link";
}

TEST_F(EngineFeedTest, ASequenceThatIsNoneDoesNotCount)
{
    for (const char* text :
         {"", "7", "[]", "{}", "{\"sequence\":-3}", "{\"sequence\":\"3\"}", "{\"sequence\":1.5}",
          "{\"sequence\":9007199254740993}", "{\"sequence\":99999999999999999999}"})
        EXPECT_EQ(SequenceIn(text), 0) << text;
    EXPECT_EQ(SequenceIn("{\"sequence\":7}"), 7);
}

TEST_F(EngineFeedTest, ARemovedFolderIsMadeAgain)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, "<document/>"));
    std::filesystem::remove_all(Folder());
    feed.Show(State(2, "<document/>", "renamed"));
    ExpectRight(State(2, "<document/>", "renamed"));
}

TEST_F(EngineFeedTest, WhatSomebodyElseRemovesComesBackByItself)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, "<document/>"));
    std::filesystem::remove(InFolder("active.xml"));
    Until([&] { return TextOf("active.xml") == "<document/>"; });
    std::filesystem::remove_all(Folder());
    Until([&] { return SequenceShown() == 1; });
    ExpectRight(State(1, "<document/>"));
}

TEST_F(EngineFeedTest, AFolderThatCannotBeHadIsSaidOnceCountedAndTriedAgain)
{
    Write("engine", "a file is in the way");
    const auto before = gEngineFeedErrors.Value();
    EngineFeed feed(Folder());
    testing::internal::CaptureStderr();
    feed.Show(State(1, "<document/>"));
    feed.Show(State(2, "<document/>"));
    Until([&] { return gEngineFeedErrors.Value() >= before + 3; });
    std::filesystem::remove(Folder());
    Until([&] { return SequenceShown() == 2; });
    ExpectRight(State(2, "<document/>"));
    feed.Show(
        State(3, "<document/>")); // not before the attempt in progress is over, and with it its sentence
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_THAT(errors, HasSubstr(Folder() + " can't be written"));
    EXPECT_THAT(errors, HasSubstr("are right again"));
    EXPECT_EQ(std::ranges::count(errors, '\n'), 2) << errors;
}

TEST_F(EngineFeedTest, AReaderNeverSeesHalfAFile)
{
    const auto document = [](std::int64_t sequence)
    { return "<document>" + std::string(static_cast<std::size_t>(sequence) * 997, 'x') + "</document>"; };
    EngineFeed feed(Folder());
    feed.Show(State(1, document(1)));
    std::atomic<bool> ended = false;
    std::jthread reader(
        [&]
        {
            std::int64_t last = 1;
            while (!ended)
            {
                const std::string text = TextOf("active.xml");
                ASSERT_TRUE(text.starts_with("<document>") && text.ends_with("</document>")) << text.size();
                const std::int64_t sequence = SequenceIn(TextOf("state.json"));
                ASSERT_GE(sequence, last);
                last = sequence;
            }
        });
    for (std::int64_t sequence = 2; sequence <= 100; ++sequence)
        feed.Show(State(sequence, document(sequence)));
    ended = true;
}

TEST_F(EngineFeedTest, TheDocumentComesBeforeTheState)
{
    EngineFeed feed(Folder());
    feed.Show(State(1, "<first/>"));
    std::filesystem::create_directory(InFolder(".active.xml.tmp")); // so that it can't be written
    ErrorsOf([&] { feed.Show(State(2, "<second/>")); });
    EXPECT_EQ(SequenceShown(), 1);
    std::filesystem::remove(InFolder(".active.xml.tmp"));
    Until([&] { return SequenceShown() == 2; });
    ExpectRight(State(2, "<second/>"));
}

TEST_F(EngineFeedTest, OfThreadsThatShowTheLastStateStays)
{
    EngineFeed feed(Folder());
    std::atomic<std::int64_t> next = 0;
    {
        std::vector<std::jthread> threads;
        for (int number = 0; number < 4; ++number)
            threads.emplace_back(
                [&]
                {
                    for (int round = 0; round < 50; ++round)
                    {
                        const std::int64_t sequence = ++next;
                        feed.Show(State(sequence, "<d>" + std::to_string(sequence) + "</d>"));
                        ASSERT_GE(SequenceIn(TextOf("state.json")), sequence);
                    }
                });
    }
    ExpectRight(State(200, "<d>200</d>"));
}

TEST_F(EngineFeedTest, TheOptionWinsOverTheSettings)
{
    EXPECT_EQ(ConfiguredEngineFolder(), "");
    Write("settings.xml", "<settings><engine>run</engine><x><engine>no</engine></x></settings>");
    Configure();
    EXPECT_EQ(ConfiguredEngineFolder(), Path("run"));
    m_configuration.engineFolder = "given";
    Configure();
    EXPECT_EQ(ConfiguredEngineFolder(), "given");
}
