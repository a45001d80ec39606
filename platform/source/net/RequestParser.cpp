#include "net/RequestParser.h"

#include <algorithm>
#include <utility>

namespace tarno::osa
{
namespace
{

namespace http = boost::beast::http;

// The length of a chunked body is known at its end only, and stands before it: its field is written
// blank and filled in then, which spares a copy of the body. White space before a value means nothing.
constexpr char kLengthName[] = "Content-Length: ";
constexpr std::size_t kLengthWidth = 20; // digits of the largest

void Append(std::string& text, RequestParser::Text piece) { text.append(piece.data(), piece.size()); }

} // namespace

RequestParser::RequestParser(std::size_t maxBytes, std::size_t headerLimit)
{
    header_limit(static_cast<std::uint32_t>(headerLimit));
    body_limit(maxBytes);
}

void RequestParser::on_request_impl(Verb verb, Text name, Text target, int version, Error& /*error*/)
{
    m_http11 = version >= 11;
    method = verb;
    Append(request, name);
    request += ' ';
    Append(request, target);
    request += m_http11 ? " HTTP/1.1\r\n" : " HTTP/1.0\r\n";
    request += kLengthName;
    m_lengthAt = request.size();
    request.append(kLengthWidth, ' ');
    request += "\r\n";
}

void RequestParser::on_field_impl(Field field, Text name, Text value, Error& error)
{
    if (m_headerDone || field == Field::content_length)
        return;
    if (field == Field::transfer_encoding)
    {
        // Any other coding would reach the reader undecoded, as if it were the request.
        if (!boost::beast::iequals(value, "chunked"))
            error = http::error::bad_transfer_encoding;
        return;
    }
    if (field == Field::expect)
    {
        wantsContinue = m_http11 && boost::beast::iequals(value, "100-continue");
        return;
    }
    if (field == Field::authorization)
        return TakeAuthorization(value);
    if (field == Field::content_type)
        contentType.assign(value.data(), value.size());
    Append(request, name);
    request += ": ";
    Append(request, value);
    request += "\r\n";
}

void RequestParser::TakeAuthorization(Text value)
{
    if (std::exchange(m_authorized, true))
        authorization.clear();
    else
        Append(authorization, value);
}

void RequestParser::on_header_impl(Error& /*error*/)
{
    m_headerDone = true;
    request += "\r\n";
    m_bodyAt = request.size();
}

void RequestParser::on_body_init_impl(const boost::optional<std::uint64_t>& /*length*/, Error& /*error*/) {}

std::size_t RequestParser::on_body_impl(Text body, Error& /*error*/)
{
    Append(request, body);
    return body.size();
}

void RequestParser::on_chunk_header_impl(std::uint64_t /*size*/, Text /*extensions*/, Error& /*error*/) {}

std::size_t RequestParser::on_chunk_body_impl(std::uint64_t /*remain*/, Text body, Error& error)
{
    return on_body_impl(body, error);
}

void RequestParser::on_finish_impl(Error& /*error*/)
{
    const std::string length = std::to_string(request.size() - m_bodyAt);
    std::copy(
        length.rbegin(), length.rend(),
        std::make_reverse_iterator(request.begin() + static_cast<std::ptrdiff_t>(m_lengthAt + kLengthWidth)));
}

void RequestParser::on_response_impl(int /*status*/, Text /*reason*/, int /*version*/, Error& /*error*/) {}

} // namespace tarno::osa
