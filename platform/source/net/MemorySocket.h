#pragma once

#include <functional>
#include <string>

namespace tarno::osa
{

class ITcpSocketAccept;

// Has the acceptor serve a whole request, from memory and into memory, so that it never waits. Returns the
// answer, empty if there is none. `gone` is asked now and then whether the answer has lost its reader.
std::string AnswerOf(ITcpSocketAccept& acceptor, std::string request, std::function<bool()> gone);

} // namespace tarno::osa
