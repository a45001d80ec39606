#pragma once

#include <analytics/Platform.h>

#include <string>
#include <variant>

struct Options
{
    analytics::platform::Configuration platform;
    std::string library;  // file of the API library
    bool check = false;   // name what is wrong with the configuration, instead of serving
    bool recover = false; // put the last good copy in the place of a damaged store before the start
    std::string backup;   // file to copy the profile store to, instead of serving; empty: none
    std::string restore;  // copy to put in the place of the profile store, instead of serving
};

// What the command line asks for, or the exit code if it has been answered already: 0 for --help and
// --version, 2 for a wrong option, which standard error names.
std::variant<Options, int> ReadOptions(int argc, char** argv);
