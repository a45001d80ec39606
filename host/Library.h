#pragma once

#include <string>

// The API library's two entry points, looked up in a file. The library stays loaded for good: its
// threads and thread-local data may outlive any one use of it.
struct Library
{
    // Throws std::runtime_error, with the file and the reason, if the file can't be loaded or lacks an
    // entry point.
    explicit Library(const std::string& file);

    bool (*start)();
    bool (*shutdown)();
};
