#include "Options.h"

#include <xml/Text.h>

#include <CLI/CLI.hpp>

namespace
{

constexpr int kWrongOption = 2;

// "ADDRESS:PORT", an IPv6 address in brackets.
std::optional<analytics::platform::Endpoint> ParseEndpoint(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0)
        return std::nullopt;
    std::string address = text.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']')
        address = address.substr(1, address.size() - 2);
    else if (address.find(':') != std::string::npos)
        return std::nullopt;
    std::uint16_t port = 0;
    if (analytics::xml::ReadInteger(std::string_view(text).substr(colon + 1), port) != std::errc())
        return std::nullopt;
    return analytics::platform::Endpoint{address, port};
}

std::string CheckEndpoint(const std::string& text)
{
    return ParseEndpoint(text) ? ""
                               : "'" + text +
                                     "' isn't ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080 "
                                     "(port 0 to 65535, 0 takes a free one)";
}

// As of a script's unset variable: to start a service is not what --backup asks for.
std::string RefuseEmpty(const std::string& value)
{
    return value.empty() ? "the value is empty; give one, or leave the option out" : "";
}

} // namespace

std::variant<Options, int> ReadOptions(int argc, char** argv)
{
    Options options;
    options.library = INSTALLED_LIBRARY;
    std::string listen;

    const CLI::Validator given(RefuseEmpty, "");
    CLI::App app("Hosts the SOAP service of the camera's video analytics.", "varlo-analytics-host");
    // Of an option that comes twice the last counts, so that a script's own options can be overruled.
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.add_option("--listen", listen, "Endpoint to listen on; port 0 takes a free port")
        ->type_name("ADDRESS:PORT")
        ->check(CLI::Validator(CheckEndpoint, ""));
    app.add_option("--settings", options.platform.settingsFile, "Settings document")
        ->type_name("FILE")
        ->check(given)
        ->capture_default_str();
    app.add_option("--plugins", options.platform.pluginFolder, "Plug-in folder")
        ->type_name("DIR")
        ->check(given)
        ->capture_default_str();
    app.add_option("--state", options.platform.stateFolder, "Folder of the profile store, created if missing")
        ->type_name("DIR")
        ->check(given)
        ->capture_default_str();
    app.add_option("--engine", options.platform.engineFolder,
                   "Folder that tells the analytics engine what is to run, created if missing")
        ->type_name("DIR");
    app.add_option("--library", options.library, "API library to load")
        ->type_name("FILE")
        ->check(given)
        ->capture_default_str();
    app.add_flag("--check", options.check,
                 "Name each mistake in settings, users, certificates and plug-ins, and exit with 0 or 1");
    app.add_flag(
        "--recover", options.recover,
        "Put the last good copy in the place of a damaged profile store, keep the damaged files, and "
        "start");
    auto* const backup =
        app.add_option("--backup", options.backup,
                       "Copy the profile store to FILE, which must not exist yet, and end; a service may run")
            ->type_name("FILE")
            ->check(given);
    app.add_option("--restore", options.restore,
                   "Put such a copy in the place of the profile store, and end; no service may run")
        ->type_name("FILE")
        ->check(given)
        ->excludes(backup);
    app.set_version_flag("--version", "varlo-analytics-host " VERSION "\nSQLite " +
                                          analytics::platform::StoreLibraryVersion());
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? 0 : kWrongOption;
    }
    options.platform.listen = ParseEndpoint(listen);
    return options;
}
