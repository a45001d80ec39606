#include "access/Passwords.h"

#include <crypt.h>
#include <nettle/base64.h>
#include <nettle/hmac.h>
#include <nettle/memops.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>

namespace tarno::osa
{
namespace
{

constexpr char kScheme[] = "Basic ";
constexpr std::size_t kSchemeLength = sizeof(kScheme) - 1;
constexpr std::size_t kMostEncoded = 4096; // well above the longest name and password
constexpr std::size_t kSecretBytes = 32;
constexpr char kHowToHash[] = "write the line with \"htpasswd -B\" or \"mkpasswd\"";

struct Method
{
    const char* prefix;
    std::size_t digest; // characters behind the last '$'
};

constexpr std::array kMethods = {
    Method{"$2a$", 53}, Method{"$2b$", 53}, Method{"$2y$", 53}, Method{"$y$", 43},
    Method{"$gy$", 43}, Method{"$7$", 43},  Method{"$6$", 86},  Method{"$5$", 43},
};

std::uint8_t* Bytes(std::string& text) { return reinterpret_cast<std::uint8_t*>(text.data()); }

void Wipe(std::string& text) { explicit_bzero(text.data(), text.size()); }

// Empty if it isn't base64.
std::string Decoded(const std::string& encoded)
{
    base64_decode_ctx context;
    base64_decode_init(&context);
    std::string text(BASE64_DECODE_LENGTH(encoded.size()), '\0');
    std::size_t size = 0;
    const bool decoded =
        base64_decode_update(&context, &size, Bytes(text), encoded.size(), encoded.data()) == 1 &&
        base64_decode_final(&context) == 1;
    text.resize(decoded ? size : 0);
    return text;
}

std::chrono::milliseconds PauseAfter(unsigned failures)
{
    if (failures <= AttemptThrottle::kFree)
        return std::chrono::milliseconds(0);
    const unsigned doublings = std::min(failures - AttemptThrottle::kFree - 1, 10U);
    return std::min(AttemptThrottle::kFirstPause * (1U << doublings), AttemptThrottle::kLongestPause);
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

std::string WhyNoPasswordHash(const std::string& hash)
{
    const auto* const method = std::ranges::find_if(kMethods, [&hash](const Method& candidate)
                                                    { return hash.starts_with(candidate.prefix); });
    if (method == kMethods.end())
        return std::string("its hash is of no method that this service takes; ") + kHowToHash;
    const int setting = crypt_checksalt(hash.c_str());
    const bool whole = hash.size() - 1 - hash.rfind('$') == method->digest;
    if (!whole || setting == CRYPT_SALT_INVALID || setting == CRYPT_SALT_METHOD_DISABLED)
        return std::string("its hash is not whole; ") + kHowToHash;
    return "";
}

bool PasswordMatches(const std::string& password, const std::string& hash)
{
    const auto room = std::make_unique<crypt_data>(); // 32 KiB
    const char* const made = crypt_r(password.c_str(), hash.c_str(), room.get());
    const std::string own = made == nullptr ? "*" : made;
    explicit_bzero(room.get(), sizeof(crypt_data));
    return own.size() == hash.size() && own.front() != '*' &&
           memeql_sec(own.data(), hash.data(), own.size()) == 1;
}

CredentialCache::CredentialCache() : m_secret(kSecretBytes, '\0')
{
    if (getentropy(m_secret.data(), m_secret.size()) != 0)
        throw std::runtime_error("The system gives no random numbers");
}

std::string CredentialCache::KeyOf(const BasicCredentials& credentials, const std::string& hash) const
{
    // None of the three holds a NUL.
    std::string text = credentials.name + '\0' + hash + '\0' + credentials.password;
    hmac_sha256_ctx context;
    hmac_sha256_set_key(&context, m_secret.size(), reinterpret_cast<const std::uint8_t*>(m_secret.data()));
    hmac_sha256_update(&context, text.size(), Bytes(text));
    Wipe(text);
    std::string key(SHA256_DIGEST_SIZE, '\0');
    hmac_sha256_digest(&context, key.size(), Bytes(key));
    return key;
}

std::optional<AttemptThrottle::Time> AttemptThrottle::Begin(const std::string& who, Time now)
{
    const Attempts* const known = m_attempts.Find(who, now);
    Attempts attempts = known == nullptr ? Attempts() : *known;
    const Time turn = std::max(now, attempts.next);
    if (turn - now > kLongestWait)
        return std::nullopt;
    attempts.next = turn + PauseAfter(++attempts.failures);
    m_attempts.Put(who, attempts, now + kForgotten);
    return turn;
}

void AttemptThrottle::Succeeded(const std::string& who)
{
    Attempts* const attempts = m_attempts.Find(who, Time::min()); // however long it took
    if (attempts != nullptr && attempts->failures > 0)
        --attempts->failures;
}

} // namespace tarno::osa
