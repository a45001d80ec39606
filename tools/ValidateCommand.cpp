#include "Behaviors.h"
#include "Documents.h"
#include "Failure.h"
#include "Session.h"
#include "documents/Models.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

// The result for one file.
struct Verdict
{
    std::string file;
    std::string kind; // empty: unknown
    long long errors = 0;
    long long warnings = 0;
};

void Count(Verdict& verdict, const Findings& findings)
{
    for (const Finding& finding : findings)
        ++(finding.level == Finding::Level::Error ? verdict.errors : verdict.warnings);
}

// One that can't be read is an error like any other, so that the next file has its turn.
Verdict Validate(Session& session, const std::string& file)
{
    Verdict verdict{file, "", 0, 0};
    Source source{file, ""};
    try
    {
        source = ReadSource(file);
        verdict.file = source.name;
        const DocumentModel& model = ModelFor(source);
        verdict.kind = model.name;
        const Findings findings = FindingsOf(source, model, session.Frame());
        Tell(source, findings, session.json);
        Count(verdict, findings);
    }
    catch (const DocumentFailure& failure)
    {
        Tell(source, {failure.AsFinding()}, session.json);
        ++verdict.errors;
    }
    return verdict;
}

std::string Said(const Verdict& verdict)
{
    if (verdict.errors + verdict.warnings == 0)
        return "correct";
    const auto count = [](long long number, const std::string& what)
    { return number == 0 ? "" : std::to_string(number) + " " + what + (number == 1 ? "" : "s"); };
    const std::string errors = count(verdict.errors, "error");
    const std::string warnings = count(verdict.warnings, "warning");
    return errors + (errors.empty() || warnings.empty() ? "" : ", ") + warnings;
}

void ValidateAll(Session& session, const std::vector<std::string>& files)
{
    List list{{{"file", "FILE"}, {"kind", "OF"}, {"errors", ""}, {"warnings", ""}, {"result", "RESULT"}}, {}};
    long long errors = 0;
    long long warnings = 0;
    for (const std::string& file : files)
    {
        const Verdict verdict = Validate(session, file);
        errors += verdict.errors;
        warnings += verdict.warnings;
        list.rows.push_back({verdict.file, verdict.kind, verdict.errors, verdict.warnings, Said(verdict)});
    }
    session.Out().Table(list, "");
    if (errors > 0 || (session.strict && warnings > 0))
        throw Failure(
            Exit::Document,
            errors > 0
                ? "There are errors; 'varlo-analytics behavior explain NAME' tells what the fields mean"
                : "There are warnings, and --strict takes none; correct what they name, or leave it out");
}

} // namespace

void AddValidateCommand(CLI::App& app, Session& session)
{
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command =
        AddCommand(app, session, "validate", "Check documents without a service",
                   "  varlo-analytics validate loitering.xml scene.xml\n"
                   "  varlo-analytics behavior example loitering | varlo-analytics validate --strict -",
                   [&session, files] { ValidateAll(session, *files); });
    TakeWords(command->add_option("FILE", *files,
                                  "Documents of behaviors and scenes, in XML or JSON; - is standard input"))
        ->required();
    command->add_flag("--strict", session.strict, "A warning is as bad as an error");
}

} // namespace client
