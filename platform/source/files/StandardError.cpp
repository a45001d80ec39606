#include "files/StandardError.h"

#include <cstdio>

namespace analytics::platform
{

void Say(const std::string& sentence) { std::fputs((sentence + '\n').c_str(), stderr); }

} // namespace analytics::platform
