#pragma once

#include <libxml/tree.h>

#include <map>
#include <optional>
#include <set>
#include <string>

namespace client
{

// What documents of one kind look like: which elements and attributes there are, which hold numbers, and
// between which bounds these are advised to be. Learned from documents of that kind; a later one wins.
struct Model
{
    struct Bounds
    {
        long long min;
        long long max;
    };

    std::map<std::string, Model> children; // empty for an element that no document says anything of
    std::set<std::string> attributes;
    std::optional<Bounds> bounds;
    bool number = false; // all that it ever held were integers
    bool text = false;
    // How many points a zone is to have, of the element that says so in minPoints and maxPoints.
    std::optional<Bounds> points;

    void Learn(const xmlNode* element);
};

// The integer in the text, which may have a sign and white space around it.
std::optional<long long> Integer(const std::string& text);

} // namespace client
