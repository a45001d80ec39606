#pragma once

#include "files/FileText.h"

#include <string>

namespace analytics::platform
{

// A file that is read again only when it may have changed. One thread at a time.
class WatchedFile
{
  public:
    explicit WatchedFile(std::string path) : m_path(std::move(path)) {}

    // Looks at the file. True if its text, or the reason why it can't be read, is another than at the
    // last call; and at the first.
    bool Renew();
    // As it stood at the last Renew().
    const FileText& Last() const { return m_last; }
    const std::string& Path() const { return m_path; }

  private:
    const std::string m_path;
    FileText m_last;
    bool m_read = false;
    bool m_trusted = false; // an equal stamp means an equal file
};

} // namespace analytics::platform
