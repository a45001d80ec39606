#include "Documents.h"

#include "Behaviors.h"
#include "Check.h"
#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace client
{
namespace
{

void Warn(const Source& source, long line, const std::string& text)
{
    std::cerr << Printable(source.name) << ':' << line << ": " << Printable(text) << '\n';
}

const xmlNode* ElementOf(const XmlDocument& document, const Source& source, const std::string& root)
{
    const xmlNode* const element = document.First(root);
    if (element == nullptr)
        throw Failure(Exit::Document,
                      source.name + ": the document has no <" + root + "> element. Nothing has been sent");
    return element;
}

void BeStrict(const Source& source, std::size_t warnings, bool strict)
{
    if (strict && warnings > 0)
        throw Failure(Exit::Document, source.name + ": " + std::to_string(warnings) +
                                          (warnings == 1 ? " warning" : " warnings") +
                                          ", and --strict takes none. Nothing has been sent");
}

std::size_t WarnOf(const Source& source, const xmlNode* element, const Model& model)
{
    const std::vector<Finding> findings =
        model.children.empty() ? std::vector<Finding>() : Check(element, model);
    for (const Finding& finding : findings)
        Warn(source, finding.line, finding.text);
    return findings.size();
}

} // namespace

Source ReadSource(const std::string& file)
{
    std::ostringstream text;
    if (file == "-")
    {
        if (isatty(STDIN_FILENO) == 1)
            std::cerr << "Reading the document from standard input; Ctrl-D ends it.\n";
        text << std::cin.rdbuf();
        return {"standard input", text.str()};
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream || std::filesystem::is_directory(file))
        throw Failure(Exit::Document,
                      file + " can't be read: " + (stream ? "it is a folder" : std::strerror(errno)));
    text << stream.rdbuf();
    return {file, text.str()};
}

void WriteFile(const std::string& file, const std::string& text)
{
    const std::string unfinished = file + ".part";
    std::ofstream stream(unfinished, std::ios::binary | std::ios::trunc);
    stream << text << std::flush;
    stream.close();
    if (!stream || std::rename(unfinished.c_str(), file.c_str()) != 0)
    {
        const std::string why = std::strerror(errno);
        std::remove(unfinished.c_str());
        throw Failure(Exit::Document, file + " can't be written: " + why);
    }
}

void CheckDocument(const Source& source, const std::string& root, const Model& model, bool strict)
{
    const XmlDocument document(source.text, source.name);
    BeStrict(source, WarnOf(source, ElementOf(document, source, root), model), strict);
}

void CheckBehavior(const Source& source, const std::string& id, const Model& model, bool strict)
{
    const XmlDocument document(source.text, source.name);
    const xmlNode* const element = ElementOf(document, source, "behavior");
    const std::string found = AttributeOf(element, "id");
    std::size_t warnings = WarnOf(source, element, model);
    if (BehaviorCalled(found) != BehaviorCalled(id))
    {
        Warn(source, xmlGetLineNo(element), "the document is of the behavior '" + found + "', not of " + id);
        ++warnings;
    }
    BeStrict(source, warnings, strict);
}

std::vector<Change> ChangesIn(const Source& sent, const std::string& stored, const std::string& root)
{
    if (Trimmed(stored).empty())
        return {};
    const XmlDocument before(sent.text, sent.name);
    const XmlDocument after(stored, "the document that the service has stored");
    return Changes(ElementOf(before, sent, root), ElementOf(after, sent, root));
}

List Listed(const std::vector<Change>& changes)
{
    List list{{{"line", "LINE"}, {"node", "NODE"}, {"sent", "SENT"}, {"stored", "STORED"}}, {}};
    for (const Change& change : changes)
        list.rows.push_back({static_cast<long long>(change.line), change.node, change.sent, change.stored});
    return list;
}

} // namespace client
