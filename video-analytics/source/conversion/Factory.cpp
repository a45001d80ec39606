#include <ProfileDocConverter.h>

#include <AbandonedObjectConverter.h>
#include <AdaptiveMotionConverter.h>
#include <CameraSabotageConverter.h>
#include <DirectionalMotionConverter.h>
#include <LoiteringConverter.h>
#include <ObjectCountingConverter.h>
#include <ObjectRemovalConverter.h>
#include <SceneAnalyzerConverter.h>
#include <StoppedVehicleConverter.h>

namespace profile_conversion
{
namespace
{
struct Entry
{
    bool (*accepts)(const std::string& id);
    ProfileDocConverter* (*make)();
};

template <class Converter>
constexpr Entry For()
{
    return {Converter::CanConvert, []() -> ProfileDocConverter* { return new Converter; }};
}

// The first that accepts the identifier is taken. The order is fixed: the first ones need no look-up.
constexpr Entry kConverters[] = {
    For<AdaptiveMotionConverter>(), For<ObjectCountingConverter>(),  For<SceneAnalyzerConverter>(),
    For<CameraSabotageConverter>(), For<LoiteringConverter>(),       For<DirectionalMotionConverter>(),
    For<ObjectRemovalConverter>(),  For<AbandonedObjectConverter>(), For<StoppedVehicleConverter>(),
};
} // namespace

ProfileDocConverter* Factory::CreateConverter(const std::string& id)
{
    for (const Entry& entry : kConverters)
        if (entry.accepts(id))
            return entry.make();
    return nullptr;
}

} // namespace profile_conversion
