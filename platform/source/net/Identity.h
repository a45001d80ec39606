#pragma once

#include "request/Request.h"

#include <boost/asio/ip/address.hpp>

#include <string>

namespace tarno::osa
{

// Who sends a request, under a new number. `name` is as it was proved or claimed, and may be empty.
analytics::platform::Caller NewCaller(const std::string& name, const boost::asio::ip::address& peer);

// What a client is told of the service and of itself, for the head of its answer: "\r\nNAME: VALUE" each.
std::string IdentityFields(const analytics::platform::Caller& caller);

} // namespace tarno::osa
