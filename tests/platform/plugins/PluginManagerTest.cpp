#include <analytics/PluginManager.h>

#include <analytics/Faults.h>

#include "platform/plugins/PluginFixture.h"

#include <gmock/gmock.h>

using analytics::AnalyticsFault;
using analytics::Manifest;
using analytics::ManifestArray;
using analytics::PluginManager;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{
Manifest ManifestOf(const std::string& id)
{
    Manifest manifest;
    PluginManager().GetManifest(manifest, id);
    return manifest;
}

std::vector<std::string> IdsOf(const ManifestArray& manifests)
{
    std::vector<std::string> ids;
    for (const Manifest& manifest : manifests)
        ids.push_back(manifest.Id());
    return ids;
}

std::vector<std::string> RuleIds()
{
    ManifestArray manifests;
    PluginManager().GetRulesManifests(manifests);
    return IdsOf(manifests);
}
} // namespace

class PluginManagerTest : public PluginFixture
{
};

TEST_F(PluginManagerTest, FindsAPluginByEitherIdentifier)
{
    WritePlugin("p", "com.x.rule.p", R"(
        <name> Loitering &amp; more </name>
        <resourceRequirement>20</resourceRequirement>
        <fixedCameraPosition>1</fixedCameraPosition>
        <supportsAdvancedMode>1</supportsAdvancedMode>
        <dependencies><id> e2 </id><id/><id>e1</id></dependencies>)");
    for (const char* id : {"com.x.rule.p", "urn:com.x.rule.p"})
    {
        const Manifest manifest = ManifestOf(id);
        EXPECT_TRUE(manifest.Valid());
        EXPECT_EQ(manifest.Id(), "com.x.rule.p");
        EXPECT_EQ(manifest.Alias(), "urn:com.x.rule.p");
        EXPECT_EQ(manifest.Name(), "Loitering & more");
        EXPECT_EQ(manifest.Type(), "rule");
        EXPECT_EQ(manifest.Home(), Path("plugins/p"));
        EXPECT_EQ(manifest.ResourceRequirement(), 20u);
        EXPECT_TRUE(manifest.FixedCameraPosition());
        EXPECT_TRUE(manifest.SupportsAdvancedMode());
        EXPECT_THAT(manifest.Dependencies(), ElementsAre("e2", "e1"));
    }
}

TEST_F(PluginManagerTest, LeavesTheManifestAsItCameForAnUnknownIdentifier)
{
    WritePlugin("p", "p");
    EXPECT_FALSE(ManifestOf("q").Valid());
    EXPECT_FALSE(ManifestOf("P").Valid());
    EXPECT_FALSE(ManifestOf("").Valid());
    Manifest manifest = ManifestOf("p");
    PluginManager().GetManifest(manifest, "q");
    EXPECT_EQ(manifest.Id(), "p");
}

TEST_F(PluginManagerTest, AnEmptyIdentifierFindsNoPluginWithoutAlias)
{
    Write("plugins/p/manifest.xml", "<manifest type='rule'><id>p</id></manifest>");
    Write("plugins/q/manifest.xml", "<manifest type='rule'><id>q</id><alias> </alias></manifest>");
    EXPECT_FALSE(ManifestOf("").Valid());
    EXPECT_THAT(RuleIds(), ElementsAre("p", "q"));
}

TEST_F(PluginManagerTest, MissingNumbersFlagsAndListsAreEmpty)
{
    WritePlugin("p", "p");
    const Manifest manifest = ManifestOf("p");
    EXPECT_EQ(manifest.Name(), "");
    EXPECT_EQ(manifest.ResourceRequirement(), 0u);
    EXPECT_FALSE(manifest.FixedCameraPosition());
    EXPECT_FALSE(manifest.SupportsAdvancedMode());
    EXPECT_THAT(manifest.Dependencies(), IsEmpty());
}

TEST_F(PluginManagerTest, ListsByKindInBytewiseOrderOfFolders)
{
    WritePlugin("b", "1");
    WritePlugin("a", "2");
    WritePlugin("B", "3");
    WritePlugin("\xc3\xa4", "4");
    WritePlugin("10", "5");
    WritePlugin("9", "6");
    WritePlugin("c", "e", "", "engine");
    WritePlugin("d", "so", "", "source");
    WritePlugin("e", "si", "", "sink");
    Write("plugins/README.md", "no plug-in");
    EXPECT_THAT(RuleIds(), ElementsAre("5", "6", "3", "2", "1", "4"));
    const auto listed = [](analytics::PluginType type)
    {
        ManifestArray manifests;
        PluginManager().GetManifests(manifests, type);
        return IdsOf(manifests);
    };
    EXPECT_THAT(listed(analytics::RulePlugin), ElementsAre("5", "6", "3", "2", "1", "4"));
    EXPECT_THAT(listed(analytics::EnginePlugin), ElementsAre("e"));
    EXPECT_THAT(listed(analytics::MediaSourcePlugin), ElementsAre("so"));
    EXPECT_THAT(listed(analytics::EventSinkPlugin), ElementsAre("si"));
    EXPECT_EQ(listed(analytics::AllPlugin).size(), 9u);
    ManifestArray manifests;
    PluginManager().GetManifests(manifests);
    EXPECT_EQ(manifests.size(), 9u);
    PluginManager().GetEnginesManifests(manifests);
    EXPECT_EQ(manifests.size(), 10u); // appended
    EXPECT_EQ(manifests.back().Id(), "e");
}

TEST_F(PluginManagerTest, GivesDefaultConfigurationsAsTheyStand)
{
    WritePlugin("p", "p");
    EXPECT_EQ(PluginManager().GetDefaultConfiguration("p"), "");
    EXPECT_EQ(PluginManager().GetVarloDefaultConfiguration("p"), "");
    Write("plugins/p/engine.xml", "<?xml version='1.0'?>\n<engine/>\n");
    Write("plugins/p/behavior.xml", " <behavior/>");
    EXPECT_EQ(PluginManager().GetDefaultConfiguration("urn:p"), "<?xml version='1.0'?>\n<engine/>\n");
    EXPECT_EQ(PluginManager().GetVarloDefaultConfiguration("p"), " <behavior/>");
    EXPECT_EQ(PluginManager().GetVarloDefaultConfiguration("q"), "");
    EXPECT_EQ(PluginManager().GetDefaultConfiguration("q"), "");
}

TEST_F(PluginManagerTest, SaysWhatIsWrongWithADefaultConfigurationToWhoAsksForIt)
{
    WritePlugin("p", "p");
    Write("plugins/p/engine.xml", std::string(1024 * 1024 + 1, ' '));
    EXPECT_TRUE(ManifestOf("p").Valid());
    EXPECT_EQ(FaultOf<AnalyticsFault>([] { PluginManager().GetDefaultConfiguration("p"); }),
              "The default configuration " + Path("plugins/p/engine.xml") +
                  " can't be read: it is larger than 1048576 bytes");
}

TEST_F(PluginManagerTest, NamesOnceWhatIsWrongWithAPluginThatIsTaken)
{
    WritePlugin("p", "p", "\n<prise>3</prise>");
    Write("plugins/p/engine.xml", "<a>\n</b>");
    std::filesystem::create_directory(Path("plugins/p/behavior.xml"));
    EXPECT_EQ(
        ErrorsOf(
            [this]
            {
                EXPECT_THAT(RuleIds(), ElementsAre("p"));
                WritePlugin("q", "q"); // read again, but not said again
                EXPECT_THAT(RuleIds(), ElementsAre("p", "q"));
            }),
        Path("plugins/p/manifest.xml") + ":2: <prise> isn't known here; correct its name or remove it\n" +
            Path("plugins/p/engine.xml") + ":2: the default configuration can't be used: mismatched tag\n" +
            "The default configuration " + Path("plugins/p/behavior.xml") +
            " can't be read: it isn't a regular file\n");
}

TEST_F(PluginManagerTest, KnowsTheFolderTheModuleAndTheCost)
{
    WritePlugin("p", "p", "<resourceRequirement>4294967295</resourceRequirement>");
    EXPECT_EQ(PluginManager().PluginHome("urn:p"), Path("plugins/p"));
    EXPECT_EQ(PluginManager().GetFactory("p"), "");
    Write("plugins/p/factory.so", "");
    EXPECT_EQ(PluginManager().GetFactory("p"), Path("plugins/p/factory.so"));
    EXPECT_EQ(PluginManager().GetResourceRequirement("p"), 4294967295u);
    EXPECT_EQ(PluginManager().PluginHome("q"), "");
    EXPECT_EQ(PluginManager().GetFactory("q"), "");
    EXPECT_EQ(PluginManager().GetResourceRequirement("q"), 0u);
}

TEST_F(PluginManagerTest, CopiesOutliveTheManagerAndThePlugin)
{
    WritePlugin("p", "p", "<dependencies><id>e</id></dependencies>");
    ManifestArray manifests;
    PluginManager().GetRulesManifests(manifests);
    std::filesystem::remove_all(Path("plugins/p"));
    EXPECT_THAT(RuleIds(), IsEmpty());
    ASSERT_EQ(manifests.size(), 1u);
    EXPECT_EQ(manifests[0].Alias(), "urn:p");
    EXPECT_THAT(manifests[0].Dependencies(), ElementsAre("e"));
}

TEST_F(PluginManagerTest, AMissingFolderHoldsNothingAndIsNamedOnce)
{
    m_configuration.pluginFolder = Path("none");
    EXPECT_NO_THROW(Configure());
    EXPECT_EQ(ErrorsOf(
                  []
                  {
                      EXPECT_THAT(RuleIds(), IsEmpty());
                      EXPECT_FALSE(ManifestOf("p").Valid());
                  }),
              Path("none") + ": there is no such folder, and so there are no plug-ins.\n");
    Write("none/p/manifest.xml", ManifestText("p"));
    EXPECT_THAT(RuleIds(), ElementsAre("p"));
}

// ---- Broken manifests ----

struct BrokenManifest
{
    const char* text;
    int line;
    const char* reason;
};
void PrintTo(const BrokenManifest& row, std::ostream* stream) { *stream << row.reason; }

class BrokenManifestTest : public PluginManagerTest, public testing::WithParamInterface<BrokenManifest>
{
};

TEST_P(BrokenManifestTest, IsLeftOutAndNamedOnce)
{
    WritePlugin("a", "a");
    Write("plugins/b/manifest.xml", GetParam().text);
    WritePlugin("c", "c");
    const std::string said = ErrorsOf(
        [this]
        {
            EXPECT_THAT(RuleIds(), ElementsAre("a", "c"));
            EXPECT_THAT(RuleIds(), ElementsAre("a", "c"));
            WritePlugin("d", "d"); // read again, but not said again
            EXPECT_THAT(RuleIds(), ElementsAre("a", "c", "d"));
        });
    EXPECT_EQ(said.rfind(Path("plugins/b/manifest.xml") + ":" + std::to_string(GetParam().line) + ": ", 0),
              0u)
        << said;
    EXPECT_THAT(said, HasSubstr(GetParam().reason));
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BrokenManifestTest,
    testing::Values(
        BrokenManifest{"", 1, "the document is empty"},
        BrokenManifest{"<manifest type='rule'>\n<id>b</id>", 2,
                       "the document ends before its root element does"},
        BrokenManifest{"\n<plugin type='rule'><id>b</id></plugin>", 2, "the root element is plugin"},
        BrokenManifest{"<manifest><id>b</id></manifest>", 1, "the type is \"\""},
        BrokenManifest{"<manifest type='Rule'><id>b</id></manifest>", 1, "the type is \"Rule\""},
        BrokenManifest{"<manifest type='rule'/>", 1, "the id is missing or empty"},
        BrokenManifest{"<manifest type='rule'><id> </id></manifest>", 1, "the id is missing or empty"},
        BrokenManifest{"<manifest type='rule'><dependencies><id>b</id></dependencies></manifest>", 1,
                       "the id is missing or empty"},
        BrokenManifest{
            "<manifest type='rule'><id>b</id>\n<resourceRequirement>much</resourceRequirement></manifest>", 2,
            "resourceRequirement is \"much\" and has to be a whole number from 0 to 4294967295"},
        BrokenManifest{
            "<manifest "
            "type='rule'><id>b</id>\n\n<resourceRequirement>4294967296</resourceRequirement></manifest>",
            3, "resourceRequirement is \"4294967296\""},
        BrokenManifest{
            "<manifest type='rule'><id>b</id><resourceRequirement>-1</resourceRequirement></manifest>", 1,
            "resourceRequirement is \"-1\""},
        BrokenManifest{"<manifest type='rule'><id>b</id><resourceRequirement/></manifest>", 1,
                       "resourceRequirement is \"\""},
        BrokenManifest{
            "<manifest type='rule'><id>b</id><fixedCameraPosition>2</fixedCameraPosition></manifest>", 1,
            "fixedCameraPosition is \"2\" and has to be a whole number from 0 to 1"},
        BrokenManifest{
            "<manifest type='rule'><id>b</id><supportsAdvancedMode>yes</supportsAdvancedMode></manifest>", 1,
            "supportsAdvancedMode is \"yes\""},
        BrokenManifest{"<!DOCTYPE manifest [<!ENTITY e 'b'>]><manifest type='rule'><id>&e;</id></manifest>",
                       1, "a document type declaration is not accepted"}));

TEST_F(PluginManagerTest, AFolderWithoutManifestIsNamedOnce)
{
    std::filesystem::create_directory(Path("plugins/p"));
    EXPECT_EQ(ErrorsOf(
                  []
                  {
                      EXPECT_THAT(RuleIds(), IsEmpty());
                      EXPECT_THAT(RuleIds(), IsEmpty());
                  }),
              Path("plugins/p/manifest.xml") +
                  ": the manifest can't be read: No such file or directory. The plug-in is left out.\n");
}

TEST_F(PluginManagerTest, ABrokenManifestWithOtherContentIsNamedAgain)
{
    const auto said = [this](const std::string& text)
    {
        return ErrorsOf(
            [&]
            {
                Replace("plugins/p/manifest.xml", text);
                EXPECT_THAT(RuleIds(), IsEmpty());
            });
    };
    EXPECT_NE(said("<manifest/>"), "");
    EXPECT_EQ(said("<manifest/>"), "");
    EXPECT_NE(said("<manifest />"), "");
}

TEST_F(PluginManagerTest, OfTwoWithTheSameIdentifierTheFirstFolderWins)
{
    WritePlugin("a", "x", "<name>first</name>");
    WritePlugin("b", "x", "<name>second</name>");
    Write("plugins/c/manifest.xml", "<manifest type='rule'><id>urn:x</id></manifest>");
    WritePlugin("d", "y");
    const std::string said = ErrorsOf(
        []
        {
            EXPECT_THAT(RuleIds(), ElementsAre("x", "y"));
            EXPECT_EQ(ManifestOf("urn:x").Name(), "first");
        });
    EXPECT_EQ(said, Path("plugins/b") + ": the identifier x belongs to the plug-in in " + Path("plugins/a") +
                        ". This plug-in is left out.\n" + Path("plugins/c") +
                        ": the identifier urn:x belongs to the plug-in in " + Path("plugins/a") +
                        ". This plug-in is left out.\n");
    std::filesystem::remove_all(Path("plugins/a"));
    EXPECT_EQ(ManifestOf("x").Name(), "second");
}
