// What the conversion of a scene costs in either direction, with 0, 10 and 1,000 exclude zones of four
// vertices.
//
// The column "ratio" is the time of the conversion to that of libxml2 alone, parsing and serialising the
// same input: both are measured in turn in the same loop.

#include "Measure.h"

#include <SceneAnalyzerConverter.h>

#include <analytics/Platform.h>
#include <analytics/PluginManager.h>

#include <map>
#include <string>

namespace
{

using profile_conversion::ProfileParameters;
using profile_conversion::SceneAnalyzerConverter;

std::string ClientScene(int zones)
{
    const std::string vertex = "<vertex><x>117</x><y>42</y></vertex>";
    std::string list;
    for (int i = 1; i <= zones; ++i)
        list += "<excludeZone><name>Exclude " + std::to_string(i) + "</name><vertices>" + vertex + vertex +
                vertex + vertex + "</vertices></excludeZone>";
    std::string scene =
        analytics::PluginManager().GetVarloDefaultConfiguration("com.varlo.engine.sceneanalyzer");
    const std::string none = "<excludeZones/>";
    return scene.replace(scene.find(none), none.size(), "<excludeZones>" + list + "</excludeZones>");
}

std::string ToEngine(const std::string& scene)
{
    ProfileParameters params;
    return SceneAnalyzerConverter().FromVarloToOnvif(scene, params);
}

std::string ToClient(const std::string& engine)
{
    return SceneAnalyzerConverter().FromOnvifToVarlo(engine, ProfileParameters());
}

// "growth" is the ratio to that with ten zones.
void Measure(benchmark::State& state, std::string (*convert)(const std::string&), const std::string& input)
{
    static std::map<std::string (*)(const std::string&), double> withTenZones;
    const double ratio = measure::Ratio(
        state, [&] { return convert(input); }, input);
    if (state.range(0) == 10)
        withTenZones[convert] = ratio;
    else if (state.range(0) > 10)
        state.counters["growth"] = ratio / withTenZones[convert];
}

void FromClientToEngine(benchmark::State& state)
{
    Measure(state, ToEngine, ClientScene(static_cast<int>(state.range(0))));
}

void FromEngineToClient(benchmark::State& state)
{
    Measure(state, ToClient, ToEngine(ClientScene(static_cast<int>(state.range(0)))));
}

BENCHMARK(FromClientToEngine)
    ->ArgName("zones")
    ->Arg(0)
    ->Arg(10)
    ->Arg(1000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(FromEngineToClient)
    ->ArgName("zones")
    ->Arg(0)
    ->Arg(10)
    ->Arg(1000)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    measure::AllocateLikeTheHost();
    benchmark::Initialize(&argc, argv);
    analytics::platform::Configuration configuration;
    configuration.settingsFile = PLATFORM_DATA "/settings.xml";
    configuration.pluginFolder = PLATFORM_DATA "/plugins";
    analytics::platform::Configure(configuration);
    benchmark::RunSpecifiedBenchmarks();
}
