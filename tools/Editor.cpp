#include "Editor.h"

#include "Failure.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace client
{
namespace
{

std::string EditorCommand()
{
    for (const char* const variable : {"EDITOR", "VISUAL"})
        if (const char* const command = std::getenv(variable); command != nullptr && *command != '\0')
            return command;
    return "vi";
}

std::string TemporaryFile(const std::string& name)
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error)
        throw Failure(Exit::Document, "There is no folder for temporary files: " + error.message() +
                                          ". Name another one in TMPDIR");
    std::string file = (folder / ("varlo-" + name + "-XXXXXX.xml")).string();
    const int descriptor = mkstemps(file.data(), 4);
    if (descriptor < 0)
        throw Failure(Exit::Document, file + " can't be made: " + std::strerror(errno));
    close(descriptor);
    return file;
}

// The variable may hold arguments, so that a shell takes it apart.
void Run(const std::string& file)
{
    const std::string command = EditorCommand() + " \"$@\"";
    const pid_t child = fork();
    if (child == 0)
    {
        execl("/bin/sh", "sh", "-c", command.c_str(), "sh", file.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR)
        ;
    if (child < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw Failure(Exit::Document,
                      "The editor '" + EditorCommand() + "' failed. Name another one in EDITOR");
}

} // namespace

bool Edit(const std::string& name, const std::string& text, const std::function<void(const Source&)>& store)
{
    const std::string file = TemporaryFile(name);
    WriteFile(file, text);
    try
    {
        Run(file);
        const Source written = ReadSource(file);
        const bool changed = written.text != text;
        if (changed)
            store(written);
        std::remove(file.c_str());
        return changed;
    }
    catch (const Failure& failure)
    {
        throw Failure(failure.Code(), std::string(failure.what()) + ". What was written is kept in " + file);
    }
}

} // namespace client
