#include "net/Connection.h"

#include "net/MemorySocket.h"

#include "access/Passwords.h"
#include "access/Users.h"
#include "audit/AuditTrail.h"
#include "request/WorkMemory.h"

#include <analytics/Faults.h>
#include <analytics/Platform.h>
#include <tarno/osa/TcpServer.h>

#include <sched.h>

#include <algorithm>
#include <array>
#include <utility>

namespace tarno::osa
{
using analytics::platform::Caller;
using analytics::platform::FileHandle;
using Wish = EventHandler::Wish;
namespace
{

// What every connection may hold without asking; nearly every request fits.
constexpr std::size_t kFreeBytes = 16'384;
constexpr int kLooks = 3; // for the first bytes
// A client that still sends when it is answered gets the answer only if it isn't cut off meanwhile.
// For this long and this much its bytes are read and dropped.
constexpr std::chrono::seconds kLingerTime(3);
constexpr std::size_t kLingerBytes = 67'108'864;

constexpr std::array kReasons = {"no user with this password", "too many wrong passwords from this address",
                                 "no valid client certificate"}; // by requestmetrics::Refused

// A client on this machine may have been stopped between connecting and sending, for this thread. It isn't
// waited for: if it doesn't send at its next turn, an event tells.
template <class Step, class IsSilent>
StreamResult AfterLooks(Step step, IsSilent isSilent)
{
    StreamResult result = step();
    for (int look = 0; look < kLooks && result.state == StreamState::WaitRead && isSilent(); ++look)
    {
        sched_yield();
        result = step();
    }
    return result;
}

} // namespace

Connection::Connection(FileHandle socket, const boost::asio::ip::address& peer, Served& server)
    : m_server(server), m_peer(peer), m_share(server.memory)
{
    if (m_server.counted)
        requestmetrics::CountBegun();
    const auto& tls = m_server.access.tls;
    m_stream.emplace(std::move(socket), tls == nullptr ? nullptr : tls->Current());
    m_reader.emplace(m_server.limits.maxRequestBytes);
    Within(m_server.limits.requestTime);
}

Connection::~Connection()
{
    CountRequest(false);
    if (m_server.counted)
        requestmetrics::CountEnded(m_outcome);
    m_stream.reset(); // before anybody is told
    m_share.Release();
    m_server.ended();
}

Wish Connection::Continue(Cause cause)
{
    if (cause == Cause::Deadline)
        return OnDeadline();
    if (cause == Cause::Ending)
        return OnEnding();
    if (cause == Cause::Slot)
        return Serve();
    if (cause == Cause::Woken && m_stage == Stage::Sending)
        return Wish::Nothing; // Others need the memory of its answer.
    return Go();
}

Wish Connection::Go()
{
    if (m_timeLeft)
        m_deadline = Clock::now() + *std::exchange(m_timeLeft, std::nullopt);
    switch (m_stage)
    {
    case Stage::Opening:
        return Open();
    case Stage::Reading:
        return ReadRequest();
    case Stage::Authenticating:
        return OnVerdict(m_verdict);
    case Stage::Serving:
        return Wish::Slot;
    case Stage::Sending:
        return SendMore();
    case Stage::Lingering:
        break;
    }
    return Linger();
}

Wish Connection::OnDeadline()
{
    if (m_stage == Stage::Lingering)
        return Wish::Nothing;
    if (m_stage == Stage::Authenticating)
        return Refuse(Refusal::Busy);
    m_outcome = Outcome::TimedOut;
    return m_stage == Stage::Reading && m_reader->Started() ? Refuse(Refusal::TooSlow) : Wish::Nothing;
}

// A request that has begun to arrive is waited for, and so is one behind a handshake.
Wish Connection::OnEnding()
{
    const bool idle = m_stage == Stage::Opening ? m_stream->Tls() == nullptr || !m_stream->Tls()->Begun()
                                                : m_stage == Stage::Reading && !m_reader->Started();
    if (idle || m_stage == Stage::Lingering)
        return Wish::Nothing;
    return m_stage == Stage::Authenticating ? Wish::WakeUp : Go();
}

Wish Connection::Await(const StreamResult& result)
{
    if (result.state == StreamState::WaitWrite)
        return Wish::Write;
    m_stream->Flush();
    return Wish::Read;
}

Wish Connection::Open()
{
    const StreamResult result =
        AfterLooks([this] { return m_stream->Open(); }, [this] { return !m_stream->Tls()->Begun(); });
    if (result.state == StreamState::WaitRead || result.state == StreamState::WaitWrite)
        return Await(result);
    if (m_stream->Tls() != nullptr)
        CountHandshake(result);
    m_stage = Stage::Reading;
    if (result.state == StreamState::Done)
        return ReadRequest();
    if (result.state == StreamState::NotTls)
    {
        m_stream->GoPlain();
        return Refuse(Refusal::NeedsTls);
    }
    m_outcome = Outcome::Refused;
    return Linger(); // The peer may yet have to read why.
}

void Connection::CountHandshake(const StreamResult& result) const
{
    using requestmetrics::Handshake;
    const bool done = result.state == StreamState::Done;
    requestmetrics::Count(!done                        ? Handshake::Failed
                          : m_stream->Tls()->Resumed() ? Handshake::Resumed
                                                       : Handshake::Full);
    if (result.state == StreamState::NoCertificate)
        NoteRefused(requestmetrics::Refused::Certificate);
}

Caller Connection::CallerNamed(const std::string& name) const
{
    return analytics::platform::NewCaller(name, m_peer.is_unspecified() ? "" : m_peer.to_string());
}

// `name` is as it was claimed.
void Connection::NoteRefused(requestmetrics::Refused why, const std::string& name) const
{
    requestmetrics::Count(why);
    analytics::platform::AuditRefusedAccess(CallerNamed(name), kReasons[static_cast<std::size_t>(why)]);
}

Wish Connection::ReadRequest()
{
    std::array<char, kFreeBytes> room;
    for (;;)
    {
        const std::size_t held = m_reader->Held();
        if (held >= kFreeBytes && !RoomFor(held + room.size()))
            return AwaitRoom();
        const StreamResult result =
            ReadSome(std::span(room).first(held < kFreeBytes ? kFreeBytes - held : room.size()));
        if (result.state == StreamState::WaitRead || result.state == StreamState::WaitWrite)
            return Await(result);
        if (result.state == StreamState::Ended && m_reader->Started())
            return Refuse(Refusal::Truncated);
        if (result.state != StreamState::Done)
            return Wish::Nothing;
        const RequestReader::Outcome outcome = m_reader->Take({room.data(), result.count});
        if (outcome != RequestReader::Outcome::NeedMore)
            return Judge(outcome);
        constexpr std::string_view kContinue = "HTTP/1.1 100 Continue\r\n\r\n";
        // The first bytes of the answer: they fit into the socket's buffer.
        if (m_reader->TakeContinue() && m_stream->Write(kContinue).count != kContinue.size())
            return Wish::Nothing;
    }
}

StreamResult Connection::ReadSome(std::span<char> room)
{
    const bool looked = std::exchange(m_looked, true);
    return AfterLooks([&] { return m_stream->Read(room); }, [looked] { return !looked; });
}

// It isn't the client that is slow: its time stands still.
Wish Connection::AwaitRoom()
{
    m_timeLeft = std::max(m_deadline - Clock::now(), Clock::duration::zero());
    m_deadline = Clock::time_point::max();
    return Wish::WakeUp;
}

bool Connection::RoomFor(std::size_t bytes)
{
    // Twice as much, since a string that grows takes more than it needs.
    return m_share.Ask(2 * bytes, [this] { m_server.pool.Wake(*this); });
}

Wish Connection::Judge(RequestReader::Outcome outcome)
{
    if (outcome == RequestReader::Outcome::Refused)
        return Refuse(m_reader->Reason());
    m_followed = m_reader->MoreCame();
    m_arrived = Clock::now();
    if (m_server.postOnly && m_reader->IsHeadOrOptions())
        return Refuse(Refusal::NotPost);
    return Authenticate();
}

Wish Connection::Authenticate()
{
    const auto& passwords = m_server.access.passwords;
    m_stage = Stage::Authenticating;
    if (passwords == nullptr)
        return OnVerdict(Authenticator::Verdict::Allowed);
    Within(m_server.limits.requestTime);
    // The verdict comes on another thread, where nothing may hold this connection.
    auto decided = [weak = weak_from_this()](Authenticator::Verdict verdict)
    {
        const auto self = std::static_pointer_cast<Connection>(weak.lock());
        if (self == nullptr)
            return;
        self->m_verdict = verdict;
        self->m_server.pool.Wake(*self);
    };
    const auto verdict = passwords->Authenticate(m_reader->Authorization(), m_peer, std::move(decided));
    return verdict ? OnVerdict(*verdict) : Wish::WakeUp;
}

Wish Connection::OnVerdict(Authenticator::Verdict verdict)
{
    const bool asked = m_server.access.passwords != nullptr;
    const auto credentials = asked ? ParseBasicCredentials(m_reader->Authorization()) : std::nullopt;
    const std::string user = credentials ? credentials->name : "";
    switch (verdict)
    {
    case Authenticator::Verdict::Denied:
        NoteRefused(requestmetrics::Refused::Password, user);
        return Refuse(Refusal::Unauthorized);
    case Authenticator::Verdict::TooManyAttempts:
        NoteRefused(requestmetrics::Refused::Throttled, user);
        return Refuse(Refusal::TooManyAttempts);
    case Authenticator::Verdict::Busy:
        return Refuse(Refusal::Busy);
    case Authenticator::Verdict::Allowed:
        break;
    }
    m_user = asked || m_stream->Tls() == nullptr ? user : m_stream->Tls()->PeerName();
    m_stage = Stage::Serving;
    return Wish::Slot;
}

Wish Connection::Refuse(Refusal reason)
{
    const bool whole =
        m_stage == Stage::Authenticating || m_stage == Stage::Serving || reason == Refusal::NotPost;
    const bool head = whole && m_reader->IsHead();
    const auto version = whole ? m_reader->Version() : SoapVersion::Soap11;
    if (!whole)
        m_followed = true;
    if (m_outcome != Outcome::TimedOut)
        m_outcome = Outcome::Refused;
    m_reader.reset();
    return Send(ErrorResponse(reason, m_server.limits, version, head));
}

Wish Connection::Serve()
try
{
    if (m_server.counted)
        m_operation = requestmetrics::OperationOf(m_reader->Request());
    std::string identity;
    std::string answer = Answer(identity);
    if (answer.empty())
        return Wish::Nothing;
    if (m_server.access.roles && answer.starts_with("HTTP/"))
        answer.insert(std::min(answer.find("\r\n"), answer.size()), identity);
    m_outcome = Outcome::Served;
    return Send(std::move(answer));
}
catch (const analytics::AnalyticsFault&)
{
    return Refuse(Refusal::NoMemory);
}

std::string Connection::Answer(std::string& identity)
{
    Caller caller = CallerNamed(m_user);
    const analytics::platform::RequestScope scope(caller);
    if (m_server.access.roles)
        caller.role = RoleOf(m_user);
    identity = IdentityFields(caller);
    analytics::platform::ClaimForReceived(m_reader->Request().size());
    std::string request = m_reader->TakeRequest();
    m_reader.reset();
    return AnswerOf(m_server.acceptor, std::move(request), [this] { return m_stream->PeerGone(); });
}

Wish Connection::Send(std::string answer)
{
    m_share.Release();
    m_stage = Stage::Sending;
    m_answer = std::move(answer);
    Within(m_server.limits.requestTime);
    return SendMore();
}

Wish Connection::SendMore()
{
    while (m_sent < m_answer.size())
    {
        const StreamResult result = m_stream->Write(std::string_view(m_answer).substr(m_sent));
        m_sent += result.count;
        if (result.state == StreamState::Done)
            continue;
        if (result.state != StreamState::WaitRead && result.state != StreamState::WaitWrite)
        {
            m_outcome = Outcome::Dropped;
            return Wish::Nothing;
        }
        if (!std::exchange(m_kept, true))
            m_share.Keep(m_answer.capacity(), [this] { m_server.pool.Wake(*this); });
        return Await(result);
    }
    return End();
}

Wish Connection::End()
{
    CountRequest(true);
    // What is there to be read when a socket is closed makes the system throw away what was sent.
    if (m_followed || m_stream->Unread())
        return Linger();
    m_stream->EndSending(false);
    return Wish::Nothing;
}

Wish Connection::Linger()
{
    if (m_stage != Stage::Lingering)
    {
        m_stage = Stage::Lingering;
        m_share.Release();
        std::string().swap(m_answer);
        m_stream->EndSending(true);
        Within(kLingerTime);
    }
    std::array<char, kFreeBytes> room;
    for (;;)
    {
        const StreamResult result = m_stream->Drop(room);
        if (result.state == StreamState::WaitRead)
            return m_server.ending ? Wish::Nothing : Wish::Read;
        m_dropped += result.count;
        if (result.state != StreamState::Done || m_dropped > kLingerBytes)
            return Wish::Nothing;
    }
}

void Connection::CountRequest(bool delivered)
{
    if (!m_operation)
        return;
    const std::chrono::duration<double> time = Clock::now() - m_arrived;
    requestmetrics::Count(*m_operation,
                          delivered ? requestmetrics::OutcomeOf(m_answer) : requestmetrics::Outcome::Dropped,
                          time.count());
    m_operation.reset();
}

} // namespace tarno::osa
