#pragma once

#include <fstream>
#include <ostream>
#include <string>
#include <vector>

namespace wire
{

// An operation's request element, in the prefix that Envelope() declares.
struct Message
{
    std::string operation;
    std::string element;
};
inline void PrintTo(const Message& message, std::ostream* stream) { *stream << message.operation; }

// A valid message for each operation: tests/data/messages.xml, which has one a line.
inline std::vector<Message> Messages()
{
    const std::string begin = "  <v:";
    std::vector<Message> messages;
    std::ifstream file(TEST_DATA "/messages.xml");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(begin))
            messages.push_back({line.substr(begin.size(), line.find_first_of("/>") - begin.size()), line});
    return messages;
}

} // namespace wire
