// What one availability computation costs, on plug-ins in a folder and on settings in a file, as the
// service has them: 10, 100 and 1,000 (and 8) installed rule plug-ins with two dependencies each, and 0 to 20
// active rules.
//
// The column "unit" is the time for each plug-in x dependency x active rule (where there is none, one),
// as a ratio to that of 10 plug-ins with the same number of active rules: it must not grow.

#include <AvailabilityRequests.h>

#include <analytics/Platform.h>
#include <analytics/ProfileManager.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace
{

constexpr int kDependencies = 2;

std::filesystem::path Folder()
{
    static const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("varlo-benchmark-" + std::to_string(getpid()));
    return folder;
}

std::string RuleId(int number) { return "com.varlo.rule.bench" + std::to_string(number); }

void Write(const std::filesystem::path& file, const std::string& text)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

void Install(int plugins)
{
    const std::filesystem::path folder = Folder() / "plugins";
    std::filesystem::remove_all(folder);
    for (int i = 0; i < plugins; ++i)
        Write(folder / ("rule." + std::to_string(i)) / "manifest.xml",
              "<manifest type=\"rule\"><id>" + RuleId(i) + "</id><alias>urn:" + RuleId(i) +
                  "</alias><name>Bench</name><resourceRequirement>1</resourceRequirement><dependencies>"
                  "<id>com.varlo.engine.a</id><id>com.varlo.engine.b</id></dependencies></manifest>");
    for (const std::string id : {"com.varlo.engine.a", "com.varlo.engine.b"})
        Write(folder / id / "manifest.xml",
              "<manifest type=\"engine\"><id>" + id + "</id><alias>urn:" + id + "</alias></manifest>");
}

void Prepare(int plugins)
{
    static int prepared = 0;
    if (prepared == plugins)
        return;
    prepared = plugins;
    Install(plugins);
    analyticsapi::SoapRequest::Shutdown();
    Write(Folder() / "settings.xml", "<settings><maxResource>100000</maxResource></settings>");
    analytics::platform::Configuration configuration;
    configuration.settingsFile = Folder() / "settings.xml";
    configuration.pluginFolder = Folder() / "plugins";
    configuration.stateFolder = Folder() / "state";
    analytics::platform::Configure(configuration);
    // A file that changed is read at each use for two seconds, in which another change could look the same.
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
}

double gUnitOfTen[64]; // seconds, by the number of active rules

void Availability(benchmark::State& state)
{
    const auto plugins = static_cast<int>(state.range(0));
    const auto active = static_cast<int>(state.range(1));
    Prepare(plugins);
    std::vector<std::string> rules;
    for (int i = 0; i < active; ++i)
        rules.push_back(RuleId(i % plugins));
    const auto begin = std::chrono::steady_clock::now();
    for (auto _ : state)
    {
        const analytics::platform::RequestScope scope; // as the server has it
        analyticsapi::GetBehaviorAvailability2Request request(rules, nullptr);
        benchmark::DoNotOptimize(request.Execute());
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() /
                           static_cast<double>(state.iterations());
    const double unit = seconds / (plugins * kDependencies * std::max(1, active));
    if (plugins == 10)
        gUnitOfTen[active] = unit;
    state.counters["unit"] = unit / gUnitOfTen[active];
}

// All numbers of active rules on one installation before the next is made.
void Arguments(benchmark::internal::Benchmark* benchmark)
{
    for (const int plugins : {10, 8, 100, 1000})
        for (const int active : {0, 1, 2, 5, 10, 20})
            benchmark->Args({plugins, active});
}

BENCHMARK(Availability)->ArgNames({"plugins", "active"})->Apply(Arguments)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    analyticsapi::SoapRequest::Shutdown();
    std::filesystem::remove_all(Folder());
}
