#include "access/BasicCredentials.h"

#include <crypt.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <strings.h>

#include <algorithm>

namespace tarno::osa
{
namespace
{

constexpr char kScheme[] = "Basic ";
constexpr std::size_t kSchemeLength = sizeof(kScheme) - 1;
constexpr std::size_t kMostEncoded = 4096; // well above the longest name and password

void Wipe(std::string& text) { OPENSSL_cleanse(text.data(), text.size()); }

// Empty if it is no base64.
std::string Decoded(const std::string& encoded)
{
    std::string text(encoded.size() / 4 * 3 + 3, '\0');
    const int size = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                     reinterpret_cast<const unsigned char*>(encoded.data()),
                                     static_cast<int>(encoded.size()));
    // The padding comes out as zeros.
    const auto padding = std::min<std::ptrdiff_t>(2, std::count(encoded.begin(), encoded.end(), '='));
    text.resize(size > padding ? static_cast<std::size_t>(size - padding) : 0);
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
