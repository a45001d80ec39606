#include "access/CredentialCache.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <stdexcept>

namespace tarno::osa
{
namespace
{

constexpr std::size_t kSecretBytes = 32;

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

} // namespace

CredentialCache::CredentialCache() : m_secret(kSecretBytes, '\0')
{
    if (RAND_bytes(Bytes(m_secret), kSecretBytes) != 1)
        throw std::runtime_error("The system gives no random numbers");
}

std::string CredentialCache::KeyOf(const BasicCredentials& credentials, const std::string& hash) const
{
    // None of the three holds a NUL.
    std::string text = credentials.name + '\0' + hash + '\0' + credentials.password;
    std::string key(EVP_MAX_MD_SIZE, '\0');
    unsigned int size = 0;
    const unsigned char* const made =
        HMAC(EVP_sha256(), m_secret.data(), kSecretBytes, Bytes(text), text.size(), Bytes(key), &size);
    OPENSSL_cleanse(text.data(), text.size());
    if (made == nullptr)
        throw std::runtime_error("The credentials can't be hashed");
    key.resize(size);
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
