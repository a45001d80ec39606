#pragma once

#include "documents/DocumentJson.h"
#include "documents/Model.h"

#include <string>
#include <vector>

namespace client
{

// A value that the service changed.
struct Change
{
    long line; // in the document that was sent
    std::string node;
    std::string sent;
    std::string stored;
};

inline constexpr char kAbsent[] = "(nothing)";

// What was sent and has been stored otherwise; what the service added to it is none. Zones and sizes are
// recognised by their names as long as these are the same, else by their place. Equal numbers are equal
// in any spelling; white space around a value doesn't count. Either text may be empty: nothing stored.
// Throws Failure if one isn't XML.
std::vector<Change> Changes(const DocumentModel& model, const std::string& sent, const std::string& stored);

// What a document says to the service: its JSON form with everything in it that is missing, without the
// camera preset and the scene's name. Null for an idle behavior: not active, and without zones.
Json Normalised(const DocumentModel& model, const std::string& document);
// How their normalised forms differ, by JSON pointers; empty if they mean the same.
std::vector<Change> Differences(const DocumentModel& model, const std::string& a, const std::string& b);
bool SameMeaning(const DocumentModel& model, const std::string& a, const std::string& b);
bool IsIdle(const DocumentModel& model, const std::string& document);
// Whether it says active="1".
bool IsActive(const DocumentModel& model, const std::string& document);

} // namespace client
