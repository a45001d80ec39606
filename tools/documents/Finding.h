#pragma once

#include <string>
#include <vector>

namespace client
{

// Something in a document that is wrong.
struct Finding
{
    enum class Level
    {
        Error,  // the service would drop or change it without a word
        Warning // it would be stored, but is likely wrong
    };

    Level level;
    long line;         // 0: unknown
    std::string field; // a JSON pointer into the JSON form of the document
    std::string text;  // a sentence without its full stop
};

using Findings = std::vector<Finding>;

} // namespace client
