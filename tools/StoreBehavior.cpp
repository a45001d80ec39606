#include "StoreBehavior.h"

#include "Behaviors.h"
#include "Reasons.h"
#include "Session.h"
#include "Text.h"
#include "documents/Models.h"

namespace client
{
namespace
{

void CheckAvailability(Session& session, const Source& source, int profile, const DocumentModel& model)
{
    std::vector<std::string> active = ActiveBehaviors(session.Service(), profile);
    std::erase(active, model.alias);
    for (const Misfit& misfit : Misfits(session.Service(), active, {model.alias}))
    {
        const Findings findings = {{Finding::Level::Warning, 0, "/active", misfit.text}};
        Tell(source, findings, session.json);
        Judge(source, findings, session.Checks());
    }
}

} // namespace

void StoreBehavior(Session& session, const Source& source, const std::string& called, const std::string& id)
{
    const DocumentModel* const model = FindModel(id);
    const std::string document = Checked(source, model, session.Checks());
    const int profile = ProfileId(session.Service(), called);
    if (model != nullptr && IsActive(*model, document))
        CheckAvailability(session, source, profile, *model);
    Service& service = session.Service();
    service.SetProfileBehavior(profile, id, document);
    const std::string stored = service.ProfileBehavior(profile, id);
    const std::vector<Change> changes = ChangesIn(model, document, stored);
    std::string sentence = "Profile " + std::to_string(profile) + " has stored " + BehaviorCalled(id);
    if (Trimmed(stored).empty())
        sentence += ", which is idle: not active and without zones.";
    else
        sentence += changes.empty() ? " as it was sent." : ". This came back different:";
    session.Out().Report(
        {{"profile", static_cast<long long>(profile)}, {"behavior", BehaviorCalled(id)}, {"id", id}},
        sentence, "differences", Listed(changes));
}

} // namespace client
