#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <vector>

namespace client
{

// A parsed document. Reads nothing but the text: no file, no network, no entity.
class XmlDocument
{
  public:
    // `source` stands in front of messages: a file's name. Throws Failure with the line of what is wrong.
    XmlDocument(const std::string& text, const std::string& source);

    // The first element of this name, the root included, in document order; null if there is none.
    xmlNode* First(const std::string& name) const;
    // The document in UTF-8.
    std::string Text() const;
    // The same for people: an element in each line, without a declaration.
    std::string Indented() const;

  private:
    std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> m_document;
};

std::string Name(const xmlNode* node);
std::vector<xmlNode*> Children(const xmlNode* parent);
std::vector<xmlNode*> Children(const xmlNode* parent, const std::string& name);
// The first child of the name; null if there is none.
xmlNode* Child(const xmlNode* parent, const std::string& name);
// All text below the node, without white space around it; empty for null.
std::string TextOf(const xmlNode* node);
// Empty if there is none.
std::string AttributeOf(const xmlNode* node, const std::string& name);

} // namespace client
