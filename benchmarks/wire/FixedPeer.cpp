// The fixed answer without XML: worker threads share the listening socket; accept, read, write 1 KB,
// close.
//
//   fixed-peer WORKERS

#include "Port.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr int kBacklog = 128;

void Serve(int listener, const std::string& answer)
{
    char request[65536];
    for (;;)
    {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection < 0)
            return;
        if (read(connection, request, sizeof request) > 0 &&
            write(connection, answer.data(), answer.size()) < 0)
            std::perror("fixed-peer");
        close(connection);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return std::fprintf(stderr, "fixed-peer WORKERS\n"), 2;
    std::string answer = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nConnection: close\r\n\r\n";
    answer.resize(1024, 'x');
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, kBacklog) != 0)
        return std::perror("fixed-peer"), 1;
    std::vector<std::thread> threads;
    for (int i = std::atoi(argv[1]); i > 0; --i)
        threads.emplace_back(Serve, listener, answer);
    SayPort(listener);
    for (std::thread& thread : threads)
        thread.join();
}
