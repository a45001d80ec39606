#pragma once

#include "documents/Geometry.h"
#include "documents/Model.h"

#include <string>

namespace client
{

// A zone of a behavior as a person calls it.
struct NamedZone
{
    std::string name;
    bool excluded; // an exclude zone: its name is the service's own, "Exclude 1" and so on
    PointList points;
};

// All zones, then all exclude zones. Throws Failure if the text isn't XML.
std::vector<NamedZone> ZonesOf(const DocumentModel& model, const std::string& document);

// Changes of a document, which they give back. An empty text is a behavior without zones, which becomes
// active with its first one. All throw Failure: if the behavior has no such zones, if the name is taken or
// if no zone has that name, or more than one has.
std::string WithZone(const DocumentModel& model, const std::string& document, const NamedZone& zone);
std::string WithPoints(const DocumentModel& model, const std::string& document, const NamedZone& zone);
std::string WithoutZone(const DocumentModel& model, const std::string& document, const std::string& name);

// The zone of the name. Throws Failure as above.
NamedZone ZoneNamed(const DocumentModel& model, const std::string& document, const std::string& name);

} // namespace client
