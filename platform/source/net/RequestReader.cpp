#include "net/RequestReader.h"

#include "net/RequestParser.h"

#include <algorithm>
#include <cassert>
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

Refusal ReasonOf(const boost::system::error_code& error)
{
    if (error == http::error::header_limit)
        return Refusal::HeaderTooLarge;
    return error == http::error::body_limit ? Refusal::TooLarge : Refusal::NotHttp;
}

boost::system::error_code Put(RequestParser& parser, std::string_view& input)
{
    boost::system::error_code error;
    input.remove_prefix(parser.put(boost::asio::const_buffer(input.data(), input.size()), error));
    return error;
}

} // namespace

RequestReader::RequestReader(std::size_t maxRequestBytes) : m_maxBytes(maxRequestBytes) {}
RequestReader::~RequestReader() = default;

RequestReader::Outcome RequestReader::Take(std::string_view bytes)
{
    assert(!bytes.empty());
    m_received += bytes.size();
    const bool first = m_parser == nullptr;
    if (first)
    {
        m_parser = std::make_unique<RequestParser>(m_maxBytes, HeaderLimit(m_maxBytes));
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
    RequestParser probe(m_maxBytes, HeaderLimit(m_maxBytes));
    const auto error = Put(probe, start);
    return !error || error == http::error::need_more || ReasonOf(error) != Refusal::NotHttp;
}

RequestReader::Outcome RequestReader::Parse(std::string_view& rest)
{
    while (!rest.empty() && !(m_headerDone && m_parser->chunked() && rest.size() < kShortestChunkedEnd))
    {
        const auto error = Put(*m_parser, rest);
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
