#include "Behaviors.h"
#include "Failure.h"
#include "Scene.h"
#include "Session.h"
#include "StoreBehavior.h"
#include "documents/Models.h"
#include "documents/ZoneEdit.h"

#include <xml/Text.h>

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct ZoneArguments
{
    std::string profile;
    std::string behavior;
    std::string zone;
    std::vector<std::string> points;
    std::string by;
    bool excluded = false;
};

// Of 32 bits, as in documents.
bool TakeNumber(std::string_view text, long long& number)
{
    int value = 0;
    const bool whole = analytics::xml::ReadInteger(text, value) == std::errc();
    number = value;
    return whole;
}

Point PointIn(const std::string& text)
{
    const std::size_t comma = text.find(',');
    Point point{};
    if (comma == std::string::npos || !TakeNumber(std::string_view(text).substr(0, comma), point.x) ||
        !TakeNumber(std::string_view(text).substr(comma + 1), point.y))
        throw Failure(Exit::Usage,
                      "'" + text + "' isn't a point. Write x and y with a comma between, as in 40,200");
    return point;
}

PointList PointsIn(const std::vector<std::string>& texts)
{
    PointList points;
    for (const std::string& text : texts)
        points.push_back(PointIn(text));
    return points;
}

const DocumentModel& ZonesModel(const std::string& behavior)
{
    const DocumentModel* const model = FindModel(BehaviorId(behavior));
    if (model == nullptr)
        throw Failure(Exit::Usage, "This program knows nothing of the zones of " + behavior +
                                       ". 'varlo-analytics behavior --help' shows the names that it knows");
    return *model;
}

// The document as it is stored, and the number of its profile; empty if the behavior is idle.
std::pair<int, std::string> Stored(Session& session, const ZoneArguments& arguments,
                                   const DocumentModel& model)
{
    const int profile = ExistingProfile(session.Service(), arguments.profile).id;
    for (const Behavior& behavior : session.Service().Availability(profile))
        if (behavior.id == model.alias)
            return {profile, BehaviorOf(session.Service(), profile, model.alias)};
    throw Failure(Exit::Refused, "The service has no behavior " + model.name +
                                     ". 'varlo-analytics availability' shows those that it has");
}

void Store(Session& session, const ZoneArguments& arguments, const DocumentModel& model,
           const std::string& document)
{
    StoreBehavior(session, {model.name, document}, arguments.profile, model.alias);
}

std::string Written(const PointList& points)
{
    std::string text;
    for (const Point& point : points)
        text += (text.empty() ? "" : " ") + std::to_string(point.x) + "," + std::to_string(point.y);
    return text;
}

void ShowZones(Session& session, const ZoneArguments& arguments)
{
    const DocumentModel& model = ZonesModel(arguments.behavior);
    List list{{{"name", "NAME"}, {"excluded", "EXCLUDED"}, {"", "POINTS"}, {"points", ""}}, {}};
    for (const NamedZone& zone : ZonesOf(model, Stored(session, arguments, model).second))
    {
        Json points = Json::array();
        for (const Point& point : zone.points)
            points.push_back({point.x, point.y});
        list.rows.push_back({zone.name, zone.excluded, Written(zone.points), Raw{points}});
    }
    session.Out().Table(list,
                        model.name + (model.HasZones() ? " has no zones in this profile. 'varlo-analytics "
                                                         "zone add' makes one."
                                                       : " is a behavior without zones."));
}

void Add(Session& session, const ZoneArguments& arguments)
{
    const DocumentModel& model = ZonesModel(arguments.behavior);
    CheckCharacters(arguments.zone);
    const NamedZone zone{arguments.zone, arguments.excluded, PointsIn(arguments.points)};
    Store(session, arguments, model, WithZone(model, Stored(session, arguments, model).second, zone));
}

void Move(Session& session, const ZoneArguments& arguments)
{
    const DocumentModel& model = ZonesModel(arguments.behavior);
    const PointList points = PointsIn(arguments.points);
    if (points.empty() == arguments.by.empty())
        throw Failure(Exit::Usage, "Give the zone new points, or say by --by DX,DY how far it is moved");
    const Point by = arguments.by.empty() ? Point{} : PointIn(arguments.by);
    const std::string document = Stored(session, arguments, model).second;
    NamedZone zone = ZoneNamed(model, document, arguments.zone);
    if (!points.empty())
        zone.points = points;
    else
        for (Point& point : zone.points)
            point = {point.x + by.x, point.y + by.y};
    Store(session, arguments, model, WithPoints(model, document, zone));
}

void Remove(Session& session, const ZoneArguments& arguments)
{
    const DocumentModel& model = ZonesModel(arguments.behavior);
    Store(session, arguments, model,
          WithoutZone(model, Stored(session, arguments, model).second, arguments.zone));
}

using ZoneAction = void (*)(Session&, const ZoneArguments&);

CLI::App* AddOne(CLI::App& group, Session& session, const std::string& name, const std::string& description,
                 const std::string& examples, ZoneAction action,
                 const std::shared_ptr<ZoneArguments>& arguments)
{
    CLI::App* const command = AddCommand(group, session, name, description, examples,
                                         [&session, action, arguments] { action(session, *arguments); });
    command->add_option("PROFILE", arguments->profile, "Number or name of the profile")->required();
    command->add_option("BEHAVIOR", arguments->behavior, "Name or identifier of the behavior")->required();
    return command;
}

} // namespace

void AddZoneCommands(CLI::App& app, Session& session)
{
    CLI::App* const group = app.add_subcommand("zone", "List, add, move and remove the zones of a behavior");
    group->require_subcommand(1);
    group->footer("Adding, moving and removing a zone reads the behavior, changes it and stores it whole: of "
                  "two that do so "
                  "at the same time, one change is lost.");
    const auto arguments = [] { return std::make_shared<ZoneArguments>(); };
    AddOne(*group, session, "list", "List the zones of a behavior",
           "  varlo-analytics zone list \"Car park\" loitering", ShowZones, arguments());
    const auto add = arguments();
    CLI::App* const adding = AddOne(
        *group, session, "add", "Add a zone that raises alarms; an idle behavior becomes active with it",
        "  varlo-analytics zone add \"Car park\" loitering Gate 40,40 280,40 280,200\n"
        "  varlo-analytics zone add \"Car park\" stopped-vehicle Tree --exclude 60,60 80,60 80,80",
        Add, add);
    adding->add_option("ZONE", add->zone, "Its name; that of an exclude zone is given by the service")
        ->required();
    adding->add_option("POINT", add->points, "Its corners as X,Y; two are a line")->required();
    adding->add_flag("--exclude", add->excluded, "An exclude zone: a part of the picture that doesn't count");
    const auto move = arguments();
    CLI::App* const moving =
        AddOne(*group, session, "move", "Give a zone other points, or move all of them",
               "  varlo-analytics zone move \"Car park\" loitering Gate 40,40 280,40 280,220\n"
               "  varlo-analytics zone move \"Car park\" loitering Gate --by 10,-5",
               Move, move);
    moving->add_option("ZONE", move->zone, "Its name")->required();
    moving->add_option("POINT", move->points, "Its new corners as X,Y");
    moving->add_option("--by", move->by, "How far each point moves")->type_name("DX,DY");
    const auto remove = arguments();
    CLI::App* const removing =
        AddOne(*group, session, "remove", "Remove a zone",
               "  varlo-analytics zone remove \"Car park\" loitering Gate", Remove, remove);
    removing->add_option("ZONE", remove->zone, "Its name")->required();
    for (CLI::App* const command : {adding, moving, removing})
        AddChecks(*command, session);
}

} // namespace client
