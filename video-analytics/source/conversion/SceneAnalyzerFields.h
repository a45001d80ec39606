#pragma once

#include <Shapes.h>

#include "frame/Field.h"
#include "frame/Nodes.h"

#include <string>

// What the two documents of the scene share.
namespace profile_conversion::sceneanalyzer
{

using frame::NodePointer;
using frame::Owned;

// A line of the model under the name that a document has for it.
template <class Model>
struct LineField
{
    const char* name;
    const Line& (Model::*get)() const;
    void (Model::*set)(const Line&);
};

// Null below null: a document that is full takes no more, and can't be dumped then.
template <class Value>
NodePointer AddChild(analytics::DocumentNode* parent, const std::string& name, const Value& value)
{
    return NodePointer(parent == nullptr ? nullptr : parent->AddNewChild(name, value));
}
inline NodePointer AddChild(analytics::DocumentNode* parent, const std::string& name)
{
    return AddChild(parent, name, std::string());
}

} // namespace profile_conversion::sceneanalyzer
