#include "Library.h"

#include <dlfcn.h>

#include <stdexcept>

namespace
{

using Entry = bool (*)();

Entry Find(void* library, const std::string& file, const char* name)
{
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr)
        throw std::runtime_error(file + " is no API library: it has no " + name);
    return reinterpret_cast<Entry>(symbol);
}

} // namespace

Library::Library(const std::string& file)
{
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(std::string("the API library can't be loaded: ") + dlerror());
    start = Find(library, file, "StartVarloAnalyticsApi");
    shutdown = Find(library, file, "ShutdownVarloAnalyticsApi");
}
