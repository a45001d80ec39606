#include <StoppedVehicleConfig.h>

#include "frame/StillObjectForms.h"

namespace profile_conversion::frame
{
using stoppedvehicle::Config;

template <>
struct BehaviorForm<Config> : StillObjectBehaviorForm<Config, Bounds{3, 1000}, Bounds{3, 300}>
{
    static inline const std::string kVarloDocTemplate = StillObjectTemplate("StoppedVehicle");
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
