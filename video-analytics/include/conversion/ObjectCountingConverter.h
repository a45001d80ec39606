#pragma once

#include <ObjectCountingConfig.h>
#include <frame/BehaviorConverter.h>

namespace profile_conversion
{
namespace objectcounting
{

class VarloDoc : public frame::BehaviorDoc<Config>
{
};

// Unlike the other families' rules, each one holds a value of the behavior: the object size.
class OnvifDoc : public frame::RuleDoc<Config>
{
  public:
    using RuleDoc::AddRuleNode;
    void AddObjectSizeFiltersNode(const Config& config, analytics::DocumentNode* parent) override;
    void NodeToObjectSizeFilters(Config& config, analytics::DocumentNode* node,
                                 analytics::ProfileDoc* doc) override;
};

} // namespace objectcounting

class ObjectCountingConverter
    : public frame::BehaviorConverter<objectcounting::Config, objectcounting::VarloDoc,
                                      objectcounting::OnvifDoc>
{
};

} // namespace profile_conversion
