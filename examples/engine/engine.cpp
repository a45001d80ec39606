// A small analytics engine: it watches the folder in which the service keeps what is to run, tells which
// rules it runs with which zones, and starts anew at each change. It analyses nothing; where a real engine
// would set up its rules, this one writes them to standard output.
//
//   engine DIR

#include <nlohmann/json.hpp>
#include <openssl/evp.h>
#include <pugixml.hpp>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace
{

constexpr int kSecond = 1000; // milliseconds

struct Rule
{
    std::string type; // such as com.varlo.rule.loiteringdetection
    std::string name; // of its zone
    std::vector<std::pair<int, int>> zone;
};

// What is to run. The service counts `sequence` up with each change.
struct Work
{
    std::int64_t sequence = 0;
    std::string profile; // empty if none is active
    std::vector<Rule> rules;
};

std::optional<std::string> ReadFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return std::nullopt;
    return (std::stringstream() << stream.rdbuf()).str();
}

std::string Sha256(const std::string& text)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    std::size_t length = 0;
    EVP_Q_digest(nullptr, "SHA256", nullptr, text.data(), text.size(), digest, &length);
    std::string hexadecimal;
    for (std::size_t at = 0; at < length; ++at)
        for (const int digit : {digest[at] >> 4, digest[at] & 15})
            hexadecimal += "0123456789abcdef"[digit];
    return hexadecimal;
}

// The rules of the types that are marked as active, in the order of the document.
std::vector<Rule> ReadRules(const std::string& document)
{
    pugi::xml_document xml;
    if (!xml.load_buffer(document.data(), document.size()))
        return {};
    std::set<std::string> active;
    for (const auto& mark : xml.select_nodes("//va:ActiveRule"))
        active.insert(mark.node().attribute("Type").value());
    std::vector<Rule> rules;
    for (const auto& found : xml.select_nodes("//tt:Rule"))
    {
        const pugi::xml_node node = found.node();
        Rule rule{node.attribute("Type").value(), node.attribute("Name").value(), {}};
        if (!active.contains(rule.type))
            continue;
        for (const auto& point : node.select_nodes("tt:Parameters/tt:ElementItem[not(@Name)]/*/tt:Point"))
            rule.zone.emplace_back(point.node().attribute("x").as_int(),
                                   point.node().attribute("y").as_int());
        rules.push_back(rule);
    }
    return rules;
}

// Nothing while the files are missing or are being changed: state.json is written last, and is asked again.
std::optional<Work> ReadWork(const std::string& folder)
{
    const auto state = nlohmann::json::parse(ReadFile(folder + "/state.json").value_or(""), nullptr, false);
    if (!state.is_object())
        return std::nullopt;
    Work work{state["sequence"], "", {}};
    if (state["profile"].is_null())
        return work;
    work.profile = state["profile"]["name"];
    if (state["document"].is_null() || state["analytics"] == false)
        return work;
    const auto document = ReadFile(folder + "/active.xml");
    if (!document || Sha256(*document) != state["document"]["sha256"])
        return std::nullopt;
    work.rules = ReadRules(*document);
    return work;
}

void Run(const Work& work)
{
    std::cout << "sequence " << work.sequence << ": "
              << (work.rules.empty() ? "nothing runs" : "profile " + work.profile + " runs") << "\n";
    for (const Rule& rule : work.rules)
    {
        std::cout << "  " << rule.type << " \"" << rule.name << "\"";
        for (const auto& [x, y] : rule.zone)
            std::cout << " (" << x << "," << y << ")";
        std::cout << "\n";
    }
    std::cout.flush();
}

// Tells when something in a folder has changed. The folder may come and go.
class Watch
{
  public:
    explicit Watch(std::string folder) : m_folder(std::move(folder)), m_inotify(inotify_init1(IN_NONBLOCK)) {}

    // Returns at a change, and after a second at the latest.
    void Wait()
    {
        // Watching a folder that is watched already changes nothing; one that was made anew is another.
        inotify_add_watch(m_inotify, m_folder.c_str(), IN_MOVED_TO | IN_DELETE);
        pollfd ready = {m_inotify, POLLIN, 0};
        poll(&ready, 1, kSecond);
        char events[4096];
        while (read(m_inotify, events, sizeof events) > 0)
        {
        }
    }

  private:
    const std::string m_folder;
    const int m_inotify; // for as long as the process lives
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::cerr << "engine: name the folder that the service writes, such as /run/varlo-analytics/engine\n";
        return 2;
    }
    Watch watch(argv[1]);
    std::int64_t last = -1;
    for (;; watch.Wait())
    {
        const std::optional<Work> work = ReadWork(argv[1]);
        if (!work || work->sequence == last)
            continue;
        last = work->sequence;
        Run(*work);
    }
}
