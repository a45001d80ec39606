#include "Integer.h"

#include <xml/Text.h>

namespace client
{

std::optional<long long> Integer(const std::string& text)
{
    long long value = 0;
    return analytics::xml::ReadInteger(analytics::xml::Trimmed(text), value) == std::errc()
               ? std::optional(value)
               : std::nullopt;
}

} // namespace client
