#include "store/ProfileDocument.h"

#include "xml/EngineDocument.h"

namespace analytics
{

std::string MergeProfile(const std::vector<StoredRule>& rules, const std::vector<StoredEngine>& engines)
{
    EngineDocument merged;
    bool empty = true;
    for (const StoredEngine& engine : engines)
    {
        ProfileDoc stored;
        if (!stored.ParseString(engine.config))
            continue;
        merged.TakeEngine(stored, engine.id);
        empty = false;
    }
    for (const StoredRule& rule : rules)
    {
        ProfileDoc stored;
        if (!stored.ParseString(rule.config))
            continue;
        merged.TakeRules(stored, rule.id);
        merged.TakeEngines(stored);
        if (rule.active)
            merged.MarkActive(rule.id);
        empty = false;
    }
    return empty ? std::string() : merged.DumpToString();
}

} // namespace analytics
