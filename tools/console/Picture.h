#pragma once

#include "Access.h"

#include <string>

namespace client
{

// The picture to draw on: a file, or what an address gives now.
class Picture
{
  public:
    struct Content
    {
        std::string type; // image/jpeg or image/png
        std::string bytes;
    };

    static constexpr std::size_t kMostBytes = 16 << 20;

    // `source` is a file, or begins with http:// or https://. The password of `access` goes to the camera's
    // own address alone.
    Picture(const std::string& source, const Access& access);

    // Throws Failure (document) with a sentence that names the source. Any thread.
    Content Read();

  private:
    std::string m_source;
    bool m_url;
    Access m_access;
};

} // namespace client
