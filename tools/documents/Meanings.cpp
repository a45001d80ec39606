#include "documents/Meanings.h"

#include <algorithm>

namespace client
{
namespace
{

constexpr Bounds kLevels = {1, 10};
constexpr Bounds kTime = {0, INT_MAX};
constexpr Bounds kSomething = {1, INT_MAX};

const std::vector<Meaning>& All()
{
    static const std::vector<Meaning> all = {
        {"active", "Active", "", "whether the behavior works while its profile runs", {}, {"no", "yes"}},
        {"advanceMode", "Advanced mode", "", "whether the engine's own settings count", {}, {"no", "yes"}},
        {"sensitivity",
         "Sensitivity",
         "level",
         "how little is enough to be seen; 5 is in the middle",
         kLevels,
         {}},
        {"objectSpeed", "Object speed", "level", "how fast the objects are; 5 is in the middle", kLevels, {}},
        {"rois",
         "Zones",
         "",
         "the parts of the picture that are watched, and lines that are crossed",
         {},
         {}},
        {"name", "Name", "", "what people call it", {}, {}},
        {"enable", "Alarm", "", "whether it raises alarms", {}, {"no", "yes"}},
        {"alarmSeverity",
         "Severity",
         "",
         "how bad the alarm is",
         {},
         {"minor", "normal", "major", "critical"}},
        {"dwellTime",
         "Dwell time",
         "seconds",
         "how long an object has to be there before it counts",
         kTime,
         {}},
        {"alarmDelay",
         "Alarm delay",
         "seconds",
         "how long it has to last before the alarm is raised",
         kTime,
         {}},
        {"direction",
         "Direction",
         "steps of 45 degrees",
         "where the movement goes, clockwise from up in the picture",
         Bounds{0, 7},
         {"up", "up and right", "right", "down and right", "down", "down and left", "left", "up and left",
          "all"}},
        {"zoneSensitivity",
         "Zone sensitivity",
         "level",
         "the sensitivity in this zone; 5 is in the middle",
         kLevels,
         {}},
        {"alarmCount", "Alarm count", "objects", "how many objects raise the alarm", kSomething, {}},
        {"countReset",
         "Reset count after alarm",
         "",
         "whether the count starts over after the alarm",
         {},
         {"no", "yes"}},
        {"vertices",
         "Points",
         "pixels of the frame",
         "the corners as x and y, from the top left, y downwards; "
         "two points are a line that is crossed, with a direction in that direction",
         {},
         {}},
        {"excludeZones",
         "Exclude zones",
         "pixels of the frame",
         "parts of the picture that don't count, even inside a zone",
         {},
         {}},
        {"minObj",
         "Smallest object",
         "pixels of the frame",
         "two opposite corners of a box; 0, 0 twice is no limit",
         {},
         {}},
        {"maxObj",
         "Largest object",
         "pixels of the frame",
         "two opposite corners of a box; 0, 0 twice is no limit",
         {},
         {}},
        {"avgObj",
         "Average object",
         "pixels of the frame",
         "two opposite corners of a box; 0, 0 twice is no limit",
         {},
         {}},
        {"cameraPreset",
         "Camera preset",
         "",
         "the position of the camera that the profile belongs to; set by the camera",
         {},
         {}},
        {"sceneType",
         "Scene type",
         "",
         "which kind of scene it is, as the engine's maker names it",
         Bounds{0, 2},
         {}},
        {"background",
         "Background",
         "",
         "which background it is, as the engine's maker names it",
         Bounds{0, 1},
         {}},
        {"tuning", "Tuning", "", "which tuning it is, as the engine's maker names it", Bounds{0, 2}, {}},
        {"calibrated",
         "Calibrated",
         "",
         "whether the sizes and widths have been drawn for this camera",
         {},
         {"no", "yes"}},
        {"object1",
         "Object near left",
         "pixels of the frame",
         "the calibration object near and left, from one end to the other",
         {},
         {}},
        {"object2",
         "Object at distance",
         "pixels of the frame",
         "the calibration object far away, from one end to the other",
         {},
         {}},
        {"object3",
         "Object near right",
         "pixels of the frame",
         "the calibration object near and right, from one end to the other",
         {},
         {}},
        {"physicalHeight",
         "Physical height",
         "as unit says",
         "the real height of the calibration object",
         kSomething,
         {}},
        {"unit", "Unit", "", "that of the physical height, as in cm", {}, {}},
        {"nearWidth",
         "Near width",
         "pixels of the frame",
         "the width of the view near the camera, from one end to the other",
         {},
         {}},
        {"farWidth",
         "Far width",
         "pixels of the frame",
         "the width of the view far away, from one end to the other",
         {},
         {}},
    };
    return all;
}

} // namespace

const Meaning& MeaningOf(const std::string& name)
{
    static const Meaning none;
    const auto found = std::find_if(All().begin(), All().end(),
                                    [&name](const Meaning& meaning) { return meaning.name == name; });
    return found == All().end() ? none : *found;
}

std::optional<Bounds> Advised(const Field& field)
{
    if (field.kind != Field::Kind::Number || field.advised)
        return field.advised;
    std::optional<Bounds> advised = MeaningOf(field.name).advised;
    // A direction may be all of them where that is what it is if nothing is said.
    if (advised)
        advised->max = std::max(advised->max, field.Number());
    return advised;
}

std::string BoundsText(const Bounds& bounds)
{
    const std::string least = std::to_string(bounds.min);
    if (bounds.max == INT_MAX)
        return least + " or more";
    return bounds.max == bounds.min ? least : least + " to " + std::to_string(bounds.max);
}

std::string Choice(const Field& field, long long number)
{
    const std::vector<std::string>& choices = MeaningOf(field.name).choices;
    return number >= 0 && number < static_cast<long long>(choices.size())
               ? choices[static_cast<std::size_t>(number)]
               : "";
}

} // namespace client
