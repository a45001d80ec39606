#pragma once

#include <analytics/ProfileDoc.h>

#include <string>

namespace analytics
{

// An engine document that is put together from parts of others, which leave their documents.
class EngineDocument : public ProfileDoc
{
  public:
    EngineDocument(); // without rules and engine modules

    // Behind the rules that it has: those of type `ruleId`.
    void TakeRules(ProfileDoc& from, const std::string& ruleId);
    void MarkActive(const std::string& ruleId);
    // The module of `engineId`, and every module, of which this document has none yet.
    void TakeEngine(ProfileDoc& from, const std::string& engineId);
    void TakeEngines(ProfileDoc& from);

  private:
    DocumentNode m_rules; // the containers
    DocumentNode m_engines;
};

} // namespace analytics
