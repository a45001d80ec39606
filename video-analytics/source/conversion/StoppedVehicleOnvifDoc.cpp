#include <StoppedVehicleConfig.h>

#include "frame/StillObjectForms.h"

namespace profile_conversion::frame
{
using stoppedvehicle::Config;

template <>
struct RuleForm<Config> : StillObjectRuleForm<Config>
{
};
template <>
struct EnginePart<Config> : StillObjectEnginePart<Config>
{
};

template class RuleDoc<Config>;
template class EngineRuleDoc<Config>;

} // namespace profile_conversion::frame
