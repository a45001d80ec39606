// Behavior documents of clients into the converters: those of the behaviors that the document names.

#include "Conversion.h"
#include "Expect.h"
#include "Oracle.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string document = fuzzing::Text(data, size);
    fuzzing::CompareReading(document);
    for (const analytics::Manifest& behavior : fuzzing::Behaviors())
    {
        if (document.find(behavior.Id()) == std::string::npos &&
            document.find(behavior.Alias()) == std::string::npos)
            continue;
        const fuzzing::Stored stored = fuzzing::Store(behavior.Id(), document);
        if (!stored.profile.empty())
            fuzzing::CheckRead(behavior.Id(), stored);
    }
    return 0;
}
