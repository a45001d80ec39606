// The command-line client of the analytics service.

#include "CommandLine.h"

#include <signal.h>

#include <clocale>
#include <cstdlib>

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "C.UTF-8"); // for the width of characters
    signal(SIGPIPE, SIG_IGN);
    // A host name that can't be resolved costs seconds, not minutes.
    setenv("RES_OPTIONS", "timeout:2 attempts:2", 0);
    return client::RunCommandLine(argc, argv);
}
