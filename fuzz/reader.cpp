// The bytes of a connection into the server's reader of requests: whole, byte by byte and in pieces of
// which the last bytes of the input tell the length. Whatever the pieces, the verdict is the same.

#include "Expect.h"

#include "net/RequestReader.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <functional>

namespace
{
using fuzzing::Expect;
using tarno::osa::RequestReader;
using Outcome = RequestReader::Outcome;

constexpr std::array<std::size_t, 3> kLimits = {60, 600, 4'194'304};

struct Verdict
{
    Outcome outcome = Outcome::NeedMore;
    std::string request;
    std::string authorization;
};

Verdict Read(std::string_view text, std::size_t limit, const std::function<std::size_t()>& piece)
{
    RequestReader reader(limit);
    Verdict verdict;
    bool continued = false;
    while (!text.empty() && verdict.outcome == Outcome::NeedMore)
    {
        const std::string_view next = text.substr(0, std::max<std::size_t>(piece(), 1));
        text.remove_prefix(next.size());
        verdict.outcome = reader.Take(next);
        const bool now = reader.TakeContinue();
        Expect(!(now && continued), "a client is told to continue once at most");
        continued = continued || now;
        Expect(reader.Held() <= 2 * limit + 200'000, "a reader holds no more than was sent");
    }
    if (verdict.outcome == Outcome::Complete)
    {
        verdict.authorization = reader.Authorization();
        verdict.request = reader.TakeRequest();
    }
    return verdict;
}

std::string Name(Outcome outcome)
{
    return outcome == Outcome::Complete ? "complete" : outcome == Outcome::Refused ? "refused" : "unfinished";
}

// What can't become a request any more may be found out sooner or later: a wrong field only when the
// header ends if it comes in pieces, a quoted text of a chunk that runs over its line in pieces sooner.
bool Agree(const Verdict& whole, const Verdict& pieces)
{
    return (whole.outcome == Outcome::Complete) == (pieces.outcome == Outcome::Complete) &&
           whole.request == pieces.request && whole.authorization == pieces.authorization;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const std::size_t limit = input.PickValueInArray(kLimits);
    std::array<std::uint8_t, 4> sizes{};
    for (std::uint8_t& length : sizes)
        length = input.ConsumeIntegral<std::uint8_t>();
    const std::string text = input.ConsumeRemainingBytesAsString();

    const Verdict whole = Read(text, limit, [&] { return text.size(); });
    const Verdict bytes = Read(text, limit, [] { return 1; });
    std::size_t turn = 0;
    const Verdict pieces = Read(text, limit, [&] { return sizes[turn++ % sizes.size()]; });
    for (const Verdict* verdict : {&bytes, &pieces})
        Expect(Agree(whole, *verdict), "the pieces don't change the verdict",
               Name(whole.outcome) + " and in pieces " + Name(verdict->outcome) + "\n" + text);
    return 0;
}
