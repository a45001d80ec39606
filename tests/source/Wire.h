#pragma once

#include <fake-platform/ScriptedSocket.h>

#include "../../source/SoapIOImpl.h"

#include <string>

// Messages for tests that run the transport on a scripted connection.
namespace wire
{

constexpr char kEnvelope11[] = "http://schemas.xmlsoap.org/soap/envelope/";
constexpr char kEnvelope12[] = "http://www.w3.org/2003/05/soap-envelope";
constexpr char kNamespace[] = "urn:schemas-varlo-com:service:VideoAnalytics:2";

inline std::string Http(const std::string& body, const std::string& version = "1.1")
{
    return "POST / HTTP/" + version +
           "\r\nHost: camera\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

// `body` uses the prefix "v" for the service's namespace.
inline std::string Envelope(const std::string& body, const std::string& space = kEnvelope11)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><s:Envelope xmlns:s=\"" + space + "\" xmlns:v=\"" +
           kNamespace + "\"><s:Body>" + body + "</s:Body></s:Envelope>";
}

inline fake::SocketRecord Serve(const std::string& bytes)
{
    fake::SocketRecord record;
    analytics::kestrile::SoapIO::SoapIOImpl transport;
    transport.AcceptSocket(new fake::ScriptedSocket(record, bytes));
    return record;
}

// The whole answer to one message.
inline std::string Answer(const std::string& body, const std::string& space = kEnvelope11)
{
    return Serve(Http(Envelope(body, space))).sent;
}

} // namespace wire
