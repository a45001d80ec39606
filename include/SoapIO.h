#pragma once

#include <cstdint>
#include <string>

namespace analytics::kestrile
{

using UINT16 = std::uint16_t;

// Joins the platform's TCP server to gSOAP: every connection that the server hands over is served by
// the generated dispatcher, one request each.
class SoapIO
{
  public:
    class SoapIOImpl;

    SoapIO();
    virtual ~SoapIO(); // stops the server
    SoapIO(const SoapIO&) = delete;
    SoapIO& operator=(const SoapIO&) = delete;

    // `address` and `port` go to the platform's server as they are, the port cut to 16 bits.
    void CreateServer(const std::string& address, int port);
    // Returns once the server listens. Throws what the server throws. Without a server does nothing.
    void StartServer(UINT16 backlog);
    void StopServer();

  private:
    SoapIOImpl* _pImpl; // owned
};

} // namespace analytics::kestrile
