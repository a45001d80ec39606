#pragma once

#include <memory>
#include <string>

namespace tarno::osa
{

class ServerLoop;

// What the host can ask of the platform about its server: the one started last. Any thread.
void RegisterServer(const std::shared_ptr<ServerLoop>& server);
void RegisterServerFailure(const std::string& sentence);

} // namespace tarno::osa
