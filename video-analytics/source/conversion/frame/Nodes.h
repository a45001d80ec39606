#pragma once

#include <analytics/ProfileDoc.h>
#include <analytics/Settings.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// The document's handles with an owner, and the paths that the readers and writers share.
namespace profile_conversion::frame
{

using NodePointer = std::unique_ptr<analytics::DocumentNode>;

inline NodePointer SelectNode(analytics::Document& doc, const std::string& query,
                              analytics::DocumentNode* context = nullptr)
{
    return NodePointer(doc.SelectNode(query, context));
}

// The first match in the text; null if there is none or the text isn't well-formed.
inline NodePointer ParseAndSelect(analytics::Document& doc, const std::string& xml, const std::string& query)
{
    return doc.ParseString(xml) ? SelectNode(doc, query) : nullptr;
}

inline std::vector<NodePointer> Owned(const std::vector<analytics::DocumentNode*>& nodes)
{
    // Deletes them if there is no memory for the list of their owners.
    const auto deleteAll = [](const std::vector<analytics::DocumentNode*>* unowned)
    {
        for (const analytics::DocumentNode* node : *unowned)
            delete node;
    };
    std::unique_ptr<const std::vector<analytics::DocumentNode*>, decltype(deleteAll)> guard(&nodes,
                                                                                            deleteAll);
    std::vector<NodePointer> owned;
    owned.reserve(nodes.size());
    static_cast<void>(guard.release());
    for (analytics::DocumentNode* node : nodes)
        owned.emplace_back(node);
    return owned;
}

inline std::vector<NodePointer> SelectNodes(analytics::Document& doc, const std::string& query,
                                            analytics::DocumentNode* context)
{
    return Owned(doc.SelectNodes(query, context));
}

// A new child; null below null, and if the document takes no more.
template <class Value>
NodePointer AddChild(analytics::DocumentNode* parent, const std::string& name, const Value& value)
{
    return NodePointer(parent == nullptr ? nullptr : parent->AddNewChild(name, value));
}
// The same for one that only holds others.
inline NodePointer AddChild(analytics::DocumentNode* parent, const std::string& name)
{
    return AddChild(parent, name, std::string());
}

// An element of the engine form, as a step of a path.
inline std::string Step(const std::string& element)
{
    return analytics::Settings::OnvifPrefix() + ":" + element;
}

// The elements at the end of a path that have this name.
inline std::string Named(std::string path, const std::string& name)
{
    return std::move(path) + "[@Name='" + name + "']";
}

// The ElementItems of this name, from a rule or an engine module.
inline std::string ElementItem(analytics::ProfileDoc& doc, const std::string& name)
{
    return Named(doc.ElementItemQry(true), name);
}

} // namespace profile_conversion::frame
