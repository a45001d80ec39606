// The beginning of another platform layer, which keeps its settings elsewhere.
#include <analytics/PluginManager.h>
#include <analytics/ProfileManager.h>
#include <analytics/Settings.h>
#include <tarno/osa/TcpServer.h>

namespace analytics
{

std::string Settings::GetValue(const std::string&) { return "1"; }
int Settings::GetValue(const std::string&, int) { return 1; }

} // namespace analytics
