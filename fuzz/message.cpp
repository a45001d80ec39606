// HTTP requests into the transport's hooks and the generated dispatcher, with the delivered platform and
// a store behind them. An input is one request or several, with a byte between them that no XML holds.
// Each answer is HTTP with a well-formed envelope, and what is no fault is valid against the schema.

#include "Answer.h"
#include "Expect.h"
#include "Service.h"

namespace
{
constexpr char kBetween = '\x1e';
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzzing::Service service;
    service.Reset();
    const std::string input = fuzzing::Text(data, size);
    for (std::size_t begin = 0; begin <= input.size();)
    {
        const std::size_t end = std::min(input.find(kBetween, begin), input.size());
        const std::string request = input.substr(begin, end - begin);
        fuzzing::CheckAnswer(service.Answer(request), request);
        begin = end + 1;
    }
    return 0;
}
