// Manifests of plug-ins: read or refused with a reason.

#include "Expect.h"

#include "plugins/PluginFolder.h"
#include "xml/Reader.h"

#include <algorithm>
#include <array>

namespace
{
using fuzzing::Expect;

constexpr std::array kTypes = {"source", "engine", "rule", "sink"};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = fuzzing::Text(data, size);
    analytics::xml::SyntaxError error;
    const auto fields = analytics::platform::ReadManifest(text, error);
    Expect(fields || !error.reason.empty(), "a refusal has a reason", text);
    if (!fields)
        return 0;
    Expect(!fields->id.empty(), "a plug-in has an identifier", text);
    Expect(std::ranges::find(kTypes, fields->type) != kTypes.end(), "a plug-in is of one of four types",
           text);
    for (const std::string& dependency : fields->dependencies)
        Expect(!dependency.empty(), "a dependency has an identifier", text);
    return 0;
}
