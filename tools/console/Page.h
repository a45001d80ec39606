#pragma once

#include <string_view>
#include <vector>

namespace client
{

// A file of the page, compiled in.
struct PageFile
{
    std::string_view path; // as in "/model.js"
    std::string_view type;
    std::string_view text;
};

const std::vector<PageFile>& PageFiles();

} // namespace client
