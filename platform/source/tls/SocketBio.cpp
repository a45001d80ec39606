#include "tls/SocketBio.h"

#include <openssl/bio.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <new>

namespace tarno::osa
{
namespace
{

int SocketOf(BIO* bio) { return static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(bio))); }

bool MustWait() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

int Read(BIO* bio, char* room, int size)
{
    BIO_clear_retry_flags(bio);
    const ssize_t count = recv(SocketOf(bio), room, static_cast<std::size_t>(size), 0);
    if (count < 0 && MustWait())
        BIO_set_retry_read(bio);
    if (count == 0)
        BIO_set_flags(bio, BIO_FLAGS_IN_EOF);
    return static_cast<int>(count);
}

int Write(BIO* bio, const char* bytes, int size)
{
    BIO_clear_retry_flags(bio);
    const ssize_t count = send(SocketOf(bio), bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL);
    if (count < 0 && MustWait())
        BIO_set_retry_write(bio);
    return static_cast<int>(count);
}

long Control(BIO* bio, int command, long /*number*/, void* /*data*/)
{
    if (command == BIO_CTRL_EOF)
        return BIO_test_flags(bio, BIO_FLAGS_IN_EOF) != 0 ? 1 : 0;
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

struct FreeMethod
{
    void operator()(BIO_METHOD* method) const { BIO_meth_free(method); }
};

BIO_METHOD* SocketMethod()
{
    static const std::unique_ptr<BIO_METHOD, FreeMethod> method = []
    {
        std::unique_ptr<BIO_METHOD, FreeMethod> made(
            BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "socket"));
        if (made == nullptr)
            throw std::bad_alloc();
        BIO_meth_set_read(made.get(), Read);
        BIO_meth_set_write(made.get(), Write);
        BIO_meth_set_ctrl(made.get(), Control);
        return made;
    }();
    return method.get();
}

} // namespace

bio_st* NewSocketBio(int socket)
{
    BIO* const bio = BIO_new(SocketMethod());
    if (bio == nullptr)
        throw std::bad_alloc();
    BIO_set_data(bio, reinterpret_cast<void*>(static_cast<std::intptr_t>(socket)));
    BIO_set_init(bio, 1);
    return bio;
}

} // namespace tarno::osa
