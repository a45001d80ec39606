#include <AbandonedObjectConfig.h>

#include "frame/StillObjectForms.h"

namespace profile_conversion::frame
{
using abandonedobject::Config;

template <>
struct BehaviorForm<Config> : StillObjectBehaviorForm<Config, Bounds{5, 1000}, Bounds{30, 1800}>
{
    static inline const std::string kVarloDocTemplate = StillObjectTemplate("AbandonedObject");
};

template class BehaviorDoc<Config>;

} // namespace profile_conversion::frame
