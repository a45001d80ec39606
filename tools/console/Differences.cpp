#include "console/Differences.h"

#include "documents/Meanings.h"

namespace client
{
namespace
{

constexpr char kNothing[] = "nothing";

bool IsPoint(const Json& json) { return json.is_array() && json.size() == 2 && !json[0].is_structured(); }

// Points as "40,40 280,40"; a zone by its points.
std::string Shown(const Json& json)
{
    if (json.is_null())
        return kNothing;
    if (json.is_string())
        return json.get<std::string>();
    if (IsPoint(json))
        return Shown(json[0]) + "," + Shown(json[1]);
    if (json.is_object())
        return json.contains("vertices") ? Shown(json["vertices"]) : json.dump();
    if (!json.is_array())
        return json.dump();
    std::string text;
    for (const Json& item : json)
        text += (text.empty() ? "" : " ") + Shown(item);
    return text.empty() ? kNothing : text;
}

std::string Word(const std::string& name, const Json& json)
{
    const std::vector<std::string>& choices = MeaningOf(name).choices;
    if (json.is_number_integer() && json >= 0 && json < choices.size())
        return choices[json.get<std::size_t>()];
    return Shown(json);
}

Json At(const Json& json, const std::string& name) { return json.contains(name) ? json[name] : Json(); }
Json At(const Json& json, std::size_t index) { return index < json.size() ? json[index] : Json(); }

class Comparison
{
  public:
    Json changes = Json::array();

    void Members(const Json& before, const Json& after, const std::string& title)
    {
        for (const auto& [name, value] : before.items())
            Member(name, value, At(after, name), title);
        for (const auto& [name, value] : after.items())
            if (!before.contains(name))
                Member(name, Json(), value, title);
    }

  private:
    void Member(const std::string& name, const Json& before, const Json& after, const std::string& title)
    {
        if (SameValue(before, after))
            return;
        const std::string& label = MeaningOf(name).label;
        if (name == "rois" || name == "excludeZones")
            Items(before, after, name == "rois" ? "Zone " : "Exclude zone ");
        else if (before.is_object() && after.is_object())
            Members(before, after, title);
        else
            changes.push_back({{"field", title + (label.empty() ? name : label)},
                               {"before", Word(name, before)},
                               {"after", Word(name, after)}});
    }

    void Items(const Json& before, const Json& after, const std::string& kind)
    {
        for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i)
        {
            const Json was = At(before, i);
            const Json is = At(after, i);
            if (SameValue(was, is))
                continue;
            const Json& named = was.is_null() ? is : was;
            const std::string title =
                kind + (named.is_object() ? Shown(At(named, "name")) : std::to_string(i + 1));
            if (was.is_object() && is.is_object())
                Members(was, is, title + ": ");
            else
                changes.push_back({{"field", title}, {"before", Shown(was)}, {"after", Shown(is)}});
        }
    }
};

} // namespace

Json Differences(const Json& before, const Json& after)
{
    Comparison comparison;
    comparison.Members(before, after, "");
    return comparison.changes;
}

bool SameValue(const Json& a, const Json& b) { return nlohmann::json(a) == nlohmann::json(b); }

} // namespace client
