#pragma once

#include <cstddef>
#include <string_view>

namespace tarno::osa
{

// What is counted of connections and of the requests that are served. Any thread.
namespace requestmetrics
{

enum class Outcome
{
    Ok,
    ClientFault,
    ServerFault,
    Dropped // nobody took the answer, or there was none
};

// By the first element in the Body of a request; for the functions below. A request that can't be read is one
// of the unknown operations.
std::size_t OperationOf(std::string_view request);

// Of an answer, by its status and its fault.
Outcome OutcomeOf(std::string_view answer);

void Count(std::size_t operation, Outcome outcome, double seconds);

enum class ConnectionOutcome
{
    Served,
    Refused,
    TimedOut,
    Dropped
};
void CountBegun(); // a connection
void CountEnded(ConnectionOutcome outcome);

enum class Handshake
{
    Full,
    Resumed,
    Failed
};
void Count(Handshake handshake);

// Why somebody didn't get in.
enum class Refused
{
    Password,
    Throttled,
    Certificate
};
void Count(Refused why);

} // namespace requestmetrics

} // namespace tarno::osa
