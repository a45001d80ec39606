#include "Access.h"

#include "Documents.h"
#include "Failure.h"
#include "Text.h"

#include <xml/Text.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

namespace client
{
namespace
{

constexpr char kVariable[] = "VARLO_ANALYTICS_PASSWORD";

// What is wrong with a URL that has a path; empty if nothing.
std::string TroubleOf(const std::string& url)
{
    const std::size_t host = url.find("://") + 3;
    const std::string scheme = url.substr(0, host);
    if (scheme != "http://" && scheme != "https://")
        return "it has to begin with http:// or https://";
    const std::string authority = url.substr(host, url.find_first_of("/?#", host) - host);
    if (authority.empty() || authority.front() == ':')
        return "there is no host in it";
    if (authority.find('@') != std::string::npos)
        return "a user is named with --user, and a password never on the command line";
    if (authority.front() == '[' && authority.find(']') == std::string::npos)
        return "its IPv6 address doesn't end with ]";
    for (const char c : url)
        if (static_cast<unsigned char>(c) <= ' ' || c == '\x7F')
            return "it holds white space or a control character";
    const std::size_t colon = authority.find(':', authority.front() == '[' ? authority.find(']') : 0);
    if (colon == std::string::npos)
        return "";
    const std::string port = authority.substr(colon + 1);
    std::uint16_t number = 0;
    const bool wrong = port.size() > 5 || port.starts_with('+') ||
                       analytics::xml::ReadInteger(port, number) != std::errc() || number == 0;
    return wrong ? "its port isn't a number from 1 to 65535" : "";
}

std::string FirstLineOf(const std::string& file)
{
    std::string why;
    std::ifstream stream = OpenFile(file, why);
    std::string line;
    if (why.empty() && !std::getline(stream, line) && stream.bad())
        why = std::strerror(errno);
    if (!why.empty())
        throw Failure(Exit::Usage, "The password can't be read from " + file + ": " + why +
                                       ". Name a file that can be read with --password-file");
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

// Asks at the terminal of the process, whatever its input is, and shows nothing of the answer.
std::string Ask(const std::string& user)
{
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0)
        throw Failure(Exit::Usage,
                      std::string("There is no password: name a file with --password-file, or set ") +
                          kVariable);
    termios shown = {};
    tcgetattr(terminal, &shown);
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(terminal, TCSAFLUSH, &hidden);
    const std::string question = "Password of " + Printable(user) + ": ";
    std::string answer;
    char c = 0;
    if (write(terminal, question.data(), question.size()) >= 0)
        while (read(terminal, &c, 1) == 1 && c != '\n')
            answer += c;
    tcsetattr(terminal, TCSAFLUSH, &shown);
    if (write(terminal, "\n", 1) < 0)
        answer.clear();
    close(terminal);
    return answer;
}

bool IsLoopback(const std::string& host)
{
    in_addr address = {};
    return inet_pton(AF_INET, host.c_str(), &address) == 1 && ntohl(address.s_addr) >> 24 == 127;
}

} // namespace

std::string HostOf(const std::string& url)
{
    const std::size_t start = url.find("://") + 3;
    const std::string authority = url.substr(start, url.find_first_of("/?#", start) - start);
    if (authority.front() == '[')
        return authority.substr(1, authority.find(']') - 1);
    return authority.substr(0, authority.find(':'));
}

std::string WholeUrl(const std::string& text, std::string& why)
{
    std::string url = text.find("://") == std::string::npos ? "http://" + text : text;
    if (url.find_first_of("/?#", url.find("://") + 3) == std::string::npos)
        url += '/';
    why = TroubleOf(url);
    return url;
}

std::string WholeUrl(const std::string& text)
{
    std::string why;
    std::string url = WholeUrl(text, why);
    if (!why.empty())
        throw Failure(Exit::Usage, "'" + Printable(text) + "' isn't the address of a service: " + why +
                                       ". Write it as http://192.168.0.90:8080/ or https://camera.example/");
    return url;
}

void GuardPassword(const Access& access)
{
    if (access.user.empty() || access.insecure || access.url.compare(0, 7, "http://") != 0)
        return;
    const std::string host = HostOf(access.url);
    if (host == "localhost" || host == "::1" || IsLoopback(host))
        return;
    throw Failure(Exit::Usage, "The password isn't sent to " + Printable(host) +
                                   " over plain http, where others can read it. Use https:// in the address; "
                                   "--insecure sends it all the same");
}

std::string ReadPassword(const std::string& user, const std::string& file)
{
    if (user.empty() && !file.empty())
        throw Failure(Exit::Usage, "The password in " + file + " is nobody's. Name the user with --user");
    if (user.empty())
        return "";
    if (!file.empty())
        return FirstLineOf(file);
    if (const char* const password = std::getenv(kVariable))
        return password;
    return Ask(user);
}

} // namespace client
