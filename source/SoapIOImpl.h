#pragma once

#include <SoapIO.h>

#include <tarno/osa/TcpServer.h>

#include <stdsoap2.h>

#include <cstddef>

namespace analytics::kestrile
{

// gSOAP does no input or output of its own here: the four hooks below read and write the platform's
// socket, whose pointer the context carries in `proxy_userid`, a field that a server never uses.
class SoapIO::SoapIOImpl : public tarno::osa::ITcpSocketAccept
{
  public:
    using PostFunction = int (*)(soap*, const char*, const char*);

    // Lies in the memory of its context, in the field `user`.
    struct SoapUserData
    {
        PostFunction post;
    };

    SoapIOImpl() noexcept;
    ~SoapIOImpl() noexcept override;
    SoapIOImpl(const SoapIOImpl&) = delete;
    SoapIOImpl& operator=(const SoapIOImpl&) = delete;

    // Serves one connection and returns. Runs on the server's threads, many at a time.
    void AcceptSocket(tarno::osa::TcpSocket* s) noexcept override;

    void CreateServer(const std::string& address, int port);
    void StartServer(UINT16 backlog);
    void StopServer();

    // A context for one connection, which the caller frees; null on failure.
    soap* GetSoapStruct(tarno::osa::TcpSocket* s) const noexcept;

    static tarno::osa::TcpSocket* GetTcpSocket(soap* soap);
    static void SaveTcpSocket(soap* soap, tarno::osa::TcpSocket* s);

    // The hooks fposthdr, fsend, frecv and fclose. What a socket throws ends here: it becomes an error
    // number in the context.
    static int PostHeader(soap* soap, const char* key, const char* val);
    static int Send(soap* soap, const char* s, std::size_t n);
    static std::size_t Recv(soap* soap, char* s, std::size_t n);
    static int Close(soap* soap);

  private:
    tarno::osa::TcpServer* _pServer; // owned
    soap* _soap;                     // template of the hooks and the time-out; never serves
    PostFunction _post;              // gSOAP's own header writer
};

} // namespace analytics::kestrile
