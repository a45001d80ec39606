#include "Documents.h"

#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"
#include "documents/Check.h"
#include "documents/Models.h"
#include "documents/Shape.h"

#include <algorithm>
#include <iostream>

namespace client
{
namespace
{

bool IsJson(const std::string& text)
{
    const std::string front = Trimmed(text).substr(0, 1);
    return front == "{" || front == "[";
}

[[noreturn]] void Refuse(const Source& source, const std::string& why, long line = 0)
{
    throw DocumentFailure(source.name, line, why);
}

Json ReadJson(const Source& source)
{
    try
    {
        return ParseJson(source.text);
    }
    catch (const JsonError& error)
    {
        Refuse(source,
               std::string(error.what()) + ". Nothing has been sent; correct the document and try again",
               error.line);
    }
}

// What `get --json` writes has the document in it.
Json Unwrapped(Json json)
{
    if (json.is_object() && json.contains("document"))
        return Json(json["document"]);
    return json;
}

pugi::xml_document Built(const Source& source, const DocumentModel& model, Findings& findings)
{
    const Json json = Unwrapped(ReadJson(source));
    if (json.is_null())
        Refuse(source, "there is no document in it, as of a behavior that is idle. Nothing has been sent; "
                       "'varlo-analytics behavior example' shows a full one");
    return FromJson(model, json, findings);
}

const XmlDocument Parsed(const Source& source, const DocumentModel& model, Findings& findings)
{
    if (IsJson(source.text))
        return XmlDocument(Built(source, model, findings));
    XmlDocument document(source.text, source.name);
    if (RootOf(model, document.Root()).empty())
        Refuse(source, "the document has no <" + model.root.name +
                           "> element. Nothing has been sent; "
                           "'varlo-analytics " +
                           (model.IsScene() ? "scene" : "behavior") + " example' shows a full one");
    return document;
}

std::string Counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::size_t Count(const Findings& findings, Finding::Level level)
{
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(),
                                                  [level](const Finding& finding)
                                                  { return finding.level == level; }));
}

} // namespace

const DocumentModel& ModelFor(const Source& source)
{
    std::string id;
    if (IsJson(source.text))
    {
        const Json json = Unwrapped(ReadJson(source));
        if (!json.is_object())
            Refuse(source, "this isn't a document: it has to be an object, as 'varlo-analytics behavior get "
                           "--json' writes it");
        if (!json.contains("id") && !json.contains("active") && !json.contains("rois"))
            return SceneModel();
        id = json.contains("id") && json["id"].is_string() ? json["id"].get<std::string>() : "";
    }
    else
    {
        const XmlDocument document(source.text, source.name);
        if (!RootOf(SceneModel(), document.Root()).empty())
            return SceneModel();
        if (std::string_view(document.Root().name()) == "profile")
            Refuse(source,
                   "this lists the documents of an exported profile and is none itself; name the files that "
                   "stand in it",
                   1);
        const pugi::xml_node behavior = document.First("behavior");
        if (behavior.empty())
            Refuse(source,
                   "there is neither a <behavior> nor an <" + SceneModel().root.name +
                       "> in it; "
                       "'varlo-analytics behavior example' and 'scene example' show such documents",
                   1);
        id = behavior.attribute("id").value();
    }
    const DocumentModel* const model = FindModel(id);
    if (model == nullptr)
        Refuse(source,
               id.empty()
                   ? "the document doesn't say of which behavior it is: its id is missing; write it as "
                     "'varlo-analytics behavior example' does"
                   : "the behavior '" + id +
                         "' isn't known; 'varlo-analytics behavior --help' shows the names");
    return *model;
}

std::string AsXml(const Source& source, const DocumentModel& model, Findings& findings)
{
    return IsJson(source.text) ? XmlDocument(Built(source, model, findings)).Text() : source.text;
}

Findings FindingsOf(const Source& source, const DocumentModel& model, const Frame& frame)
{
    Findings findings;
    const XmlDocument document = Parsed(source, model, findings);
    for (Finding& finding : Check(model, document, frame))
        findings.push_back(std::move(finding));
    return findings;
}

void Tell(const Source& source, const Findings& findings, bool json)
{
    for (const Finding& finding : findings)
    {
        const std::string level = finding.level == Finding::Level::Error ? "error" : "warning";
        if (json)
        {
            Json object = {{"file", source.name}};
            if (finding.line > 0)
                object["line"] = finding.line;
            object.update({{"field", finding.field}, {"level", level}, {"text", finding.text}});
            std::cerr << JsonLine(object) << '\n';
            continue;
        }
        const std::string place = finding.line > 0        ? std::to_string(finding.line) + ":"
                                  : finding.field.empty() ? ""
                                                          : " " + finding.field + ":";
        std::cerr << Printable(source.name) << ':' << Printable(place) << ' ' << level << ": "
                  << Printable(finding.text) << '\n';
    }
}

void Judge(const Source& source, const Findings& findings, const Checking& checking)
{
    const std::size_t errors = checking.force ? 0 : Count(findings, Finding::Level::Error);
    if (errors > 0)
        Refuse(source, Counted(errors, "error") +
                           ". Nothing has been sent; correct the document, or send it as it is "
                           "with --force");
    const std::size_t warnings = checking.strict ? Count(findings, Finding::Level::Warning) : 0;
    if (warnings > 0)
        Refuse(source, Counted(warnings, "warning") +
                           ", and --strict takes none. Nothing has been sent; correct "
                           "the document, or leave --strict out");
}

std::string Checked(const Source& source, const DocumentModel* model, const Checking& checking)
{
    if (model == nullptr)
        return XmlDocument(source.text, source.name).Root() ? source.text : "";
    const Findings findings = FindingsOf(source, *model, checking.frame);
    Tell(source, findings, checking.json);
    Judge(source, findings, checking);
    Findings told;
    return AsXml(source, *model, told);
}

std::vector<Change> ChangesIn(const DocumentModel* model, const std::string& sent, const std::string& stored)
{
    if (model == nullptr || Trimmed(stored).empty())
        return {};
    return Changes(*model, sent, stored);
}

List Listed(const std::vector<Change>& changes)
{
    List list{{{"line", "LINE"}, {"node", "NODE"}, {"sent", "SENT"}, {"stored", "STORED"}}, {}};
    for (const Change& change : changes)
        list.rows.push_back({static_cast<long long>(change.line), change.node, change.sent, change.stored});
    return list;
}

} // namespace client
