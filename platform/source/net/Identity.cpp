#include "net/Identity.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace tarno::osa
{
using analytics::platform::Caller;
namespace
{

std::string NewRequestNumber()
{
    static std::atomic<std::uint32_t> gNumber =
        static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1'000'000);
    constexpr std::uint32_t kStep = 0x9E3779B1; // odd: each number comes once in 2^32
    const std::uint32_t number = gNumber += kStep;
    std::string text(8, '0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = "0123456789abcdef"[number >> (28 - 4 * i) & 15U];
    return text;
}

} // namespace

Caller NewCaller(const std::string& name, const boost::asio::ip::address& peer)
{
    Caller caller;
    caller.name = name;
    caller.peer = peer.is_unspecified() ? "" : peer.to_string();
    caller.request = NewRequestNumber();
    return caller;
}

// A name may hold whatever a certificate can.
std::string IdentityFields(const Caller& caller)
{
    std::string name;
    for (const char letter : caller.name)
    {
        if (letter > ' ' && letter < 127 && letter != '%' && letter != ';')
        {
            name += letter;
            continue;
        }
        const auto byte = static_cast<unsigned char>(letter);
        name += '%';
        name += "0123456789ABCDEF"[byte / 16];
        name += "0123456789ABCDEF"[byte % 16];
    }
    return std::string("\r\nVarlo-Analytics-Version: ") + VERSION + "\r\nVarlo-Analytics-Caller: " + name +
           "; role=" + analytics::platform::NameOf(caller.role);
}

} // namespace tarno::osa
