#include "documents/Check.h"

#include "documents/StructureCheck.h"
#include "documents/ZoneCheck.h"

#include <algorithm>

namespace client
{

Findings Check(const DocumentModel& model, const XmlDocument& document, const Frame& frame)
{
    Findings findings = CheckStructure(model, document);
    for (Finding& finding : CheckZones(model, document, frame))
        findings.push_back(std::move(finding));
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return findings;
}

bool HasErrors(const Findings& findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.level == Finding::Level::Error; });
}

} // namespace client
