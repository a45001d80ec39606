#pragma once

#include "files/WatchedFile.h"

#include <memory>
#include <optional>
#include <string>

struct ssl_ctx_st;

namespace tarno::osa
{

// The TLS context of an endpoint, made anew when one of its files has changed. While they can't be used,
// the last good one stays, and standard error says so once. One thread at a time.
class TlsSource
{
  public:
    // An empty `authority` is none. Throws AccessFault.
    TlsSource(const std::string& certificate, const std::string& privateKey, const std::string& authority);

    std::shared_ptr<ssl_ctx_st> Current();

  private:
    std::shared_ptr<ssl_ctx_st> Make() const;

    analytics::platform::WatchedFile m_certificate;
    analytics::platform::WatchedFile m_privateKey;
    std::optional<analytics::platform::WatchedFile> m_authority;
    std::shared_ptr<ssl_ctx_st> m_context;
};

} // namespace tarno::osa
