#include "access/BasicCredentials.h"

#include <crypt.h>
#include <nettle/base64.h>
#include <string.h>
#include <strings.h>

namespace tarno::osa
{
namespace
{

constexpr char kScheme[] = "Basic ";
constexpr std::size_t kSchemeLength = sizeof(kScheme) - 1;
constexpr std::size_t kMostEncoded = 4096; // well above the longest name and password

void Wipe(std::string& text) { explicit_bzero(text.data(), text.size()); }

// Empty if it is no base64.
std::string Decoded(const std::string& encoded)
{
    base64_decode_ctx context;
    base64_decode_init(&context);
    std::string text(BASE64_DECODE_LENGTH(encoded.size()), '\0');
    std::size_t size = 0;
    const bool decoded = base64_decode_update(&context, &size, reinterpret_cast<std::uint8_t*>(text.data()),
                                              encoded.size(), encoded.data()) == 1 &&
                         base64_decode_final(&context) == 1;
    text.resize(decoded ? size : 0);
    return text;
}

} // namespace

BasicCredentials::~BasicCredentials() { Wipe(password); }

std::optional<BasicCredentials> ParseBasicCredentials(const std::string& authorization)
{
    if (strncasecmp(authorization.c_str(), kScheme, kSchemeLength) != 0)
        return std::nullopt;
    const std::size_t begin = authorization.find_first_not_of(' ', kSchemeLength);
    if (begin == std::string::npos || authorization.size() - begin > kMostEncoded)
        return std::nullopt;
    std::string text = Decoded(authorization.substr(begin));
    const std::size_t colon = text.find(':');
    std::optional<BasicCredentials> credentials;
    if (colon != std::string::npos && colon > 0 && text.find('\0') == std::string::npos &&
        text.size() - colon <= CRYPT_MAX_PASSPHRASE_SIZE)
    {
        credentials.emplace();
        credentials->name = text.substr(0, colon);
        credentials->password = text.substr(colon + 1);
    }
    Wipe(text);
    return credentials;
}

} // namespace tarno::osa
