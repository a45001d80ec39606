// Golden documents, walked in both directions. A folder tests/data/<family>/<case> holds
//
//   behavior.xml  what a client sends
//   rule.xml      the rule document of it
//   engine.xml    the engine configuration of it, for a family that has one
//   returned.xml  what a client gets back, if that differs from what it sent
//
// White space between tags doesn't count.

#include "Families.h"

#include "store/ProfileDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace conversiontest
{
namespace
{
struct Golden
{
    Family family;
    std::filesystem::path folder;

    std::string Read(const char* name) const { return ReadFile(folder / name); }
};
void PrintTo(const Golden& golden, std::ostream* out) { *out << golden.folder; }

std::vector<Golden> AllGolden()
{
    std::vector<Golden> all;
    for (const Family& family : Families())
        for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA "/" + family.name))
            all.push_back({family, entry.path()});
    std::sort(all.begin(), all.end(), [](const Golden& a, const Golden& b) { return a.folder < b.folder; });
    return all;
}

class GoldenDocuments : public testing::TestWithParam<Golden>
{
  protected:
    Plugins platform;
    const Golden golden = GetParam();
};

TEST_P(GoldenDocuments, ToTheEngine)
{
    const auto converter = Converter(golden.family.id);
    profile_conversion::ProfileParameters params;
    EXPECT_EQ(Canonical(converter->FromVarloToOnvif(golden.Read("behavior.xml"), params)),
              Canonical(golden.Read("rule.xml")));
    std::string id;
    std::string config;
    const std::string engine = golden.Read("engine.xml");
    EXPECT_EQ(converter->AdditionalComponent(id, config), !engine.empty());
    if (engine.empty())
        return;
    EXPECT_EQ(id, golden.family.engine);
    EXPECT_EQ(Canonical(config), Canonical(engine));
}

TEST_P(GoldenDocuments, BackToTheClient)
{
    profile_conversion::ProfileParameters params;
    Converter(golden.family.id)->FromVarloToOnvif(golden.Read("behavior.xml"), params);
    std::vector<analytics::StoredConfiguration> stored = {
        {analytics::RulePlugin, golden.family.id, golden.Read("rule.xml"), params.Active()}};
    if (const std::string engine = golden.Read("engine.xml"); !engine.empty())
        stored.push_back({analytics::EnginePlugin, golden.family.engine, engine});
    const std::string profile = analytics::MergeProfile(stored);
    const std::string returned = golden.Read("returned.xml");
    const std::string expected = returned.empty() ? golden.Read("behavior.xml") : returned;
    EXPECT_EQ(Canonical(Converter(golden.family.id)->FromOnvifToVarlo(profile, {})), Canonical(expected));
}

std::string TestName(const testing::TestParamInfo<Golden>& row)
{
    std::string name = row.param.family.name + "_" + row.param.folder.filename().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, GoldenDocuments, testing::ValuesIn(AllGolden()), TestName);
} // namespace
} // namespace conversiontest
