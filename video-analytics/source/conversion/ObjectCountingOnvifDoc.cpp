#include <ObjectCountingConverter.h>

#include "frame/ObjectSizes.h"
#include "frame/RuleForm.h"

namespace profile_conversion
{
using namespace frame;
using objectcounting::Config;
using objectcounting::Rule;

template <>
struct frame::RuleForm<Config> : RuleFormDefaults<Config>
{
    static constexpr bool kLinePossible = true;
    // A missing item is 0 here, whatever the clients' form takes for it. That stands.
    static constexpr RuleItem<Rule> kItems[] = {
        {{"EnableAlarm", &Rule::EnableAlarm, &Rule::EnableAlarm}, 0},
        {{"Direction", &Rule::Direction, &Rule::Direction}, 0},
        {{"Severity", &Rule::Severity, &Rule::Severity}, 0},
        {{"DwellTime", &Rule::DwellTime, &Rule::DwellTime}, 0},
        {{"AlarmOnCount", &Rule::AlarmOnCount, &Rule::AlarmOnCount}, 0},
        {{"ResetCounterOnAlarm", &Rule::ResetCounterOnAlarm, &Rule::ResetCounterOnAlarm}, 0},
    };
};

template class frame::RuleDoc<Config>;

void objectcounting::OnvifDoc::AddObjectSizeFiltersNode(const Config& config, analytics::DocumentNode* parent)
{
    const NodePointer filters(parent == nullptr ? nullptr
                                                : AddElementItem(parent, "Name", kObjectSizeFilters));
    AddRectangle(config.AvgObjectSize(), "AvgSize", filters.get());
}

// Every rule sets the size anew, and that of the last one stays. A behavior without rules has lost it.
void objectcounting::OnvifDoc::NodeToObjectSizeFilters(Config& config, analytics::DocumentNode* node,
                                                       analytics::ProfileDoc* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    if (const NodePointer filters = SelectNode(*doc, ElementItem(*doc, kObjectSizeFilters), node))
    {
        Line size;
        ReadRectangle(size, "AvgSize", *filters, *doc);
        config.AvgObjectSize(size);
    }
}

} // namespace profile_conversion
