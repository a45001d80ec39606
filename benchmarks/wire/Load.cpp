// The load generator: so many clients, each with a new connection per request, one after the other.
//
//   load PORT PID BODY CLIENTS REQUESTS FIRST
//
// BODY is the file with the SOAP message. "@@@@@@@@" in it becomes the number of the request, eight
// digits, counted from FIRST: a store that is sent what it holds already has nothing to write. Prints one
// line of JSON; times in microseconds, `cpu` that of process PID (user and system) for each request.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::string_view kNumber = "@@@@@@@@";

struct Job
{
    sockaddr_in server;
    std::string request;
    int last; // one behind it
    std::atomic<int> next;
};

struct Tally
{
    std::vector<double> times; // microseconds
    int unanswered = 0;
    int refused = 0;
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

std::string Exchange(const Job& job, const std::string& request)
{
    std::string answer;
    char buffer[65536];
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(connection, reinterpret_cast<const sockaddr*>(&job.server), sizeof job.server) == 0 &&
        send(connection, request.data(), request.size(), MSG_NOSIGNAL) ==
            static_cast<ssize_t>(request.size()))
        for (ssize_t count = 0; (count = recv(connection, buffer, sizeof buffer, 0)) > 0;)
            answer.append(buffer, static_cast<std::size_t>(count));
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
        const std::string answer = Exchange(job, request);
        tally.times.push_back(Micros(Clock::now() - begin));
        tally.unanswered += answer.empty() ? 1 : 0;
        tally.refused += !answer.empty() && answer.substr(0, answer.find('\r')).find(" 200 ") == answer.npos;
    }
}

std::string Request(const char* file)
{
    std::ostringstream body;
    body << std::ifstream(file).rdbuf();
    const std::string text = body.str();
    return "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/xml; charset=utf-8\r\nSOAPAction: "
           "\"\"\r\n"
           "Connection: close\r\nContent-Length: " +
           std::to_string(text.size()) + "\r\n\r\n" + text;
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
    }
    std::sort(sum.times.begin(), sum.times.end());
    return sum;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 7)
        return std::fprintf(stderr, "load PORT PID BODY CLIENTS REQUESTS FIRST\n"), 2;
    const int first = std::atoi(argv[6]);
    const int requests = std::max(1, std::atoi(argv[5]));
    Job job = {{}, Request(argv[3]), first + requests, first};
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
        "%d}\n",
        requests / seconds, at(0.5), at(0.99), (ProcessorTime(process) - processor) / requests,
        tally.unanswered, tally.refused);
}
