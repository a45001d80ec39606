#pragma once

#include <climits>
#include <optional>
#include <string>
#include <vector>

namespace client
{

struct Bounds
{
    long long min;
    long long max;

    bool Holds(long long value) const { return value >= min && value <= max; }
    friend bool operator==(const Bounds&, const Bounds&) = default;
};

// One value of a document: an attribute, or the text of an element without children.
struct Field
{
    enum class Kind
    {
        Number,
        Flag, // 0 or 1
        Text,
        Constant, // the service writes it and keeps no other
        Assigned  // the service writes what it likes, whatever it is sent
    };

    std::string name;
    Kind kind;
    std::string value;             // if missing; of a constant the only one
    Bounds accepted;               // beyond, the service takes the nearest; of a Number or Flag
    std::optional<Bounds> advised; // as the document itself says it

    long long Number() const; // `value`, where that is an integer
};

// What may stand in one element.
struct Element
{
    enum class Form
    {
        Leaf,   // a value
        Group,  // named members, each once, in any order
        List,   // any number of children[0]
        Points, // any number of vertex, each with x and y
        Line    // none or two of them
    };

    std::string name;
    std::string key; // of several elements of one name in a group: the text of its child "name"
    Form form;
    std::vector<Field> attributes;
    std::vector<Field> value; // one, of a leaf
    std::vector<Element> children;

    const Element* Child(const std::string& childName) const; // null if there is none
    const Field* Attribute(const std::string& attributeName) const;
};

// What the documents of one behavior, or of the scene, look like: learned from the converters when this
// program was built, by what they keep of a document.
struct DocumentModel
{
    std::string name;  // as in "stopped-vehicle"; "scene" for the scene
    std::string id;    // in the camera, as in "com.varlo.rule.stoppedvehicle"
    std::string alias; // the clients' identifier, as in "urn:…:StoppedVehicle:1"; empty for the scene
    std::string title; // for people, as in "Stopped Vehicle"
    bool fixedCamera;  // works only while the camera doesn't move
    Element root;

    bool IsScene() const { return root.name != "behavior"; }
    // How many points a zone is to have; nothing if the document says nothing of it.
    std::optional<Bounds> ZonePoints() const;
    bool HasZones() const { return root.Child("rois") != nullptr; }
    bool HasExcludeZones() const;
};

} // namespace client
