// Scene documents of clients into the scene's converter.

#include "Conversion.h"
#include "Expect.h"
#include "Oracle.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string kScene = "com.varlo.engine.sceneanalyzer";
    fuzzing::CompareReading(fuzzing::Text(data, size));
    fuzzing::Behaviors(); // the plug-ins are there from then on
    const fuzzing::Stored stored = fuzzing::Store(kScene, fuzzing::Text(data, size));
    if (stored.profile.empty())
        return 0;
    fuzzing::CheckRead(kScene, stored);
    const fuzzing::Stored again = fuzzing::Store(kScene, fuzzing::Read(kScene, stored));
    fuzzing::Expect(again.profile == stored.profile, "a scene that comes back is stored as it was",
                    stored.profile + "\n" + again.profile);
    return 0;
}
