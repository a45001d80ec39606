// The out-of-line parts of the platform's small types, so that code in other libraries that catches one or
// derives from one has the same type information.

#include <analytics/Faults.h>
#include <analytics/Mutex.h>
#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

#include <pthread.h>

#include <cassert>

namespace analytics
{
namespace
{
pthread_mutex_t* Handle(void* handle) { return static_cast<pthread_mutex_t*>(handle); }
} // namespace

Mutex::Mutex(bool recursive) : m_handle(new pthread_mutex_t)
{
    // An error-checking lock gives an error number where a plain one would hang or corrupt itself.
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK);
    const int result = pthread_mutex_init(Handle(m_handle), &attributes);
    pthread_mutexattr_destroy(&attributes);
    assert(result == 0);
}

Mutex::~Mutex()
{
    pthread_mutex_destroy(Handle(m_handle));
    delete Handle(m_handle);
}

int Mutex::Lock() noexcept { return pthread_mutex_lock(Handle(m_handle)); }
int Mutex::TryLock() noexcept { return pthread_mutex_trylock(Handle(m_handle)); }
int Mutex::Unlock() noexcept { return pthread_mutex_unlock(Handle(m_handle)); }

ClientFault::~ClientFault() = default;
AnalyticsFault::~AnalyticsFault() = default;

} // namespace analytics

namespace tarno::osa
{

SocketException::SocketException(SocketError error, const std::string& what)
    : std::runtime_error(what), m_error(error)
{
}
SocketException::~SocketException() = default;
SocketException::SocketError SocketException::GetError() const { return m_error; }
TcpSocket::TcpSocket() = default;
TcpSocket::~TcpSocket() = default;
ITcpSocketAccept::~ITcpSocketAccept() = default;

} // namespace tarno::osa
