#include <ProfileDocConverter.h>

namespace profile_conversion
{

ProfileDocConverter::~ProfileDocConverter() = default;

bool ProfileDocConverter::AdditionalComponent(std::string&, std::string&) const { return false; }

} // namespace profile_conversion
