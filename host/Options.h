#pragma once

#include <analytics/Platform.h>

#include <string>
#include <variant>

struct Options
{
    analytics::platform::Configuration platform;
    std::string library;  // file of the API library
    bool recover = false; // save what can be read of a damaged profile store before the start
};

// What the command line asks for, or the exit code if it has been answered already: 0 for --help and
// --version, 2 for a wrong option, which standard error names.
std::variant<Options, int> ReadOptions(int argc, char** argv);
