#pragma once

#include <string>

namespace analytics::platform
{

// What a failure of SQLite means to people and to the store.
struct StoreFault
{
    std::string sentence;
    bool reopen; // the connection is of no use any more
};

// `code` is SQLite's, extended; `systemError` the errno behind it, 0 if there is none; `folder` the
// state folder; `detail` SQLite's own words, for what has no better ones here.
StoreFault ExplainStoreFault(int code, int systemError, const std::string& folder, const std::string& detail);

} // namespace analytics::platform
