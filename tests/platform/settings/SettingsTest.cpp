#include <analytics/Settings.h>

#include <analytics/Faults.h>

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

using analytics::AnalyticsFault;
using analytics::Settings;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class SettingsTest : public PlatformTest
{
};

TEST_F(SettingsTest, GivesTheTextOfTheFirstMatchWithoutWhiteSpaceAround)
{
    Write("settings.xml", "<settings><backlog>\n\t 17 \r\n</backlog><a><backlog>18</backlog></a></settings>");
    EXPECT_EQ(Settings::GetValue("//backlog"), "17");
}

TEST_F(SettingsTest, GivesAnEmptyTextForAMissingKeyAndForABrokenOne)
{
    EXPECT_EQ(Settings::GetValue("//backlog"), "");
    EXPECT_EQ(ErrorsOf([] { EXPECT_EQ(Settings::GetValue("//backlog["), ""); }), "");
}

TEST_F(SettingsTest, GivesAllTextsInDocumentOrder)
{
    Write("settings.xml", "<settings><nonUserConfigurableRules><id> b </id><id>a</id><id>b</id>"
                          "</nonUserConfigurableRules></settings>");
    EXPECT_THAT(Settings::GetValues("//nonUserConfigurableRules/id"), ElementsAre("b", "a", "b"));
    EXPECT_THAT(Settings::GetValues("//none"), IsEmpty());
}

TEST_F(SettingsTest, ReadsAttributesAndCounts)
{
    Write("settings.xml", "<settings><server><endpoint name='x' port='8080'/></server></settings>");
    EXPECT_EQ(Settings::GetValue("//server/endpoint[@name='x']/@port"), "8080");
    EXPECT_EQ(Settings::GetValue("count(//endpoint)"), "1");
}

TEST_F(SettingsTest, GivesTheDefaultForAMissingNumber)
{
    EXPECT_EQ(Settings::GetValue("//maxSelectableRules/numberOfCount", 2), 2);
}

struct NumberCase
{
    const char* text;
    int number; // with the default -7
};
void PrintTo(const NumberCase& row, std::ostream* stream) { *stream << '"' << row.text << '"'; }

class SettingsNumberTest : public SettingsTest, public testing::WithParamInterface<NumberCase>
{
};

TEST_P(SettingsNumberTest, ReadsDecimalIntegersAndNothingElse)
{
    Write("settings.xml", std::string("<settings><n>") + GetParam().text + "</n></settings>");
    ErrorsOf([] { EXPECT_EQ(Settings::GetValue("//n", -7), GetParam().number); });
}

INSTANTIATE_TEST_SUITE_P(Texts, SettingsNumberTest,
                         testing::Values(NumberCase{"0", 0}, NumberCase{" 12\n", 12}, NumberCase{"-3", -3},
                                         NumberCase{"+5", 5}, NumberCase{"2147483647", 2147483647},
                                         NumberCase{"2147483648", -7}, NumberCase{"", -7},
                                         NumberCase{"abc", -7}, NumberCase{"12a", -7}, NumberCase{"1 2", -7},
                                         NumberCase{"0x10", -7}, NumberCase{"+-5", -7}, NumberCase{"1.0", -7},
                                         NumberCase{"-", -7}));

TEST_F(SettingsTest, TakesTheDefaultForAHundredThousandDigits)
{
    const std::string digits(100000, '9');
    Write("settings.xml", "<settings><maxResource>" + digits + "</maxResource></settings>");
    EXPECT_EQ(Settings::GetValue("//maxResource"), digits);
    const std::string said = ErrorsOf(
        []
        {
            EXPECT_EQ(Settings::GetValue("//maxResource", 3), 3);
            EXPECT_EQ(Settings::MaxResource(), 100u);
        });
    EXPECT_LT(said.size(), 500u);
}

TEST_F(SettingsTest, SaysOnceThatAValueIsNoNumber)
{
    Write("settings.xml", "<settings><n>many</n></settings>");
    const std::string said = ErrorsOf(
        []
        {
            Settings::GetValue("//n", 1);
            Settings::GetValue("//n", 1);
        });
    EXPECT_EQ(said, Path("settings.xml") +
                        ": the value of //n, \"many\", isn't a whole number in range; 1 is used.\n");
}

TEST_F(SettingsTest, HasTheResourceBudgetOfTheFileOr100)
{
    EXPECT_EQ(Settings::MaxResource(), 100u);
    Write("settings.xml", "<settings><maxResource>4000000000</maxResource></settings>");
    EXPECT_EQ(Settings::MaxResource(), 4000000000u);
}

TEST_F(SettingsTest, KnowsTheFormOfEngineDocuments)
{
    EXPECT_EQ(Settings::OnvifPrefix(), "tt");
    EXPECT_EQ(Settings::RulesTag(), "RuleEngineConfiguration");
    EXPECT_EQ(Settings::EnginePattern(), "com.varlo.engine.");
}

TEST_F(SettingsTest, DeliveredSettingsHoldTheDefaults)
{
    m_configuration.settingsFile = PLATFORM_DATA "/settings.xml";
    Configure();
    EXPECT_EQ(Settings::GetValue("//backlog"), "128");
    EXPECT_EQ(Settings::MaxResource(), 100u);
    EXPECT_EQ(Settings::GetValue("//maxSelectableRules/numberOfCount", 0), 2);
    EXPECT_EQ(Settings::GetValue("//maxSelectableRules/countOnlyConfigurable", 7), 0);
    EXPECT_THAT(Settings::GetValues("//nonUserConfigurableRules/id"), IsEmpty());
    EXPECT_EQ(Settings::GetValue("//server/maxRequestBytes", 0), 4194304);
}

// ---- Changes of the file ----

TEST_F(SettingsTest, ShowsEveryChangeAtTheNextCall)
{
    // In place, with the same size and faster than a file system's clock runs.
    for (int i = 10; i < 99; ++i)
    {
        Write("settings.xml", "<settings><n>" + std::to_string(i) + "</n></settings>");
        ASSERT_EQ(Settings::GetValue("//n", 0), i);
    }
}

TEST_F(SettingsTest, ShowsAReplacedFileEvenWithAnOldTime)
{
    Write("settings.xml", "<settings><n>1</n></settings>");
    struct stat before = {};
    ASSERT_EQ(stat(Path("settings.xml").c_str(), &before), 0);
    EXPECT_EQ(Settings::GetValue("//n", 0), 1);
    Write("other.xml", "<settings><n>2</n></settings>");
    const timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, Path("other.xml").c_str(), times, 0), 0);
    std::filesystem::rename(Path("other.xml"), Path("settings.xml"));
    EXPECT_EQ(Settings::GetValue("//n", 0), 2);
}

TEST_F(SettingsTest, FollowsALinkThatIsTurned)
{
    Write("a.xml", "<settings><n>1</n></settings>");
    Write("b.xml", "<settings><n>2</n></settings>");
    std::filesystem::remove(Path("settings.xml"));
    std::filesystem::create_symlink("a.xml", Path("settings.xml"));
    EXPECT_EQ(Settings::GetValue("//n", 0), 1);
    std::filesystem::create_symlink("b.xml", Path("link"));
    std::filesystem::rename(Path("link"), Path("settings.xml"));
    EXPECT_EQ(Settings::GetValue("//n", 0), 2);
}

TEST_F(SettingsTest, KeepsTheLastGoodSettingsWhileTheFileIsBrokenAndSaysSoOnce)
{
    Write("settings.xml", "<settings><n>1</n></settings>");
    EXPECT_EQ(Settings::GetValue("//n", 0), 1);
    const std::string said = ErrorsOf(
        [this]
        {
            Replace("settings.xml", "<settings>\n<n>2</m>\n</settings>");
            for (int i = 0; i < 5; ++i)
                EXPECT_EQ(Settings::GetValue("//n", 0), 1);
        });
    EXPECT_THAT(said, StartsWith(Path("settings.xml") + ":2: "));
    EXPECT_THAT(said, HasSubstr("stay in force"));
    EXPECT_EQ(std::ranges::count(said, '\n'), 1);
    EXPECT_THAT(ErrorsOf(
                    [this]
                    {
                        Replace("settings.xml", "<settings>\n\n<n>3</m></settings>");
                        EXPECT_EQ(Settings::GetValue("//n", 0), 1);
                    }),
                StartsWith(Path("settings.xml") + ":3: "));
    // The first fault again, a moment later.
    EXPECT_EQ(ErrorsOf(
                  [this]
                  {
                      Replace("settings.xml", "<settings>\n<n>2</m>\n</settings>");
                      EXPECT_EQ(Settings::GetValue("//n", 0), 1);
                  }),
              "");
    EXPECT_EQ(ErrorsOf(
                  [this]
                  {
                      Replace("settings.xml", "<settings><n>4</n></settings>");
                      EXPECT_EQ(Settings::GetValue("//n", 0), 4);
                  }),
              "");
}

TEST_F(SettingsTest, KeepsTheLastGoodSettingsWhileTheFileIsMissingAndSaysSoOnce)
{
    for (int i = 1; i < 4; ++i)
    {
        Write("settings.xml", "<settings><n>" + std::to_string(i) + "</n></settings>");
        EXPECT_EQ(Settings::GetValue("//n", 0), i);
        const std::string said = ErrorsOf(
            [&]
            {
                std::filesystem::remove(Path("settings.xml"));
                EXPECT_EQ(Settings::GetValue("//n", 0), i);
                EXPECT_EQ(Settings::GetValue("//n", 0), i);
            });
        // The same again within a few seconds is no news.
        EXPECT_EQ(std::ranges::count(said, '\n'), i == 1 ? 1 : 0);
        EXPECT_TRUE(i > 1 || said.starts_with(Path("settings.xml") + ": "));
    }
}

TEST_F(SettingsTest, ServesManyThreadsWhileTheFileChanges)
{
    std::atomic<bool> done = false;
    std::vector<std::thread> readers;
    for (int i = 0; i < 8; ++i)
        readers.emplace_back(
            [&]
            {
                while (!done)
                {
                    const auto values = Settings::GetValues("//v");
                    EXPECT_TRUE(values.empty() || (values.size() == 2 && values[0] == values[1]));
                }
            });
    for (int i = 0; i < 200; ++i)
        Replace("settings.xml", "<s><v>" + std::to_string(i) + "</v><v>" + std::to_string(i) + "</v></s>");
    done = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(Settings::GetValue("//v", 0), 199);
}

// ---- Configure ----

TEST_F(SettingsTest, ConfigureNamesAMissingFile)
{
    m_configuration.settingsFile = Path("none.xml");
    EXPECT_EQ(FaultOf<AnalyticsFault>([this] { Configure(); }),
              Path("none.xml") +
                  ": the settings document can't be read: No such file or directory; "
                  "put one there that the service may read, or name another one with --settings");
}

TEST_F(SettingsTest, ConfigureNamesFileAndLineOfABrokenOneAlsoIfItOnceWasGood)
{
    EXPECT_EQ(Settings::GetValue("//x"), "");
    Write("settings.xml", "<settings>\n\n</setting>");
    EXPECT_THAT(FaultOf<AnalyticsFault>([this] { Configure(); }), StartsWith(Path("settings.xml") + ":3: "));
}

TEST_F(SettingsTest, ServesOnceTheFileThatWasNeverGoodIs)
{
    Write("settings.xml", "<settings>");
    EXPECT_THROW(Configure(), AnalyticsFault);
    EXPECT_THROW(Settings::GetValue("//n"), AnalyticsFault);
    Write("settings.xml", "<settings><n>1</n></settings>");
    EXPECT_EQ(Settings::GetValue("//n"), "1");
}

TEST_F(SettingsTest, RefusesWhatIsNoFileAndWhatIsTooLarge)
{
    m_configuration.settingsFile = Path("plugins");
    EXPECT_THAT(FaultOf<AnalyticsFault>([this] { Configure(); }), HasSubstr("it isn't a regular file"));
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    m_configuration.settingsFile = Path("pipe");
    EXPECT_THAT(FaultOf<AnalyticsFault>([this] { Configure(); }), HasSubstr("it isn't a regular file"));
    Write("large.xml", "<settings>" + std::string(1024 * 1024, ' ') + "</settings>");
    m_configuration.settingsFile = Path("large.xml");
    EXPECT_THAT(FaultOf<AnalyticsFault>([this] { Configure(); }), HasSubstr("larger than 1048576 bytes"));
}

TEST(SettingsDeathTest, UsesTheInstalledFileWhenNeverConfigured)
{
    const std::string installed = analytics::platform::Configuration().settingsFile;
    EXPECT_EQ(installed, "/etc/varlo-analytics/settings.xml");
    // In a process of its own, since others have been configured by now. The file isn't there on a
    // machine that only builds; either way it is the one that is read or named.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto ask = [&]
    {
        const std::string fault = FaultOf<AnalyticsFault>([] { Settings::GetValue("//backlog"); });
        std::_Exit(fault.starts_with(installed) == std::filesystem::exists(installed) ? 1 : 0);
    };
    EXPECT_EXIT(ask(), testing::ExitedWithCode(0), "");
}
