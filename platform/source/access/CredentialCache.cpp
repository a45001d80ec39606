#include "access/CredentialCache.h"

#include <nettle/hmac.h>
#include <string.h>
#include <unistd.h>

#include <stdexcept>

namespace tarno::osa
{
namespace
{

constexpr std::size_t kSecretBytes = 32;

std::uint8_t* Bytes(std::string& text) { return reinterpret_cast<std::uint8_t*>(text.data()); }

} // namespace

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
    explicit_bzero(text.data(), text.size());
    std::string key(SHA256_DIGEST_SIZE, '\0');
    hmac_sha256_digest(&context, key.size(), Bytes(key));
    return key;
}

bool CredentialCache::Knows(const std::string& key, Clock::time_point now)
{
    return m_known.Find(key, now) != nullptr;
}

void CredentialCache::Remember(const std::string& key, Clock::time_point now)
{
    m_known.Put(key, true, now + kLifetime);
}

} // namespace tarno::osa
