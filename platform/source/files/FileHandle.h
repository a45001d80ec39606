#pragma once

#include <unistd.h>

#include <utility>

namespace analytics::platform
{

// Owns a file descriptor; -1 is none.
class FileHandle
{
  public:
    FileHandle() = default;
    explicit FileHandle(int handle) : m_handle(handle) {}
    FileHandle(FileHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~FileHandle()
    {
        if (m_handle >= 0)
            close(m_handle);
    }

    int Get() const { return m_handle; }
    // Closing it is the caller's from then on.
    int Release() { return std::exchange(m_handle, -1); }
    explicit operator bool() const { return m_handle >= 0; }

  private:
    int m_handle = -1;
};

} // namespace analytics::platform
