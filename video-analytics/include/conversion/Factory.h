#pragma once

#include <ProfileDocConverter.h>

#include <string>

namespace profile_conversion
{

class Factory
{
  public:
    // A converter for a rule or engine identifier, or for the alias of a rule; null if there is none.
    // The caller owns it. The search order is fixed, and each converter that is passed over costs a
    // look-up of its alias.
    static ProfileDocConverter* CreateConverter(const std::string& id);
};

} // namespace profile_conversion
