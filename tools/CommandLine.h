#pragma once

namespace client
{

// Does what the command line says, and returns the exit code.
int RunCommandLine(int argc, char** argv);

} // namespace client
