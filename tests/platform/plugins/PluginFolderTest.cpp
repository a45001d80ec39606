#include "plugins/PluginFolder.h"

#include <analytics/Faults.h>

#include "platform/plugins/PluginFixture.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <atomic>
#include <thread>

using analytics::platform::Plugin;
using analytics::platform::PluginFolder;
using testing::ElementsAre;
using testing::IsEmpty;

// Every change shows at the very next call, with the kernel's help and without.
class PluginFolderTest : public PluginFixture, public testing::WithParamInterface<bool>
{
  protected:
    std::vector<std::string> Ids()
    {
        std::vector<std::string> ids;
        const auto catalog = m_plugins.Current();
        for (const Plugin& plugin : catalog->All())
            ids.push_back(plugin.manifest.Id());
        return ids;
    }

    PluginFolder m_plugins{Path("plugins"), GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Ways, PluginFolderTest, testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "Stamps" : "Kernel"; });

TEST_P(PluginFolderTest, ShowsPluginsThatComeAndGo)
{
    EXPECT_THAT(Ids(), IsEmpty());
    for (int i = 0; i < 20; ++i)
    {
        WritePlugin("p", "p");
        ASSERT_THAT(Ids(), ElementsAre("p"));
        std::filesystem::rename(Path("plugins/p"), Path("plugins/q"));
        ASSERT_THAT(Ids(), ElementsAre("p"));
        ASSERT_EQ(m_plugins.Current()->Find("p")->manifest.Home(), Path("plugins/q"));
        std::filesystem::rename(Path("plugins/q"), Path("away"));
        ASSERT_THAT(Ids(), IsEmpty());
        std::filesystem::remove_all(Path("away"));
    }
}

TEST_P(PluginFolderTest, ShowsChangesOfEveryFile)
{
    WritePlugin("p", "p");
    for (int i = 10; i < 99; ++i)
    {
        const std::string id = "p" + std::to_string(i);
        const std::string text = '<' + id + "/>";
        const auto write = [&](const char* file, const std::string& content)
        { i % 2 == 0 ? Write(file, content) : Replace(file, content); };
        write("plugins/p/manifest.xml", ManifestText(id));
        ASSERT_THAT(Ids(), ElementsAre(id));
        write("plugins/p/engine.xml", text);
        ASSERT_EQ(m_plugins.Current()->All()[0].engineDefault.text, text);
        write("plugins/p/behavior.xml", text);
        ASSERT_EQ(m_plugins.Current()->All()[0].clientsDefault.text, text);
    }
    std::filesystem::remove(Path("plugins/p/engine.xml"));
    EXPECT_EQ(m_plugins.Current()->All()[0].engineDefault.text, "");
}

TEST_P(PluginFolderTest, SeesABrokenManifestComeAndGoWhileTheFileIsOpen)
{
    WritePlugin("p", "p");
    EXPECT_THAT(Ids(), ElementsAre("p"));
    const std::string text = ManifestText("q");
    ErrorsOf(
        [&]
        {
            std::ofstream file(Path("plugins/p/manifest.xml"));
            file << text.substr(0, 20) << std::flush;
            EXPECT_THAT(Ids(), IsEmpty());
            file << text.substr(20) << std::flush;
            EXPECT_THAT(Ids(), ElementsAre("q"));
        });
}

TEST_P(PluginFolderTest, SurvivesThatTheFolderIsRemovedAndMadeAgain)
{
    ErrorsOf(
        [this]
        {
            for (int i = 0; i < 5; ++i)
            {
                WritePlugin("p", "p" + std::to_string(i));
                ASSERT_THAT(Ids(), ElementsAre("p" + std::to_string(i)));
                std::filesystem::remove_all(Path("plugins"));
                ASSERT_THAT(Ids(), IsEmpty());
                std::filesystem::create_directory(Path("plugins"));
                ASSERT_THAT(Ids(), IsEmpty());
            }
        });
}

TEST_P(PluginFolderTest, SurvivesThatTheFolderIsReplaced)
{
    WritePlugin("p", "old");
    Write("next/p/manifest.xml", ManifestText("new"));
    EXPECT_THAT(Ids(), ElementsAre("old"));
    std::filesystem::rename(Path("plugins"), Path("before"));
    std::filesystem::rename(Path("next"), Path("plugins"));
    EXPECT_THAT(Ids(), ElementsAre("new"));
    Write("plugins/q/manifest.xml", ManifestText("q"));
    EXPECT_THAT(Ids(), ElementsAre("new", "q"));
}

TEST_P(PluginFolderTest, FollowsLinksToFoldersAndFiles)
{
    Write("store/1/manifest.xml", ManifestText("one"));
    Write("store/2/manifest.xml", ManifestText("two"));
    std::filesystem::create_directory_symlink("../store/1", Path("plugins/p"));
    EXPECT_THAT(Ids(), ElementsAre("one"));
    Write("store/1/manifest.xml", ManifestText("ONE"));
    EXPECT_THAT(Ids(), ElementsAre("ONE"));
    // The target is exchanged, the link isn't touched.
    std::filesystem::rename(Path("store/1"), Path("store/0"));
    ErrorsOf([this] { EXPECT_THAT(Ids(), IsEmpty()); });
    std::filesystem::rename(Path("store/2"), Path("store/1"));
    EXPECT_THAT(Ids(), ElementsAre("two"));

    Write("store/a.xml", ManifestText("a"));
    Write("store/b.xml", ManifestText("b"));
    std::filesystem::create_directory(Path("plugins/q"));
    std::filesystem::create_symlink("../../store/a.xml", Path("plugins/q/manifest.xml"));
    EXPECT_THAT(Ids(), ElementsAre("two", "a"));
    Write("store/a.xml", ManifestText("A"));
    EXPECT_THAT(Ids(), ElementsAre("two", "A"));
    std::filesystem::rename(Path("store/b.xml"), Path("store/a.xml"));
    EXPECT_THAT(Ids(), ElementsAre("two", "b"));
}

TEST_P(PluginFolderTest, SeesChangesBehindMoreEventsThanTheKernelKeeps)
{
    WritePlugin("p", "p");
    EXPECT_THAT(Ids(), ElementsAre("p"));
    for (int i = 0; i < 20000; ++i)
    {
        Write("plugins/p/noise", "");
        std::filesystem::remove(Path("plugins/p/noise"));
    }
    WritePlugin("p", "q");
    EXPECT_THAT(Ids(), ElementsAre("q"));
    WritePlugin("p", "r");
    EXPECT_THAT(Ids(), ElementsAre("r"));
}

TEST_P(PluginFolderTest, SharesOneReadingUntilSomethingChanges)
{
    if (GetParam())
        return; // by stamps, a young folder is read again
    WritePlugin("p", "p");
    const auto first = m_plugins.Current();
    EXPECT_EQ(m_plugins.Current(), first);
    WritePlugin("p", "q");
    EXPECT_NE(m_plugins.Current(), first);
    EXPECT_NE(first->Find("p"), nullptr); // what was handed out stays
}

TEST_P(PluginFolderTest, AShortageOfFilesIsNoMissingPlugin)
{
    // The sanitizers need files for each type that they meet: they meet them all here.
    for (const char* id : {"a", "b"})
    {
        WritePlugin("p", id);
        EXPECT_THAT(Ids(), ElementsAre(id));
    }
    WritePlugin("p", "p");
    PluginFolder& plugins = m_plugins;
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none = {3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);

    std::exception_ptr thrown;
    try
    {
        plugins.Current();
    }
    catch (...)
    {
        thrown = std::current_exception();
    }
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_NE(thrown, nullptr);
    EXPECT_THAT(FaultOf<analytics::AnalyticsFault>([&] { std::rethrow_exception(thrown); }),
                testing::HasSubstr("Too many open files"));
    EXPECT_THAT(Ids(), ElementsAre("p"));
}

TEST_P(PluginFolderTest, ServesManyThreadsWhileTheFolderChanges)
{
    WritePlugin("a", "a");
    std::atomic<bool> done = false;
    std::vector<std::thread> readers;
    for (int i = 0; i < 8; ++i)
        readers.emplace_back(
            [&]
            {
                while (!done)
                    EXPECT_NE(m_plugins.Current()->Find("urn:a"), nullptr);
            });
    for (int i = 0; i < 40; ++i)
    {
        Write("stage/manifest.xml", ManifestText("b"));
        std::filesystem::rename(Path("stage"), Path("plugins/b"));
        EXPECT_THAT(Ids(), ElementsAre("a", "b"));
        std::filesystem::rename(Path("plugins/b"), Path("stage"));
        EXPECT_THAT(Ids(), ElementsAre("a"));
    }
    done = true;
    for (std::thread& reader : readers)
        reader.join();
}
