#include "net/RequestReader.h"

#include <boost/beast/http/basic_parser.hpp>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <initializer_list>
#include <utility>

namespace tarno::osa
{
namespace
{

namespace http = boost::beast::http;

// The longest line of framing inside a chunked body, the trailer as a whole included; and how much
// framing the smallest limits leave room for.
constexpr std::size_t kFramingBytes = 65'536;

// No chunked body ends sooner than with "0\r\n\r\n". The parser relies on as many bytes once it has
// seen the last chunk, and stops the process if they are fewer; so it isn't shown fewer.
constexpr std::size_t kShortestChunkedEnd = 5;

// The length of a chunked body is known at its end only, and stands before it: its field is written
// blank and filled in then, which spares a copy of the body. White space before a value means nothing.
constexpr char kLengthName[] = "Content-Length: ";
constexpr std::size_t kLengthWidth = 20; // digits of the largest

Refusal ReasonOf(const boost::system::error_code& error)
{
    if (error == http::error::header_limit)
        return Refusal::HeaderTooLarge;
    return error == http::error::body_limit ? Refusal::TooLarge : Refusal::NotHttp;
}

} // namespace

// What Beast finds in a request, written down again with plain framing.
class RequestReader::Parser final : public http::basic_parser<true>
{
  public:
    using Text = boost::beast::string_view;
    using Error = boost::beast::error_code;
    using Field = http::field;
    using Verb = http::verb;

    explicit Parser(std::size_t maxBytes)
    {
        header_limit(static_cast<std::uint32_t>(HeaderLimit(maxBytes)));
        body_limit(maxBytes);
    }
    // Removes from the front of `input` what it has used.
    Error Put(std::string_view& input)
    {
        Error error;
        input.remove_prefix(put(boost::asio::const_buffer(input.data(), input.size()), error));
        return error;
    }

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
    static void Append(std::string& text, Text piece) { text.append(piece.data(), piece.size()); }
    void AppendLine(std::initializer_list<Text> pieces)
    {
        for (const Text piece : pieces)
            Append(request, piece);
        request += "\r\n";
    }
    void TakeAuthorization(Text value)
    {
        if (std::exchange(m_authorized, true))
            authorization.clear();
        else
            Append(authorization, value);
    }

    void on_request_impl(Verb verb, Text name, Text target, int version, Error& /*error*/) override
    {
        m_http11 = version >= 11;
        method = verb;
        AppendLine({name, " ", target, m_http11 ? " HTTP/1.1" : " HTTP/1.0"});
        request += kLengthName;
        m_lengthAt = request.size();
        request.append(kLengthWidth, ' ');
        request += "\r\n";
    }
    void on_field_impl(Field field, Text name, Text value, Error& error) override
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
        AppendLine({name, ": ", value});
    }
    void on_header_impl(Error& /*error*/) override
    {
        m_headerDone = true;
        request += "\r\n";
        m_bodyAt = request.size();
    }
    void on_body_init_impl(const boost::optional<std::uint64_t>& /*length*/, Error& /*error*/) override {}
    std::size_t on_body_impl(Text body, Error& /*error*/) override
    {
        Append(request, body);
        return body.size();
    }
    void on_chunk_header_impl(std::uint64_t /*size*/, Text /*extensions*/, Error& /*error*/) override {}
    std::size_t on_chunk_body_impl(std::uint64_t /*remain*/, Text body, Error& error) override
    {
        return on_body_impl(body, error);
    }
    void on_finish_impl(Error& /*error*/) override
    {
        const std::string length = std::to_string(request.size() - m_bodyAt);
        request.replace(m_lengthAt + kLengthWidth - length.size(), length.size(), length);
    }
    // Responses don't come here.
    void on_response_impl(int /*status*/, Text /*reason*/, int /*version*/, Error& /*error*/) override {}

    bool m_http11 = false;
    bool m_authorized = false; // the field has come
    bool m_headerDone = false; // fields from then on are trailers
    std::size_t m_lengthAt = 0;
    std::size_t m_bodyAt = 0;
};

RequestReader::RequestReader(std::size_t maxRequestBytes) : m_maxBytes(maxRequestBytes) {}
RequestReader::~RequestReader() = default;

RequestReader::Outcome RequestReader::Take(std::string_view bytes)
{
    assert(!bytes.empty());
    m_received += bytes.size();
    const bool first = m_parser == nullptr;
    if (first)
    {
        m_parser = std::make_unique<Parser>(m_maxBytes);
        m_parser->request.reserve(bytes.size());
    }
    const bool lineEnded = !m_parser->request.empty() || bytes.find('\n') != std::string_view::npos;
    if (first && !lineEnded && !LooksLikeHttp(bytes))
        return Refuse(Refusal::NotHttp);
    if (!m_pending.empty())
        m_pending.append(bytes);
    std::string_view rest = m_pending.empty() ? bytes : std::string_view(m_pending);
    const std::size_t size = rest.size();
    const Outcome outcome = lineEnded ? Parse(rest) : Judge(rest);
    if (outcome != Outcome::NeedMore || rest.empty())
        std::string().swap(m_pending);
    else if (m_pending.empty())
        m_pending = rest;
    else
        m_pending.erase(0, size - rest.size());
    return outcome;
}

bool RequestReader::LooksLikeHttp(std::string_view start) const
{
    // One that is thrown away, since the parser looks at a request line once in pieces and then not
    // again before the end of the header; this one is shown whole lines only.
    Parser probe(m_maxBytes);
    const auto error = probe.Put(start);
    return !error || error == http::error::need_more || ReasonOf(error) != Refusal::NotHttp;
}

RequestReader::Outcome RequestReader::Parse(std::string_view& rest)
{
    while (!rest.empty() && !(m_headerDone && m_parser->chunked() && rest.size() < kShortestChunkedEnd))
    {
        const auto error = m_parser->Put(rest);
        if (error == http::error::need_more && !m_parser->request.empty())
            break;
        if (error)
            return Refuse(ReasonOf(error));
        if (!m_headerDone && m_parser->is_header_done() && !HeaderFits(m_received - rest.size()))
            return Outcome::Refused;
        if (m_parser->is_done())
        {
            m_moreCame = !rest.empty();
            return Outcome::Complete;
        }
    }
    return Judge(rest);
}

bool RequestReader::HeaderFits(std::size_t headerBytes)
{
    m_headerDone = true;
    if (headerBytes > HeaderLimit(m_maxBytes))
    {
        m_reason = Refusal::HeaderTooLarge;
        return false;
    }
    const std::size_t forBody = m_maxBytes - headerBytes;
    m_parser->body_limit(forBody);
    m_reason = Refusal::TooLarge;
    return m_parser->content_length().value_or(0) <= forBody;
}

RequestReader::Outcome RequestReader::Judge(std::string_view rest)
{
    if (!m_headerDone)
        return m_received > HeaderLimit(m_maxBytes) ? Refuse(Refusal::HeaderTooLarge) : Outcome::NeedMore;
    // The parser holds the body to its limit; this bounds what may come around it.
    const std::size_t mostReceived = m_maxBytes + std::max(m_maxBytes, kFramingBytes);
    if (rest.size() > kFramingBytes || m_received > mostReceived)
        return Refuse(Refusal::TooLarge);
    return Outcome::NeedMore;
}

RequestReader::Outcome RequestReader::Refuse(Refusal reason)
{
    m_reason = reason;
    return Outcome::Refused;
}

bool RequestReader::TakeContinue() { return m_headerDone && std::exchange(m_parser->wantsContinue, false); }

bool RequestReader::Started() const { return m_parser != nullptr; }

std::size_t RequestReader::Held() const
{
    return m_parser == nullptr ? 0
                               : m_pending.size() + m_parser->request.size() + m_parser->authorization.size();
}

const std::string& RequestReader::Authorization() const { return m_parser->authorization; }

SoapVersion RequestReader::Version() const { return SoapVersionOf(m_parser->contentType); }

bool RequestReader::IsHead() const { return m_parser->method == http::verb::head; }

bool RequestReader::IsHeadOrOptions() const { return IsHead() || m_parser->method == http::verb::options; }

const std::string& RequestReader::Request() const { return m_parser->request; }

std::string RequestReader::TakeRequest() { return std::move(m_parser->request); }

} // namespace tarno::osa
