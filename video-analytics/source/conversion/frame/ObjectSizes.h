#pragma once

#include <Shapes.h>

#include <analytics/ProfileDoc.h>

#include <string>

// The sizes of objects that a client draws as lines: an `objectsize` in the head of a behavior document,
// a Rectangle in the item "ObjectSizeFilters" of the engine form. Always two points, whatever they are.
namespace profile_conversion::frame
{

inline constexpr char kObjectSizeFilters[] = "ObjectSizeFilters";

// A size of a model under its names in the two forms.
template <class Config>
struct SizeFilter
{
    const char* object;
    const char* rectangle;
    const Line& (Config::*get)() const;
    void (Config::*set)(const Line&);
};

// These read the first two points. Where there are fewer, `line` keeps its own for the rest.
void ReadObjectSize(Line& line, const std::string& object, analytics::DocumentNode& behavior,
                    analytics::Document& doc);
void ReadRectangle(Line& line, const std::string& rectangle, analytics::DocumentNode& filters,
                   analytics::ProfileDoc& doc);

// Behind the vertices that the element has.
void WriteObjectSize(const Line& line, const std::string& object, analytics::DocumentNode& behavior,
                     analytics::Document& doc);
// Nothing without a parent.
void AddRectangle(const Line& line, const std::string& rectangle, analytics::DocumentNode* filters);

} // namespace profile_conversion::frame
