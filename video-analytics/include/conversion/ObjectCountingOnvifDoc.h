#pragma once

#include <ObjectCountingConfig.h>
#include <frame/RuleDoc.h>

namespace profile_conversion::objectcounting
{

// Unlike the other families' rules, each one holds a value of the behavior: the object size.
class OnvifDoc : public frame::RuleDoc<Config>
{
  public:
    using RuleDoc::AddRuleNode;
    void AddObjectSizeFiltersNode(const Config& config, analytics::DocumentNode* parent) override;
    void NodeToObjectSizeFilters(Config& config, analytics::DocumentNode* node,
                                 analytics::ProfileDoc* doc) override;
};

} // namespace profile_conversion::objectcounting
