#pragma once

#include <string>
#include <vector>

namespace client
{

// A behavior as the service writes it, with one zone of each kind that it has: its short name and the
// document. The documents say which elements there are, and which bounds are advised.
struct Form
{
    std::string name;
    std::string document;
};

const std::vector<Form>& Forms();

} // namespace client
