#include "Integer.h"

#include "Text.h"

#include <charconv>

namespace client
{

std::optional<long long> Integer(const std::string& text)
{
    std::string digits = Trimmed(text);
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-')
        digits.erase(0, 1);
    long long value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace client
