#pragma once

#include <boost/beast/http/basic_parser.hpp>

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarno::osa
{

// What Beast finds in a request, written down again with plain framing. See RequestReader.
class RequestParser final : public boost::beast::http::basic_parser<true>
{
  public:
    using Text = boost::beast::string_view;
    using Error = boost::beast::error_code;
    using Field = boost::beast::http::field;
    using Verb = boost::beast::http::verb;

    RequestParser(std::size_t maxBytes, std::size_t headerLimit);

    // Empty until the whole request line was read.
    std::string request;
    // The client waits for a "100 Continue". HTTP/1.0 knows none.
    bool wantsContinue = false;
    // The values of these fields. Whoever reads the request has no use for a password, so it isn't
    // written down; of two, none counts.
    std::string authorization;
    std::string contentType;
    Verb method = Verb::unknown;

  private:
    void on_request_impl(Verb verb, Text method, Text target, int version, Error& error) override;
    void on_field_impl(Field field, Text name, Text value, Error& error) override;
    void on_header_impl(Error& error) override;
    void on_body_init_impl(const boost::optional<std::uint64_t>& length, Error& error) override;
    std::size_t on_body_impl(Text body, Error& error) override;
    void on_chunk_header_impl(std::uint64_t size, Text extensions, Error& error) override;
    std::size_t on_chunk_body_impl(std::uint64_t remain, Text body, Error& error) override;
    void on_finish_impl(Error& error) override;
    // Responses don't come here.
    void on_response_impl(int status, Text reason, int version, Error& error) override;

    void TakeAuthorization(Text value);

    bool m_http11 = false;
    bool m_authorized = false; // the field has come
    bool m_headerDone = false; // fields from then on are trailers
    std::size_t m_lengthAt = 0;
    std::size_t m_bodyAt = 0;
};

} // namespace tarno::osa
