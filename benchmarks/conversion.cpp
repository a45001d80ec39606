// What the conversion of a behavior costs, all families in both directions, with 1, 4, 10, 1,000 and 2,000
// zones of four vertices.
//
// The column "ratio" is the time of the conversion to that of libxml2 alone, parsing and serialising the
// client's document: both are measured in turn in the same loop. "growth" is the ratio of 2,000 zones to
// that of 10: it must not grow much beyond 1. A behavior without zones has the same document in every row.
// "heap" is the most that a conversion has allocated at a time, to the size of the document that it converts,
// "heap_client" to that of the client's document.

#include "Heap.h"
#include "Measure.h"

#include <ProfileDocConverter.h>

#include <analytics/Platform.h>
#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>

#include <filesystem>
#include <map>
#include <memory>

#include <unistd.h>

namespace
{
using profile_conversion::ProfileDocConverter;
using profile_conversion::ProfileParameters;

constexpr int kZones[] = {1, 4, 10, 1000, 2000};
constexpr int kFewZones = 10;
constexpr int kManyZones = 2000; // about as many as a profile may hold

std::unique_ptr<ProfileDocConverter> Converter(const std::string& id)
{
    return std::unique_ptr<ProfileDocConverter>(profile_conversion::Factory::CreateConverter(id));
}

void Replace(std::string& text, const std::string& from, const std::string& to)
{
    if (const std::size_t at = text.find(from); at != std::string::npos)
        text.replace(at, from.size(), to);
}

std::string Repeated(int count, const std::string& before, const std::string& after)
{
    std::string text;
    for (int i = 1; i <= count; ++i)
        text += before + std::to_string(i) + after;
    return text;
}

// The plug-in's default, active, with as many zones; as many exclude zones too if its engine takes them.
std::string ClientDocument(const std::string& id, int zones)
{
    const std::string vertices =
        "<vertices><vertex><x>117</x><y>42</y></vertex><vertex><x>300</x><y>42</y></vertex>"
        "<vertex><x>300</x><y>200</y></vertex><vertex><x>117</x><y>200</y></vertex></vertices>";
    std::string document = analytics::PluginManager().GetVarloDefaultConfiguration(id);
    Replace(document, "active=\"0\"", "active=\"1\"");
    Replace(
        document, "<rois/>",
        "<rois>" +
            Repeated(zones, "<roi><name>Zone ",
                     "</name><enable>1</enable><alarmSeverity>2</alarmSeverity><dwellTime>30</dwellTime>" +
                         vertices + "</roi>") +
            "</rois>");
    if (document.find("<filters>") < document.find("<excludeZones/>"))
        Replace(document, "<excludeZones/>",
                "<excludeZones>" +
                    Repeated(zones, "<excludeZone><name>Exclude ", "</name>" + vertices + "</excludeZone>") +
                    "</excludeZones>");
    return document;
}

// The engine document of a profile that holds the behavior alone.
std::string StoredDocument(const std::string& id, const std::string& document)
{
    analytics::ProfileManager profiles;
    int profile = 0;
    profiles.CreateProfile(profile, "benchmark");
    const auto converter = Converter(id);
    ProfileParameters params;
    const std::string rule = converter->FromVarloToOnvif(document, params);
    std::string engineId;
    std::string engine;
    if (converter->AdditionalComponent(engineId, engine))
        profiles.SetEngineConfig(profile, engineId, engine);
    profiles.SetRuleConfig(profile, id, rule, params.Active());
    const std::string stored = profiles.GetConfig(profile);
    profiles.DeleteProfile(profile);
    return stored;
}

void ReportGrowth(benchmark::State& state, const std::string& row, int zones, double ratio)
{
    static std::map<std::string, double> withFewZones;
    if (zones == kFewZones)
        withFewZones[row] = ratio;
    if (zones == kManyZones && withFewZones[row] > 0)
        state.counters["growth"] = ratio / withFewZones[row];
}

template <class Convert>
void Measure(benchmark::State& state, const std::string& row, int zones, Convert convert,
             const std::string& document, const std::string& converted)
{
    ReportGrowth(state, row, zones, measure::Ratio(state, convert, document));
    heap::Begin();
    benchmark::DoNotOptimize(convert());
    const auto peak = static_cast<double>(heap::Peak());
    state.counters["heap"] = peak / static_cast<double>(converted.size());
    state.counters["heap_client"] = peak / static_cast<double>(document.size());
}

void ToEngine(benchmark::State& state, const std::string& id, int zones)
{
    const std::string document = ClientDocument(id, zones);
    // Each time it is another, since a text that was read before may be read faster.
    std::string next;
    int number = 0;
    const auto convert = [&]
    {
        next = document + "<!--" + std::to_string(number++) + "-->";
        ProfileParameters params;
        return Converter(id)->FromVarloToOnvif(next, params);
    };
    Measure(state, id + "/to engine", zones, convert, document, document);
}

void ToClient(benchmark::State& state, const std::string& id, int zones)
{
    const std::string document = ClientDocument(id, zones);
    const std::string stored = StoredDocument(id, document);
    const auto convert = [&] { return Converter(id)->FromOnvifToVarlo(stored, {}); };
    Measure(state, id + "/to client", zones, convert, document, stored);
}

void Register(const std::string& id)
{
    const std::string behavior = id.substr(id.rfind('.') + 1);
    const auto add = [&](const std::string& direction, auto function)
    {
        for (const int zones : kZones)
            benchmark::RegisterBenchmark((behavior + direction + std::to_string(zones)).c_str(), function, id,
                                         zones)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
    };
    add("/to engine/", ToEngine);
    add("/to client/", ToClient);
}

} // namespace

int main(int argc, char** argv)
{
    measure::AllocateLikeTheHost();
    benchmark::Initialize(&argc, argv);
    const std::filesystem::path state =
        std::filesystem::temp_directory_path() / ("varlo-benchmark-" + std::to_string(getpid()));
    analytics::platform::Configuration configuration;
    configuration.settingsFile = PLATFORM_DATA "/settings.xml";
    configuration.pluginFolder = PLATFORM_DATA "/plugins";
    configuration.stateFolder = state;
    analytics::platform::Configure(configuration);
    analytics::ManifestArray behaviors;
    analytics::PluginManager().GetRulesManifests(behaviors);
    for (const analytics::Manifest& behavior : behaviors)
        Register(behavior.Id());
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(state);
}
