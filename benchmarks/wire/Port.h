#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdio>

// Says where a listening socket listens, in the words of our host.
inline void SayPort(int socket)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    std::fprintf(stderr, "listening on http://127.0.0.1:%d/\n", ntohs(address.sin_port));
}
