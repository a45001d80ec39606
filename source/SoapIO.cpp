#include "SoapIOImpl.h"

#include <tarno/osa/TcpSocket.h>

#include <soapH.h>

#include <VideoAnalytics.nsmap>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace analytics::kestrile
{
namespace
{

constexpr unsigned int kBufferSize = 0x10000; // bytes, as much as gSOAP's own buffer in a context
constexpr int kReceiveTimeout = 10;           // seconds
constexpr int kNoSocket = EBADF;              // errnum of a connection without a usable socket
constexpr int kInterrupted = EINTR;           // a socket may report it beside the named errors

constexpr char kStatus[] = "Status";
constexpr char kStatusLine[] = "Status: ";

// The status in a header call, or null if it's another header. The runtime's 2.7 line hands it over as
// the value of the key "Status", the 2.8 line within the key, as in "Status: 200 OK".
const char* StatusOf(const char* key, const char* val)
{
    if (key == nullptr)
        return nullptr;
    if (soap_tag_cmp(key, kStatus) == 0)
        return val;
    return std::strncmp(key, kStatusLine, sizeof kStatusLine - 1) == 0 ? key + sizeof kStatusLine - 1
                                                                       : nullptr;
}

} // namespace

SoapIO::SoapIOImpl::SoapIOImpl() noexcept
    : _pServer(nullptr), _soap(soap_new1(SOAP_C_UTFSTRING)), _post(_soap->fposthdr)
{
    _soap->fposthdr = PostHeader;
    _soap->fsend = Send;
    _soap->frecv = Recv;
    _soap->fclose = Close;
    _soap->fclosesocket = nullptr;
    _soap->fshutdownsocket = nullptr;
    _soap->faccept = nullptr;
    _soap->omode |= SOAP_IO_BUFFER;
    _soap->recv_timeout = kReceiveTimeout;
}

SoapIO::SoapIOImpl::~SoapIOImpl() noexcept
{
    soap_free(_soap);
    _soap = nullptr;
    if (_pServer != nullptr)
    {
        try
        {
            _pServer->Stop();
        }
        catch (...)
        {
            // A server that can't stop goes all the same.
        }
        delete _pServer;
        _pServer = nullptr;
    }
}

void SoapIO::SoapIOImpl::CreateServer(const std::string& address, int port)
{
    // A server from an earlier call isn't released: one service creates one server.
    _pServer = new tarno::osa::TcpServer(address.c_str(), static_cast<unsigned short>(port));
    _pServer->SetBufferSize(kBufferSize);
}

void SoapIO::SoapIOImpl::StartServer(UINT16 backlog)
{
    if (_pServer != nullptr)
        _pServer->Start(this, backlog);
}

void SoapIO::SoapIOImpl::StopServer()
{
    if (_pServer != nullptr)
        _pServer->Stop();
}

void SoapIO::SoapIOImpl::AcceptSocket(tarno::osa::TcpSocket* s) noexcept
{
    s->SetBufferSize(kBufferSize);
    soap* const context = GetSoapStruct(s);
    if (context == nullptr)
        return; // the socket is given up as it stands: with no memory left nothing better can be done
    try
    {
        soap_serve(context);
    }
    catch (...)
    {
        // The runtime has found no memory, so that no answer can be written either.
    }
    Close(context); // nothing to do where the runtime has done it
    context->plugins = nullptr;
    // In this order: the response's objects live in the context and hold strings and vectors.
    soap_delete(context, nullptr);
    soap_end(context);
    soap_free(context);
}

soap* SoapIO::SoapIOImpl::GetSoapStruct(tarno::osa::TcpSocket* s) const noexcept
{
    soap* context = nullptr;
    try
    {
        context = soap_new1(SOAP_C_UTFSTRING);
        if (context == nullptr)
            return nullptr;
        context->fposthdr = _soap->fposthdr;
        context->fsend = _soap->fsend;
        context->frecv = _soap->frecv;
        context->fclose = _soap->fclose;
        context->fclosesocket = _soap->fclosesocket;
        context->fshutdownsocket = _soap->fshutdownsocket;
        context->faccept = _soap->faccept;
        context->recv_timeout = _soap->recv_timeout;
        // The template's output mode stays behind: responses are written in the mode of a new context.
        // On input no multi-references are looked for, which document/literal messages don't have:
        // elements with many `id` attributes would cost quadratic time.
        context->imode |= SOAP_XML_TREE;
        auto* const data = static_cast<SoapUserData*>(soap_malloc(context, sizeof(SoapUserData)));
        data->post = _post;
        SaveTcpSocket(context, s);
        context->user = data;
        return context;
    }
    catch (...)
    {
        if (context != nullptr)
            soap_free(context);
        return nullptr;
    }
}

tarno::osa::TcpSocket* SoapIO::SoapIOImpl::GetTcpSocket(soap* soap)
{
    // The field is declared as text; the pointer in it is never read as such.
    return const_cast<tarno::osa::TcpSocket*>(
        reinterpret_cast<const tarno::osa::TcpSocket*>(soap->proxy_userid));
}

void SoapIO::SoapIOImpl::SaveTcpSocket(soap* soap, tarno::osa::TcpSocket* s)
{
    soap->proxy_userid = reinterpret_cast<const char*>(s);
}

int SoapIO::SoapIOImpl::PostHeader(soap* soap, const char* key, const char* val)
{
    // With no socket of its own gSOAP offers the status as a header. It has to become the first line.
    const PostFunction post = static_cast<const SoapUserData*>(soap->user)->post;
    const char* const status = StatusOf(key, val);
    if (status == nullptr)
        return post(soap, key, val);
    const std::string text = status; // a copy: it may lie in tmpbuf itself
    std::snprintf(soap->tmpbuf, sizeof soap->tmpbuf, "HTTP/%s %s", soap->http_version, text.c_str());
    return post(soap, soap->tmpbuf, nullptr);
}

// Send and Recv aren't mirror images: Send keeps the number of a bad descriptor for kInvalid and copies
// kError, Recv the other way round, and Recv alone tries again.
int SoapIO::SoapIOImpl::Send(soap* soap, const char* s, std::size_t n)
{
    soap->errnum = kNoSocket;
    tarno::osa::TcpSocket* const sock = GetTcpSocket(soap);
    if (sock == nullptr)
        return -1;
    try
    {
        sock->SendAll(s, static_cast<unsigned int>(n));
        soap->errnum = 0;
        return 0;
    }
    catch (const tarno::osa::SocketException& e)
    {
        if (e.GetError() != tarno::osa::SocketException::kInvalid)
            soap->errnum = e.GetError();
    }
    catch (...)
    {
    }
    return -1;
}

std::size_t SoapIO::SoapIOImpl::Recv(soap* soap, char* s, std::size_t n)
{
    soap->errnum = 0;
    tarno::osa::TcpSocket* const sock = GetTcpSocket(soap);
    while (sock != nullptr)
    {
        try
        {
            const int result =
                sock->Recv(s, static_cast<unsigned int>(n), static_cast<unsigned int>(soap->recv_timeout));
            if (result >= 0)
                return static_cast<std::size_t>(result);
            soap->errnum = errno;
            return 0;
        }
        catch (const tarno::osa::SocketException& e)
        {
            const int error = e.GetError();
            if (error == kInterrupted)
            {
                soap->errnum = 0;
                continue;
            }
            if (error != tarno::osa::SocketException::kTimeout) // a time-out reads as the end of input
                soap->errnum = error == tarno::osa::SocketException::kError ? kNoSocket : error;
            return 0;
        }
        catch (...)
        {
            soap->errnum = kNoSocket;
            return 0;
        }
    }
    return 0;
}

int SoapIO::SoapIOImpl::Close(soap* soap)
{
    delete GetTcpSocket(soap);
    SaveTcpSocket(soap, nullptr);
    return 0;
}

SoapIO::SoapIO() : _pImpl(new SoapIOImpl) {}

SoapIO::~SoapIO()
{
    delete _pImpl;
    _pImpl = nullptr;
}

void SoapIO::CreateServer(const std::string& address, int port) { _pImpl->CreateServer(address, port); }
void SoapIO::StartServer(UINT16 backlog) { _pImpl->StartServer(backlog); }
void SoapIO::StopServer() { _pImpl->StopServer(); }

} // namespace analytics::kestrile
