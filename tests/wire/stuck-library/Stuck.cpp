// An API library whose requests never end.

#include <AnalyticsApi.h>

#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace
{

std::atomic<bool> gShutdown{false};

struct Stuck : tarno::osa::ITcpSocketAccept
{
    void AcceptSocket(tarno::osa::TcpSocket* /*socket*/) override
    {
        std::fputs("a request is stuck\n", stderr);
        for (;;)
            pause();
    }
};

} // namespace

bool StartVarloAnalyticsApi()
{
    Stuck stuck;
    tarno::osa::TcpServer server("kestrile-server", 0);
    server.Start(&stuck, 128);
    while (!gShutdown)
        sleep(2);
    return true;
}

bool ShutdownVarloAnalyticsApi()
{
    gShutdown = true;
    return true;
}
