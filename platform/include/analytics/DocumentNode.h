#pragma once

#include <string>

namespace analytics
{

// A handle to one node of a Document: an element or an attribute. Deleting a handle leaves the node in
// the document; a handle must not outlive its Document nor be used after its node was deleted. An empty
// handle reads as a node without content and ignores every change.
//
// Integers are decimal with an optional sign; white space around them doesn't count, a text that is no
// number gives the default, and one beyond the range of int the nearest int. A text may hold any UTF-8;
// what XML can't hold is replaced by U+FFFD when it is set.
class DocumentNode
{
  public:
    ~DocumentNode(); // releases the handle, never the node

    // Text content: that of the element and of all below it, or the attribute's value.
    int GetValue(int defaultValue);
    std::string GetValue();
    // Replaces all content of the element, or the attribute's value.
    void SetValue(int value);
    void SetValue(const std::string& value);

    // Attributes without a namespace. One that is absent gives the default, or an empty text.
    int GetProperty(const std::string& name, int defaultValue);
    std::string GetProperty(const std::string& name);
    // Creates the attribute behind the others, or replaces its value in its place.
    void SetProperty(const std::string& name, int value);
    void SetProperty(const std::string& name, const std::string& value);

    // Appends an element in the namespace of this one; an empty value adds no text. The caller owns the
    // handle. Null if this isn't an element, `name` isn't an unprefixed name, or the document of a client has
    // become too large, which the store says in words for the client.
    DocumentNode* AddNewChild(const std::string& name, const std::string& value);
    DocumentNode* AddNewChild(const std::string& name, int value);

    // Moves an element from wherever it is, also from another document, behind the children of this one;
    // its namespaces come along. Ignored if it would become its own ancestor. `child` stays the caller's;
    // other handles to what came from another document have ended.
    void AddChild(DocumentNode* child);
    // Takes the element with all below it out of its tree. `destroy` ends it and empties the handle;
    // otherwise it can be put back with AddChild(), and ends with its document if it never is.
    void Unlink(bool destroy);
    // Empties this handle.
    void DeleteHandle();
    // Changes nothing: every node has the declarations that it needs.
    void ReconciliateNs();
    // The node as a document of its own, without an XML declaration; of an attribute, its value.
    std::string DumpToString();

    DocumentNode();
    explicit DocumentNode(void* handle);

    // The node in the underlying tree. Means nothing outside of the layer.
    void* Handle() const;
    void Handle(void* handle);

  private:
    void* m_handle;
};

} // namespace analytics
