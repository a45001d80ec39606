#pragma once

#include "access/Users.h"
#include "files/StandardError.h"
#include "files/WatchedFile.h"

#include <memory>
#include <string>

namespace tarno::osa
{

// The text of a file as it last stood. Throws AccessFault if it couldn't be read.
inline const std::string& TextOf(const analytics::platform::WatchedFile& file)
{
    if (!file.Last().failure.empty())
        throw AccessFault(file.Path() + ": it can't be read (" + file.Last().failure +
                          "); make it readable, or name another in the settings document");
    return file.Last().text;
}

// Replaces `value` by what `make` yields. If that throws an AccessFault, standard error says so and the
// old value stays; without an old value the fault goes on.
template <class T, class Make>
void TakeOver(std::shared_ptr<T>& value, Make make)
{
    try
    {
        value = make();
    }
    catch (const AccessFault& fault)
    {
        if (value == nullptr)
            throw;
        analytics::platform::Say(std::string(fault.what()) + ". What was read before stays in force.");
    }
}

} // namespace tarno::osa
