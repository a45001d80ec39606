#pragma once

#include <benchmark/benchmark.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <malloc.h>

#include <ctime>
#include <string>

// The time of a conversion beside that of libxml2 alone, both measured in turn in the same loop.
namespace measure
{

// The host's settings of the allocator (host/main.cpp) that tell on one thread.
inline void AllocateLikeTheHost()
{
    mallopt(M_MXFAST, 0);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024);
}

// What the calling thread has computed so far, in seconds: unlike the time of day, nobody else on the
// machine moves it.
inline double Computed()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

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
    if (convert().empty())
    {
        state.SkipWithError("the document doesn't convert");
        return 0;
    }
    double converting = 0;
    double bare = 0;
    for (auto _ : state)
    {
        const double begin = Computed();
        benchmark::DoNotOptimize(convert());
        const double between = Computed();
        benchmark::DoNotOptimize(Bare(document));
        converting += between - begin;
        bare += Computed() - between;
        state.SetIterationTime(between - begin);
    }
    const double ratio = converting / bare;
    state.counters["ratio"] = ratio;
    state.counters["bytes"] = static_cast<double>(document.size());
    return ratio;
}

} // namespace measure
