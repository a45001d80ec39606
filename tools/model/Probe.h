#pragma once

#include <functional>
#include <set>
#include <string>

#include <pugixml.hpp>

namespace model
{

// Stores a document and gives what the service would give back of it.
using Convert = std::function<std::string(const std::string& document)>;

// What came back of documents of one kind that differ in their values alone: everything as it is if it
// isn't sent; all numbers far above, far below and 0, with other texts.
struct Answers
{
    pugi::xml_document usual;
    pugi::xml_document high;
    pugi::xml_document low;
    pugi::xml_document zero;
    // The elements that came empty and were sent with a zone in them.
    std::set<std::string> lists;

    // What several elements of one name in one parent are told apart by.
    bool IsKey(const pugi::xml_node& node) const;
};

inline constexpr long long kFar = 1000000000;
// Texts that nobody but us has sent.
inline constexpr char kZoneName[] = "Probed zone";
inline constexpr char kProfileName[] = "Probed profile";

// `bare`: the document that says nothing but what it is of. Throws what the converters and the platform
// throw, and std::runtime_error if there is no answer.
void Ask(const Convert& convert, const std::string& bare, Answers& answers);

bool IsNumber(const std::string& text);
bool IsLeaf(const pugi::xml_node& element);

} // namespace model
