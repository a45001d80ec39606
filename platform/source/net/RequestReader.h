#pragma once

#include "net/ErrorResponse.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tarno::osa
{

// Frames one HTTP/1.x request out of the bytes of a connection, in whatever pieces they come, without
// doing any input or output itself. What it yields is for a reader that knows nothing of framing: the
// request line as it came, the fields without Authorization, Expect, Transfer-Encoding and the sender's
// Content-Length, a Content-Length of its own, an empty line and the decoded body. What follows the
// request is dropped. Holds memory only for what has arrived.
class RequestReader
{
  public:
    enum class Outcome
    {
        NeedMore,
        Complete,
        Refused
    };

    explicit RequestReader(std::size_t maxRequestBytes);
    ~RequestReader();
    RequestReader(const RequestReader&) = delete;
    RequestReader& operator=(const RequestReader&) = delete;

    // Takes the next bytes, at least one. Not to be called after another outcome than NeedMore.
    Outcome Take(std::string_view bytes);

    // True once, if the client waits for "100 Continue" before it sends its body.
    bool TakeContinue();
    // Whether a byte has come, and how many are held now.
    bool Started() const;
    std::size_t Held() const;
    // After Refused.
    Refusal Reason() const { return m_reason; }
    // After Complete: whether bytes came behind the request with its last ones.
    bool MoreCame() const { return m_moreCame; }
    // After Complete. The value of the field, empty if there was none.
    const std::string& Authorization() const;
    SoapVersion Version() const;
    // Once the request line has come.
    bool IsHead() const;
    bool IsHeadOrOptions() const;
    // After Complete.
    const std::string& Request() const;
    // After Complete; moves the request out.
    std::string TakeRequest();

  private:
    class Parser;

    bool LooksLikeHttp(std::string_view start) const;
    // Takes from the front of `rest` what can be used.
    Outcome Parse(std::string_view& rest);
    bool HeaderFits(std::size_t headerBytes);
    Outcome Judge(std::string_view rest);
    Outcome Refuse(Refusal reason);

    const std::size_t m_maxBytes;
    std::unique_ptr<Parser> m_parser; // made at the first byte: a silent connection costs nothing
    std::string m_pending;            // what the parser couldn't use yet
    std::size_t m_received = 0;       // all bytes as they came, framing included
    bool m_headerDone = false;
    bool m_moreCame = false;
    Refusal m_reason = Refusal::NotHttp;
};

} // namespace tarno::osa
