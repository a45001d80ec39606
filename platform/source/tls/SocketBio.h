#pragma once

struct bio_st;

namespace tarno::osa
{

// OpenSSL's way to a socket that doesn't block. Its own would end the process with SIGPIPE when the
// peer is gone. The socket isn't owned. Throws std::bad_alloc.
bio_st* NewSocketBio(int socket);

} // namespace tarno::osa
