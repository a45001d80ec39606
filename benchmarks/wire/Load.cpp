// The load generator: so many clients, each with a new connection per request, one after the other.
//
//   load PORT PID BODY CLIENTS REQUESTS FIRST [TLS [HEADER]]
//
// TLS is the version, 1.2 or 1.3, for a new session each time, or "resumed-" and the version, for the session
// of the client's request before; nothing is verified. HEADER is one more line of the request's.
//
// BODY is the file with the SOAP message. "@@@@@@@@" in it becomes the number of the request, eight
// digits, counted from FIRST: a store that is sent what it holds already has nothing to write. Prints one
// line of JSON; times in microseconds, `cpu` that of process PID (user and system) for each request,
// `resumed` the requests for which the server went on with a session.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::string_view kNumber = "@@@@@@@@";

template <auto kFree>
struct Free
{
    template <class T>
    void operator()(T* object) const
    {
        kFree(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Free<SSL_CTX_free>>;
using Tls = std::unique_ptr<SSL, Free<SSL_free>>;
using Session = std::unique_ptr<SSL_SESSION, Free<SSL_SESSION_free>>;

struct Job
{
    sockaddr_in server;
    std::string request;
    int last; // one behind it
    std::atomic<int> next;
    Context tls; // null for none
    bool resume = false;
};

struct Tally
{
    std::vector<double> times; // microseconds
    int unanswered = 0;
    int refused = 0;
    int resumed = 0;
    Session session; // of the last answer
};

double Micros(Clock::duration time) { return std::chrono::duration<double, std::micro>(time).count(); }

double ProcessorTime(pid_t process)
{
    clockid_t clock = {};
    timespec time = {};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &time) != 0)
        return 0;
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

// What the peer of `tls` sends until it ends.
std::string Answer(SSL* tls, const std::string& request)
{
    std::string answer;
    char buffer[65536];
    if (SSL_connect(tls) == 1 && SSL_write(tls, request.data(), static_cast<int>(request.size())) > 0)
        for (int count = 0; (count = SSL_read(tls, buffer, sizeof buffer)) > 0;)
            answer.append(buffer, static_cast<std::size_t>(count));
    return answer;
}

std::string Answer(int connection, const std::string& request)
{
    std::string answer;
    char buffer[65536];
    if (send(connection, request.data(), request.size(), MSG_NOSIGNAL) ==
        static_cast<ssize_t>(request.size()))
        for (ssize_t count = 0; (count = recv(connection, buffer, sizeof buffer, 0)) > 0;)
            answer.append(buffer, static_cast<std::size_t>(count));
    return answer;
}

std::string AnswerThroughTls(const Job& job, int connection, const std::string& request, Tally& tally)
{
    const Tls tls(SSL_new(job.tls.get()));
    SSL_set_app_data(tls.get(), &tally);
    SSL_set_fd(tls.get(), connection);
    if (job.resume && tally.session != nullptr)
        SSL_set_session(tls.get(), tally.session.get());
    std::string answer = Answer(tls.get(), request);
    tally.resumed += SSL_session_reused(tls.get());
    // A session that isn't shut down can't be resumed. The server has closed: it is told nothing.
    SSL_set_quiet_shutdown(tls.get(), 1);
    SSL_shutdown(tls.get());
    return answer;
}

std::string Exchange(const Job& job, const std::string& request, Tally& tally)
{
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::string answer;
    if (connect(connection, reinterpret_cast<const sockaddr*>(&job.server), sizeof job.server) == 0)
        answer = job.tls == nullptr ? Answer(connection, request)
                                    : AnswerThroughTls(job, connection, request, tally);
    close(connection);
    return answer;
}

void Number(std::string& request, int number)
{
    char digits[32];
    std::snprintf(digits, sizeof digits, "%08d", number);
    for (std::size_t at = 0; (at = request.find(kNumber, at)) != std::string::npos;)
        request.replace(at, kNumber.size(), digits, kNumber.size());
}

void Call(Job& job, Tally& tally)
{
    for (int number = 0; (number = job.next++) < job.last;)
    {
        std::string request = job.request;
        Number(request, number);
        const auto begin = Clock::now();
        const std::string answer = Exchange(job, request, tally);
        tally.times.push_back(Micros(Clock::now() - begin));
        tally.unanswered += answer.empty() ? 1 : 0;
        tally.refused += !answer.empty() && answer.substr(0, answer.find('\r')).find(" 200 ") == answer.npos;
    }
}

std::string Request(const char* file, const std::string& header)
{
    std::ostringstream body;
    body << std::ifstream(file).rdbuf();
    const std::string text = body.str();
    return "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/xml; charset=utf-8\r\nSOAPAction: "
           "\"\"\r\n"
           "Connection: close\r\n" +
           (header.empty() ? "" : header + "\r\n") + "Content-Length: " + std::to_string(text.size()) +
           "\r\n\r\n" + text;
}

int Keep(SSL* tls, SSL_SESSION* session)
{
    static_cast<Tally*>(SSL_get_app_data(tls))->session.reset(session);
    return 1; // it is ours
}

Context TlsOf(const std::string& version)
{
    Context context(SSL_CTX_new(TLS_client_method()));
    const int number = version == "1.2" ? TLS1_2_VERSION : TLS1_3_VERSION;
    SSL_CTX_set_min_proto_version(context.get(), number);
    SSL_CTX_set_max_proto_version(context.get(), number);
    SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_sess_set_new_cb(context.get(), Keep);
    return context;
}

Tally Run(Job& job, int clients)
{
    std::vector<Tally> tallies(static_cast<std::size_t>(clients));
    std::vector<std::thread> threads;
    for (Tally& tally : tallies)
        threads.emplace_back(Call, std::ref(job), std::ref(tally));
    for (std::thread& thread : threads)
        thread.join();
    Tally sum;
    for (const Tally& tally : tallies)
    {
        sum.times.insert(sum.times.end(), tally.times.begin(), tally.times.end());
        sum.unanswered += tally.unanswered;
        sum.refused += tally.refused;
        sum.resumed += tally.resumed;
    }
    std::sort(sum.times.begin(), sum.times.end());
    return sum;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 7 || argc > 9)
        return std::fprintf(stderr, "load PORT PID BODY CLIENTS REQUESTS FIRST [TLS [HEADER]]\n"), 2;
    const int first = std::atoi(argv[6]);
    const int requests = std::max(1, std::atoi(argv[5]));
    Job job = {{}, Request(argv[3], argc > 8 ? argv[8] : ""), first + requests, first, nullptr};
    const std::string tls = argc > 7 ? argv[7] : "";
    job.resume = tls.starts_with("resumed-");
    if (!tls.empty())
        job.tls = TlsOf(tls.substr(tls.size() - 3));
    job.server.sin_family = AF_INET;
    job.server.sin_port = htons(static_cast<in_port_t>(std::atoi(argv[1])));
    job.server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const pid_t process = std::atoi(argv[2]);
    const double processor = ProcessorTime(process);
    const auto begin = Clock::now();
    const Tally tally = Run(job, std::max(1, std::atoi(argv[4])));
    const double seconds = Micros(Clock::now() - begin) / 1e6;
    const auto at = [&](double part)
    { return tally.times[static_cast<std::size_t>(part * static_cast<double>(tally.times.size() - 1))]; };
    std::printf(
        "{\"rate\": %.1f, \"p50\": %.1f, \"p99\": %.1f, \"cpu\": %.2f, \"unanswered\": %d, \"refused\": "
        "%d, \"resumed\": %d}\n",
        requests / seconds, at(0.5), at(0.99), (ProcessorTime(process) - processor) / requests,
        tally.unanswered, tally.refused, tally.resumed);
}
