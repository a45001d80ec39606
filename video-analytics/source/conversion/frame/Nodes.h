#pragma once

#include <analytics/Document.h>

#include <memory>
#include <string>
#include <vector>

// The document's handles with an owner.
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

// A new child that only holds others; null if the document takes no more.
inline NodePointer AddContainer(analytics::DocumentNode& parent, const std::string& name)
{
    return NodePointer(parent.AddNewChild(name, ""));
}

} // namespace profile_conversion::frame
