// Engine documents, as the store may hold them, into every reader: each behavior's and the scene's, and
// that which puts a profile together.

#include "Conversion.h"
#include "Expect.h"
#include "Oracle.h"

#include "store/ProfileDocument.h"

#include <analytics/Document.h>

namespace
{
constexpr char kScene[] = "com.varlo.engine.sceneanalyzer";

// The profile whose behaviors and engines all have `document` as their configuration.
std::string Merged(const std::string& document, bool active)
{
    std::vector<analytics::StoredConfiguration> parts;
    for (const analytics::Manifest& behavior : fuzzing::Behaviors())
    {
        parts.push_back({analytics::RulePlugin, behavior.Id(), document, active});
        for (const std::string& engine : behavior.Dependencies())
            parts.push_back({analytics::EnginePlugin, engine, document});
    }
    return analytics::MergeProfile(parts);
}

bool Names(const std::string& document, const analytics::Manifest& behavior)
{
    return document.find(behavior.Id()) != std::string::npos ||
           document.find(behavior.Dependencies().at(0)) != std::string::npos;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string document = fuzzing::Text(data, size);
    fuzzing::CompareReading(document);
    const fuzzing::Stored merged = {Merged(document, size % 2 == 0), {}};
    fuzzing::Expect(merged.profile.empty() || analytics::Document().ParseString(merged.profile),
                    "a profile can be read", merged.profile);
    // The readers of behaviors that the document doesn't name find nothing in it.
    for (const analytics::Manifest& behavior : fuzzing::Behaviors())
    {
        if (!Names(document, behavior))
            continue;
        fuzzing::CheckRead(behavior.Id(), {document, {}}, false);
        fuzzing::CheckRead(behavior.Id(), merged, false);
    }
    fuzzing::CheckRead(kScene, {document, {}}, false);
    return 0;
}
