// What changes of the store the analytics engine is shown, and what that costs.

#include <analytics/PluginManager.h>

#include <ProfileDocConverter.h>

#include "feed/EngineFeed.h"
#include "files/File.h"
#include "platform/store/StoreFixture.h"

#include <map>
#include <set>
#include <sstream>
#include <sys/inotify.h>

using analytics::platform::SequenceIn;

namespace
{
constexpr const char* kLoitering = "com.varlo.rule.loiteringdetection";

std::string RuleDocument(const std::string& name)
{
    return "<tt:VideoAnalyticsConfiguration xmlns:tt=\"http://www.onvif.org/ver10/schema\">"
           "<tt:RuleEngineConfiguration><tt:Rule Name=\"" +
           name + "\" Type=\"" + kLoitering +
           "\"><tt:Parameters/></tt:Rule></tt:RuleEngineConfiguration></tt:VideoAnalyticsConfiguration>";
}

std::string TextOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return (std::stringstream() << stream.rdbuf()).str();
}
} // namespace

class ShownToEngineTest : public StoreFixture
{
  protected:
    ShownToEngineTest() { StartWith(Path("engine")); }

    void StartWith(const std::string& folder)
    {
        m_manager.reset();
        m_configuration.engineFolder = folder;
        m_configuration.pluginFolder = PLATFORM_DATA "/plugins";
        Configure();
        Open();
    }
    int CreateActive()
    {
        const int profile = Create();
        m_manager->ExecuteProfile(profile);
        return profile;
    }
    std::string Document() const { return TextOf(Path("engine/active.xml")); }
    std::int64_t Sequence() const { return SequenceIn(TextOf(Path("engine/state.json"))); }

    // What happens in the folder and to the files in it, from now on.
    void Watch()
    {
        m_watch = analytics::platform::FileHandle(inotify_init1(IN_NONBLOCK));
        inotify_add_watch(m_watch.Get(), Path("engine").c_str(), IN_ALL_EVENTS);
    }
    // How often each file was renamed into place; "(else)" counts what came of anything else but writing
    // them.
    std::map<std::string, int> Renames() const
    {
        std::map<std::string, int> renames;
        alignas(inotify_event) char buffer[65536];
        const ssize_t size = read(m_watch.Get(), buffer, sizeof buffer);
        for (ssize_t at = 0; at < size;)
        {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            at += static_cast<ssize_t>(sizeof *event) + event->len;
            const std::string name = event->len > 0 ? event->name : "";
            if (event->mask & IN_MOVED_TO)
                ++renames[name];
            else if (!name.ends_with(".tmp"))
                ++renames["(else)"];
        }
        return renames;
    }

    analytics::platform::FileHandle m_watch;
};

using Renamed = std::map<std::string, int>;

TEST_F(ShownToEngineTest, ChangesElsewhereTouchNoFile)
{
    CreateActive();
    const int other = Create("other");
    Watch();
    Create("third");
    m_manager->SetRuleConfig(other, kLoitering, RuleDocument("a"), true);
    m_manager->SetProfileName(other, "renamed");
    m_manager->DeleteRule(other, kLoitering);
    m_manager->StopProfile(other);
    m_manager->DeleteProfile(other);
    EXPECT_EQ(Renames(), Renamed{});
}

TEST_F(ShownToEngineTest, AChangeThatMakesNoDifferenceTouchesNoFile)
{
    const int profile = CreateActive();
    m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("a"), true);
    const std::int64_t before = Sequence();
    Watch();
    m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("a"), true);
    m_manager->SetRuleConfig(profile, kLoitering,
                             RuleDocument("a") + "<!-- that is in no merged document -->", true);
    m_manager->ExecuteProfile(profile);
    m_manager->AlgorithmControl(1);
    m_manager->AlgorithmControl(2);
    m_manager->SetProfileName(profile, "profile");
    EXPECT_THROW(m_manager->DeleteRule(profile, "com.varlo.rule.other"), analytics::ClientFault);
    EXPECT_EQ(Renames(), Renamed{});
    EXPECT_EQ(Sequence(), before);
    EXPECT_TRUE(m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("b"), true));
    EXPECT_EQ(Sequence(), before + 1) << "what made no difference has not counted";
}

TEST_F(ShownToEngineTest, AChangeCostsOneRenameForEachFileThatDiffers)
{
    const int profile = CreateActive();
    Watch();
    m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("a"), true);
    EXPECT_EQ(Renames(), (Renamed{{"active.xml", 1}, {"state.json", 1}}));
    m_manager->AlgorithmControl(0);
    EXPECT_EQ(Renames(), (Renamed{{"state.json", 1}}));
    m_manager->SetProfileName(profile, "renamed");
    EXPECT_EQ(Renames(), (Renamed{{"state.json", 1}}));
}

TEST_F(ShownToEngineTest, TheNumberGoesOnWhereverTheFolderIs)
{
    const int profile = CreateActive();
    m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("a"), true);
    const std::int64_t before = Sequence();
    StartWith("");
    m_manager->SetRuleConfig(profile, kLoitering, RuleDocument("without a feed"), true);
    StartWith(Path("engine"));
    EXPECT_EQ(Sequence(), before + 1);
    EXPECT_THAT(Document(), testing::HasSubstr("without a feed"));
    std::filesystem::remove_all(Path("engine"));
    Reopen();
    EXPECT_EQ(Sequence(), before + 1);
}

TEST_F(ShownToEngineTest, AnsweredChangesOfManyThreadsAreShown)
{
    const int profile = CreateActive();
    std::vector<std::jthread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back(
            [&, id = std::string("com.varlo.rule.") + std::to_string(number)]
            {
                for (int round = 0; round < 10; ++round)
                {
                    const std::string name = id + "/" + std::to_string(round) + "/";
                    std::string document = RuleDocument(name);
                    document.replace(document.find(kLoitering), std::strlen(kLoitering), id);
                    m_manager->SetRuleConfig(profile, id, document, true);
                    EXPECT_THAT(Document(), testing::HasSubstr(name));
                }
            });
    threads.clear();
    EXPECT_EQ(Document(), m_manager->GetConfig(profile));
}

// Every document that the conversion's tests know, behind the other behaviors of one profile.
TEST_F(ShownToEngineTest, TheDocumentIsTheMergedOneAndReadsBackAsEachBehavior)
{
    const int profile = CreateActive();
    analytics::ManifestArray manifests;
    analytics::PluginManager().GetRulesManifests(manifests);
    std::set<std::string> read;
    for (const auto& file : std::filesystem::recursive_directory_iterator(TEST_DATA))
    {
        const std::string family = file.path().parent_path().parent_path().filename();
        if (file.path().filename() != "behavior.xml" || family == "sceneanalyzer")
            continue;
        SCOPED_TRACE(file.path().string());
        const auto manifest = std::ranges::find_if(manifests, [&](const auto& m)
                                                   { return m.Id().find(family) != std::string::npos; });
        ASSERT_NE(manifest, manifests.end());
        const std::unique_ptr<profile_conversion::ProfileDocConverter> converter(
            profile_conversion::Factory::CreateConverter(manifest->Id()));
        profile_conversion::ProfileParameters parameters;
        const std::string rule = converter->FromVarloToOnvif(TextOf(file.path()), parameters);
        ASSERT_NE(rule, "");
        std::string engine;
        std::string config;
        if (converter->AdditionalComponent(engine, config) && !config.empty())
            m_manager->SetEngineConfig(profile, engine, config);
        m_manager->SetRuleConfig(profile, manifest->Id(), rule, parameters.Active());
        const std::string document = Document();
        ASSERT_EQ(document, m_manager->GetConfig(profile));
        const std::string back = converter->FromOnvifToVarlo(document, {});
        ASSERT_NE(back, "");
        // What came back means the same: it leads to the same rule.
        profile_conversion::ProfileParameters again;
        EXPECT_EQ(converter->FromVarloToOnvif(back, again), rule);
        EXPECT_EQ(again.Active(), parameters.Active());
        read.insert(family);
    }
    EXPECT_EQ(read.size(), manifests.size());
}
