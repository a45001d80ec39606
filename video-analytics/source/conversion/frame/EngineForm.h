#pragma once

#include <Shapes.h>

#include "frame/Nodes.h"

#include <analytics/ProfileDoc.h>

#include <string>

// Reading and preparing engine documents, whatever the family.
namespace profile_conversion::frame
{

// Parses the plug-in's default configuration into `doc`, removes its default rules and gives the
// container for rules. Null if there is no such configuration or no container in it.
NodePointer ParseDefaultRules(const std::string& ruleId, analytics::ProfileDoc& doc);

// The first dependency of the rule's plug-in that is an engine; empty if there is none.
std::string EngineOf(const std::string& ruleId);

// The vertices of a rule's zone, empty if it has none.
Points ReadZone(analytics::ProfileDoc& doc, analytics::DocumentNode& ruleNode, bool linePossible);

} // namespace profile_conversion::frame
