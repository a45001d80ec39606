#pragma once

#include <stdexcept>
#include <string>

namespace tarno::osa
{

class SocketException : public std::runtime_error
{
  public:
    enum SocketError : int // a platform may hand over other numbers as well
    {
        kTimeout = 0,
        kBindError = 1,
        kInvalid = 2,
        kError = 3
    };

    SocketException(SocketError error, const std::string& what);
    ~SocketException() override;

    SocketError GetError() const;

  private:
    SocketError m_error;
};

} // namespace tarno::osa
