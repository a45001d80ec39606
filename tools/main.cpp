// The command-line client of the analytics service.

#include "CommandLine.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>

// Takes the numbers of standard streams that are closed, lest a connection gets them and what is written
// there.
static void HoldStandardStreams()
{
    int file = 0;
    while (file >= 0 && file <= STDERR_FILENO)
        file = open("/dev/null", O_RDONLY);
    close(file);
}

int main(int argc, char** argv)
{
    HoldStandardStreams();
    std::setlocale(LC_CTYPE, "C.UTF-8"); // for the width of characters
    signal(SIGPIPE, SIG_IGN);
    // A host name that can't be resolved costs seconds, not minutes.
    setenv("RES_OPTIONS", "timeout:2 attempts:2", 0);
    return client::RunCommandLine(argc, argv);
}
