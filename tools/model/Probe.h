#pragma once

#include <functional>
#include <set>
#include <string>

#include <pugixml.hpp>

namespace model
{

// Stores a document and gives what the service would give back of it.
using Convert = std::function<std::string(const std::string& document)>;

// What the service returned for documents of one kind that differ only in their values: nothing sent;
// all numbers far above, far below and 0, with other texts.
struct Answers
{
    pugi::xml_document usual;
    pugi::xml_document high;
    pugi::xml_document low;
    pugi::xml_document zero;
    // The elements that were empty in the default and were sent with a zone in them.
    std::set<std::string> lists;

    // Whether the node distinguishes elements of the same name in one parent.
    bool IsKey(const pugi::xml_node& node) const;
};

inline constexpr long long kFar = 1000000000;
// Texts that only this program sends.
inline constexpr char kZoneName[] = "Probed zone";
inline constexpr char kProfileName[] = "Probed profile";

// `bare`: the document that says nothing but what it is of. Throws what the converters and the platform
// throw, and std::runtime_error without an answer.
void Ask(const Convert& convert, const std::string& bare, Answers& answers);

bool IsNumber(const std::string& text);
bool IsLeaf(const pugi::xml_node& element);

} // namespace model
