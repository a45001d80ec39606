#pragma once

#include <cstddef>

namespace tarno::osa
{

// What came of a step on a connection that never waits.
enum class StreamState
{
    Done,
    WaitRead,  // again once the socket can be read
    WaitWrite, // again once the socket can be written
    Ended,     // the peer sends no more
    Failed,
    NoCertificate, // the peer has no certificate that is accepted
    NotTls         // the peer speaks plain HTTP where TLS is due
};

struct StreamResult
{
    StreamState state;
    std::size_t count = 0; // bytes read or written
};

} // namespace tarno::osa
