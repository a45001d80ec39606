#include "access/TakeOver.h"

#include "files/StandardError.h"

namespace tarno::osa
{
using analytics::platform::SayOnce;

const std::string& TextOf(const analytics::platform::WatchedFile& file)
{
    if (!file.Last().failure.empty())
        throw AccessFault(
            file.Path() + ": it can't be read (" + file.Last().failure +
            "); make it readable for the service, with \"chgrp varlo-analytics FILE\" and \"chmod 640 "
            "FILE\" for one that others may not read, or name another in the settings document");
    return file.Last().text;
}

void SayTakenOver(const std::string& path) { SayOnce(path + ": what is in it now was taken over."); }

void SayNotTakenOver(const AccessFault& fault)
{
    SayOnce(std::string(fault.what()) + ". What was read before stays in force.");
}

void SayLeftOut(const std::string& sentence) { SayOnce(sentence + ". The line is left out."); }

} // namespace tarno::osa
