// What reading a document costs by path queries: a document of 1 to 10,000 zones is parsed, and of every
// zone a name and four vertices are asked for, each with a query from the zone's node.
//
// The column "ratio" is the time to that of libxml2 alone, parsing and serialising the same document, both
// measured in turn in the same loop. "growth" is the ratio to that with ten zones: it must not grow.

#include "Measure.h"

#include <analytics/Document.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using analytics::Document;
using analytics::DocumentNode;

constexpr int kFew = 10;

std::string ZonesDocument(int zones)
{
    std::string text = "<behavior><rois>";
    for (int i = 0; i < zones; ++i)
        text += "<roi><name>Zone " + std::to_string(i) +
                "</name><vertices><vertex><x>117</x><y>42</y></vertex><vertex><x>300</x><y>42</y></vertex>"
                "<vertex><x>300</x><y>200</y></vertex><vertex><x>117</x><y>200</y></vertex></vertices></roi>";
    return text + "</rois></behavior>";
}

using Nodes = std::vector<std::unique_ptr<DocumentNode>>;

Nodes Select(Document& document, const std::string& query, DocumentNode* context)
{
    Nodes nodes;
    for (DocumentNode* const node : document.SelectNodes(query, context))
        nodes.emplace_back(node);
    return nodes;
}

// The names, and the sum of all coordinates behind them.
std::string ReadZones(const std::string& text)
{
    Document document;
    document.ParseString(text);
    std::string names;
    int sum = 0;
    for (const auto& zone : Select(document, "/behavior/rois/roi", nullptr))
    {
        names += document.GetSingleValue("name", zone.get());
        for (const auto& vertex : Select(document, "vertices/vertex", zone.get()))
            sum +=
                document.GetSingleValue("x", 0, vertex.get()) + document.GetSingleValue("y", 0, vertex.get());
    }
    return names + std::to_string(sum);
}

void Queries(benchmark::State& state)
{
    static double withFew = 0;
    const auto zones = static_cast<int>(state.range(0));
    const std::string text = ZonesDocument(zones);
    const double ratio = measure::Ratio(
        state, [&] { return ReadZones(text); }, text);
    if (zones == kFew)
        withFew = ratio;
    if (zones > kFew && withFew > 0)
        state.counters["growth"] = ratio / withFew;
}

BENCHMARK(Queries)->ArgName("zones")->RangeMultiplier(10)->Range(1, 10000)->UseManualTime()->Unit(
    benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    measure::AllocateLikeTheHost();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
