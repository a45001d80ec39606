#pragma once

#include <benchmark/benchmark.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <malloc.h>

#include <chrono>
#include <string>

// The time of a conversion beside that of libxml2 alone, both measured in turn in the same loop.
namespace measure
{

// The host's setting of the allocator, which tells on large documents.
inline void AllocateLikeTheHost() { mallopt(M_MXFAST, 0); }

// Parses and serialises.
inline int Bare(const std::string& document)
{
    xmlDoc* const doc =
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, 0);
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(doc, &text, &size, "UTF-8");
    xmlFree(text);
    xmlFreeDoc(doc);
    return size;
}

// Times convert(), sets the column "ratio" and returns it; 0 if nothing comes out of the conversion.
// `document` is what libxml2 gets.
template <class Convert>
double Ratio(benchmark::State& state, Convert convert, const std::string& document)
{
    using Clock = std::chrono::steady_clock;
    if (convert().empty())
    {
        state.SkipWithError("the document doesn't convert");
        return 0;
    }
    Clock::duration converting{};
    Clock::duration bare{};
    for (auto _ : state)
    {
        const auto begin = Clock::now();
        benchmark::DoNotOptimize(convert());
        const auto between = Clock::now();
        benchmark::DoNotOptimize(Bare(document));
        converting += between - begin;
        bare += Clock::now() - between;
        state.SetIterationTime(std::chrono::duration<double>(between - begin).count());
    }
    const double ratio =
        std::chrono::duration<double>(converting).count() / std::chrono::duration<double>(bare).count();
    state.counters["ratio"] = ratio;
    state.counters["bytes"] = static_cast<double>(document.size());
    return ratio;
}

} // namespace measure
