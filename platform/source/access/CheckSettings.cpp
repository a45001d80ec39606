#include "access/AccessSettings.h"
#include "access/TlsSource.h"
#include "access/Users.h"
#include "files/File.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace tarno::osa
{
namespace
{

struct Known
{
    std::string_view path; // of an element, or of an attribute behind '@'
    bool number = false;
    std::int64_t least = 0;
    std::int64_t most = std::numeric_limits<std::int32_t>::max();
};

constexpr std::array kKnown = {
    Known{"settings"},
    Known{"settings/backlog", true, 1},
    Known{"settings/maxResource", true, 0, std::numeric_limits<std::uint32_t>::max()},
    Known{"settings/maxSelectableRules"},
    Known{"settings/maxSelectableRules/numberOfCount", true},
    Known{"settings/maxSelectableRules/countOnlyConfigurable", true, 0, 1},
    Known{"settings/nonUserConfigurableRules"},
    Known{"settings/nonUserConfigurableRules/id"},
    Known{"settings/limits"},
    Known{"settings/limits/documentElements", true, 1},
    Known{"settings/limits/profileBytes", true, 1},
    Known{"settings/engine"},
    Known{"settings/server"},
    Known{"settings/server/endpoint"},
    Known{"settings/server/endpoint@name"},
    Known{"settings/server/endpoint@address"},
    Known{"settings/server/endpoint@port", true, 0, 65535},
    Known{"settings/server/endpoint@certificate"},
    Known{"settings/server/endpoint@privateKey"},
    Known{"settings/server/endpoint@clientCertificates"},
    Known{"settings/server/endpoint@revoked"},
    Known{"settings/server/endpoint@sessionSeconds", true},
    Known{"settings/server/endpoint@insecure", true, 0, 1},
    Known{"settings/server/users"},
    Known{"settings/server/roles"},
    Known{"settings/server/roles/administrator"},
    Known{"settings/server/roles/operator"},
    Known{"settings/server/roles/viewer"},
    Known{"settings/server/audit"},
    Known{"settings/server/metrics"},
    Known{"settings/server/metrics@address"},
    Known{"settings/server/metrics@port", true, 0, 65535},
    Known{"settings/server/metrics@insecure", true, 0, 1},
    Known{"settings/server/workers", true, 1},
    Known{"settings/server/maxConnections", true, 1},
    Known{"settings/server/maxRequestBytes", true, 1},
    Known{"settings/server/requestSeconds", true, 1},
};

const Known* Find(const std::string& path)
{
    const auto* const known =
        std::find_if(kKnown.begin(), kKnown.end(), [&path](const Known& each) { return each.path == path; });
    return known == kKnown.end() ? nullptr : known;
}

// One walk over a document.
class Walk
{
  public:
    Walk(const std::string& path, const std::string& text) : m_path(path), m_lines(text) {}

    void Element(pugi::xml_node element, const std::string& parent)
    {
        const std::string path = parent + element.name();
        const Known* const known = Find(path);
        const std::string shown = std::string("<") + element.name() + '>';
        if (known == nullptr)
            return Add(element, shown + " isn't known here; correct its name or remove it");
        Value(element, *known, shown, analytics::xml::Content(element));
        for (const pugi::xml_attribute attribute : element.attributes())
        {
            const Known* const knownToo = Find(path + '@' + attribute.name());
            const std::string name = std::string("the attribute ") + attribute.name() + " of " + shown;
            if (knownToo == nullptr)
                Add(element, name + " isn't known; correct its name or remove it");
            else
                Value(element, *knownToo, name, attribute.value());
        }
        for (const pugi::xml_node child : element.children())
            if (child.type() == pugi::node_element)
                Element(child, path + '/');
    }
    std::vector<std::string> Mistakes() && { return std::move(m_mistakes); }

  private:
    void Value(pugi::xml_node element, const Known& known, const std::string& name,
               const std::string& content)
    {
        const std::string text(analytics::xml::Trimmed(content));
        if (!known.number || text.empty())
            return;
        std::int64_t number = 0;
        if (analytics::xml::ReadInteger(text, number) != std::errc() || number < known.least ||
            number > known.most)
            Add(element, name + " is \"" + text.substr(0, 40) + "\"; it takes a whole number from " +
                             std::to_string(known.least) + " to " + std::to_string(known.most));
    }
    void Add(pugi::xml_node element, const std::string& sentence)
    {
        m_mistakes.push_back(m_path + ':' + std::to_string(m_lines.Of(element)) + ": " + sentence);
    }

    const std::string m_path;
    const analytics::xml::Lines m_lines;
    std::vector<std::string> m_mistakes;
};

// Adds why `use` fails, if it does.
template <class Use>
void Try(std::vector<std::string>& mistakes, Use use)
{
    try
    {
        use();
    }
    catch (const AccessFault& fault)
    {
        mistakes.emplace_back(fault.what());
    }
}

} // namespace

std::vector<std::string> MistakesInSettings(const std::string& path, const std::string& text)
{
    pugi::xml_document tree;
    analytics::xml::SyntaxError error;
    if (!analytics::xml::Read(text, tree, error))
        return {path + ':' + std::to_string(error.line) + ": " + error.reason};
    Walk walk(path, text);
    walk.Element(tree.document_element(), "");
    return std::move(walk).Mistakes();
}

std::vector<std::string> MistakesInAccess(const std::string& address)
{
    std::vector<std::string> mistakes;
    const AccessSettings access = AccessInSettings("kestrile-server");
    Try(mistakes, [&] { CheckAccess(access, address); });
    if (!access.certificate.empty() && !access.privateKey.empty())
        Try(mistakes, [&] { TlsSource source(access); });
    if (access.users.empty())
        return mistakes;
    Try(mistakes,
        [&]
        {
            analytics::platform::WatchedFile file(access.users);
            file.Renew();
            const Users users(access.users, TextOf(file));
            mistakes.insert(mistakes.end(), users.Mistakes().begin(), users.Mistakes().end());
            if (users.Mistakes().empty() && !users.WhyNobody().empty())
                throw AccessFault(users.WhyNobody());
        });
    return mistakes;
}

} // namespace tarno::osa
