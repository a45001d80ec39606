#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// What every fuzz program has in common: how bytes become text, and how it says that something which
// must hold doesn't.
namespace fuzzing
{

inline std::string Text(const std::uint8_t* data, std::size_t size)
{
    return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

// Ends the process where `holds` is false: a finding. `evidence` is shown.
inline void Expect(bool holds, const char* promise, std::string_view evidence = {})
{
    if (holds)
        return;
    std::fprintf(stderr, "It doesn't hold that %s\n", promise);
    std::fwrite(evidence.data(), 1, evidence.size(), stderr);
    std::fputc('\n', stderr);
    std::abort();
}

} // namespace fuzzing
