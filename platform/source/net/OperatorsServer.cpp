#include "net/OperatorsServer.h"

#include "metrics/Metrics.h"
#include "net/LeaderFollowers.h"
#include "threads/Mutex.h"

#include <analytics/Platform.h>
#include <tarno/osa/TcpSocket.h>

#include <array>
#include <future>
#include <memory>
#include <sstream>
#include <system_error>
#include <thread>

namespace tarno::osa
{
namespace
{

// A few programs that ask now and then.
Limits FewLimits()
{
    Limits limits;
    limits.workers = 2;
    limits.maxConnections = 16;
    limits.maxRequestBytes = 16'384;
    limits.requestTime = std::chrono::seconds(10);
    return limits;
}

constexpr std::chrono::seconds kLongestHealthCheck{2};

using Answer = std::shared_future<std::string>;

bool IsReady(const Answer& answer, std::chrono::seconds limit)
{
    return answer.wait_for(limit) == std::future_status::ready;
}

// Of StoreHealth() on a thread of its own, once at a time: whoever comes while it runs gets the same answer.
// Throws std::system_error without a thread.
Answer AskStore()
{
    struct LastCheck
    {
        analytics::platform::Mutex lock;
        Answer answer ANALYTICS_GUARDED_BY(lock);
    };
    // Never destroyed: a check that hangs on a disk may outlive everything.
    static LastCheck& last = *new LastCheck;
    const analytics::platform::MutexLock hold(last.lock);
    if (!last.answer.valid() || IsReady(last.answer, {}))
    {
        std::packaged_task<std::string()> task(analytics::platform::StoreHealth);
        Answer answer = task.get_future();
        std::thread(std::move(task)).detach();
        last.answer = std::move(answer);
    }
    return last.answer;
}

// Why the service can't do its work now, as a sentence; empty if it can.
std::string Health()
try
{
    const Answer answer = AskStore();
    LeaderFollowers::Blocked(true);
    const bool ready = IsReady(answer, kLongestHealthCheck);
    LeaderFollowers::Blocked(false);
    return ready ? answer.get() : "The profile store doesn't answer; look at the disk that it is on";
}
catch (const std::system_error&)
{
    return "The service can't start a thread; allow the process more of them";
}
catch (const std::exception& failure)
{
    return failure.what();
}

constexpr const char* kSentence = "text/plain; charset=utf-8";
constexpr const char* kMetricsFormat = "text/plain; version=0.0.4; charset=utf-8";

std::string Response(const char* status, const std::string& body, const std::string& method,
                     const char* type = kSentence, const char* fields = "")
{
    return std::string("HTTP/1.1 ") + status + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + fields +
           "Cache-Control: no-store\r\nConnection: close\r\n\r\n" + (method == "HEAD" ? "" : body);
}

// The whole answer to a request, of which the first line counts.
std::string OperatorsAnswer(const std::string& request)
{
    std::istringstream line(request);
    std::string method;
    std::string target;
    line >> method >> target;
    const std::string path = target.substr(0, target.find('?'));
    if (path == "/metrics" && method == "GET")
        return Response("200 OK", analytics::platform::MetricsText(), method, kMetricsFormat);
    if (path == "/healthz" && (method == "GET" || method == "HEAD"))
    {
        const std::string failure = Health();
        return failure.empty() ? Response("200 OK", "ok", method)
                               : Response("503 Service Unavailable", failure + '\n', method);
    }
    if (path == "/metrics" || path == "/healthz")
        return Response("405 Method Not Allowed", "Ask by the method GET\n", method, kSentence,
                        path == "/metrics" ? "Allow: GET\r\n" : "Allow: GET, HEAD\r\n");
    return Response("404 Not Found", "There are /healthz and /metrics\n", method);
}

} // namespace

OperatorsServer::OperatorsServer(const ListenOptions& options)
    : m_server(*this, FewLimits(), {}, true), m_url(m_server.Start(options))
{
}

void OperatorsServer::AcceptSocket(TcpSocket* socket)
{
    const std::unique_ptr<TcpSocket> owned(socket);
    std::array<char, 4096> room;
    const int count = socket->Recv(room.data(), room.size(), 0);
    const std::string answer = OperatorsAnswer({room.data(), static_cast<std::size_t>(count)});
    socket->SendAll(answer.data(), static_cast<unsigned int>(answer.size()));
}

} // namespace tarno::osa
