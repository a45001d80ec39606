// What the profile store costs: lists of 10 to 100,000 profiles, the active rules of a profile, the merged
// document of a profile with one to eight behaviors, and durable changes by one to sixteen threads, whose
// column "per_change" is the time of the disk and the processor for each; and changes of the active profile
// and of another one with and without the files for the analytics engine.

#include <analytics/Platform.h>
#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>

#include <SQLiteCpp/SQLiteCpp.h>
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace
{

using analytics::ProfileManager;

std::filesystem::path Folder()
{
    return std::filesystem::temp_directory_path() / ("varlo-benchmark-" + std::to_string(getpid()));
}

// A store of its own for each number of profiles.
void UseStore(int profiles, bool showEngine = false)
{
    analytics::platform::Configuration configuration;
    configuration.settingsFile = PLATFORM_DATA "/settings.xml";
    configuration.pluginFolder = PLATFORM_DATA "/plugins";
    configuration.stateFolder = Folder() / std::to_string(profiles);
    if (showEngine)
        configuration.engineFolder = Folder() / "engine";
    analytics::platform::Configure(configuration);
}

std::unique_ptr<ProfileManager> Filled(int profiles, bool showEngine = false)
{
    UseStore(profiles, showEngine);
    auto manager = std::make_unique<ProfileManager>();
    std::vector<analytics::ProfileSummary> list;
    manager->GetProfileList(list);
    if (!list.empty())
        return manager;
    manager.reset();
    SQLite::Database(Folder() / std::to_string(profiles) / "profiles.db", SQLITE_OPEN_READWRITE)
        .exec("WITH RECURSIVE n(i) AS (VALUES (1) UNION ALL SELECT i + 1 FROM n WHERE i < " +
              std::to_string(profiles) + ") INSERT INTO profile (name) SELECT 'Profile ' || i FROM n");
    return std::make_unique<ProfileManager>();
}

std::string DefaultOf(const std::string& rule)
{
    return analytics::PluginManager().GetDefaultConfiguration(rule);
}

void AddRules(ProfileManager& manager, int profile, int count)
{
    analytics::ManifestArray rules;
    analytics::PluginManager().GetRulesManifests(rules);
    for (int i = 0; i < count; ++i)
    {
        const std::string id = rules[static_cast<std::size_t>(i)].Id();
        manager.SetRuleConfig(profile, id, DefaultOf(id), true);
    }
}

void List(benchmark::State& state)
{
    const auto manager = Filled(static_cast<int>(state.range(0)));
    for (auto _ : state)
    {
        std::vector<analytics::ProfileSummary> list;
        benchmark::DoNotOptimize(manager->GetProfileList(list));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ActiveRules(benchmark::State& state)
{
    const auto manager = Filled(10);
    const auto rules = static_cast<int>(state.range(0));
    const int profile = rules + 1; // of its own
    AddRules(*manager, profile, rules);
    for (auto _ : state)
    {
        std::vector<std::string> ids;
        benchmark::DoNotOptimize(manager->GetActiveRules(profile, ids));
    }
}

void MergedDocument(benchmark::State& state)
{
    const auto manager = Filled(10);
    const auto rules = static_cast<int>(state.range(0));
    const int profile = rules + 1; // of its own
    AddRules(*manager, profile, rules);
    for (auto _ : state)
        benchmark::DoNotOptimize(manager->GetConfig(profile));
}

// The document differs each time: what doesn't change isn't written.
void Change(benchmark::State& state)
{
    static std::unique_ptr<ProfileManager> manager;
    if (state.thread_index() == 0)
        manager = Filled(64);
    const std::string id = "com.varlo.rule.loiteringdetection";
    const std::string document = DefaultOf(id);
    int number = 0;
    for (auto _ : state)
        manager->SetRuleConfig(1 + state.thread_index(), id,
                               document + "<!--" + std::to_string(++number) + "-->", true);
    state.counters["per_change"] =
        benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    if (state.thread_index() == 0)
        manager.reset();
}

// A profile with eight behaviors, of which one gets another zone each time.
void ShownChange(benchmark::State& state)
{
    const auto manager = Filled(64, state.range(0) != 0);
    AddRules(*manager, 1, 8);
    manager->ExecuteProfile(state.range(1) != 0 ? 1 : 2);
    const std::string id = "com.varlo.rule.loiteringdetection";
    int number = 0;
    for (auto _ : state)
        manager->SetRuleConfig(1, id,
                               "<tt:Rules xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:Rule Name=\"" +
                                   std::to_string(++number) + "\" Type=\"" + id + "\"/></tt:Rules>",
                               true);
}

BENCHMARK(List)->RangeMultiplier(10)->Range(10, 100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(ActiveRules)->Arg(0)->Arg(1)->Arg(8)->Unit(benchmark::kMicrosecond);
BENCHMARK(MergedDocument)->Arg(1)->Arg(4)->Arg(8)->Unit(benchmark::kMicrosecond);
BENCHMARK(ShownChange)
    ->ArgNames({"feed", "active"})
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(Change)->ThreadRange(1, 16)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    UseStore(0);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(Folder());
}
