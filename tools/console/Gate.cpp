#include "console/Gate.h"

#include "Failure.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <vector>

namespace client
{
namespace
{

namespace http = boost::beast::http;

constexpr std::size_t kSecretBytes = 32;
constexpr char kTokenTarget[] = "/?token=";

bool Equal(boost::beast::string_view a, const std::string& b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), b.size()) == 0;
}

bool Changes(const Gate::Head& head)
{
    return head.method() != http::verb::get && head.method() != http::verb::head;
}

} // namespace

std::string RandomDigits(std::size_t bytes)
{
    std::vector<unsigned char> random(bytes);
    if (RAND_bytes(random.data(), static_cast<int>(bytes)) != 1)
        throw Failure(Exit::Refused, "The system gives no random numbers");
    std::string digits;
    for (const unsigned char byte : random)
        for (const int digit : {byte >> 4, byte & 15})
            digits += "0123456789abcdef"[digit];
    return digits;
}

Gate::Gate(unsigned short port)
    : m_port(std::to_string(port)),
      m_token(RandomDigits(kSecretBytes)),
      m_cookie("varlo-analytics-" + m_port + "=" + RandomDigits(kSecretBytes))
{
}

bool Gate::HostIsOurs(const Head& head) const
{
    const auto host = head[http::field::host];
    return head.count(http::field::host) == 1 &&
           (host == "127.0.0.1:" + m_port || host == "localhost:" + m_port);
}

bool Gate::HasCookie(const Head& head) const
{
    const auto cookies = head.equal_range(http::field::cookie);
    for (auto field = cookies.first; field != cookies.second; ++field)
    {
        boost::beast::string_view rest = field->value();
        while (!rest.empty())
        {
            const std::size_t end = std::min(rest.find(';'), rest.size());
            const std::size_t start = std::min(rest.find_first_not_of(' '), end);
            if (Equal(rest.substr(start, end - start), m_cookie))
                return true;
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return false;
}

std::optional<Gate::Refusal> Gate::Refuse(const Head& head) const
{
    if (!HostIsOurs(head))
        return Refusal{403, "This address isn't the console's. Open the one that it has printed"};
    if (!HasCookie(head))
        return Refusal{403,
                       "Open the console by the address with the token that it has printed; each is good "
                       "for one browser. Start the console again for another"};
    if (!Changes(head))
        return std::nullopt;
    const auto site = head["Sec-Fetch-Site"];
    if (head[http::field::origin] != "http://" + std::string(head[http::field::host]) ||
        (!site.empty() && site != "same-origin"))
        return Refusal{403, "Only the console's own page may change something"};
    const auto type = head[http::field::content_type];
    if (type != "application/json" && !type.starts_with("application/json;"))
        return Refusal{415, "The body has to be application/json"};
    return std::nullopt;
}

std::optional<std::string> Gate::Exchange(const Head& head)
{
    if (m_used || head.method() != http::verb::get || !HostIsOurs(head) ||
        !Equal(head.target(), kTokenTarget + m_token))
        return std::nullopt;
    m_used = true;
    return m_cookie + "; HttpOnly; SameSite=Strict; Path=/";
}

} // namespace client
