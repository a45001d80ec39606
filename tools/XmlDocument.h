#pragma once

#include <xml/Reader.h>

#include <pugixml.hpp>

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
    // Takes over a document that was built; its elements have no lines.
    explicit XmlDocument(const pugi::xml_document& document);

    pugi::xml_node Root() const { return m_document.document_element(); }
    // The first element of this name, the root included, in document order; empty if there is none.
    pugi::xml_node First(const std::string& name) const;
    // Where an element begins in the text, from 1; 0 if it was added since.
    long LineOf(const pugi::xml_node& node) const;
    // The document in UTF-8, with a declaration.
    std::string Text() const;
    // The same for people: an element in each line, without a declaration.
    std::string Indented() const;

  private:
    pugi::xml_document m_document;
    analytics::xml::Lines m_lines;
};

using Nodes = std::vector<pugi::xml_node>;
// The elements among the children.
Nodes Children(const pugi::xml_node& parent);
Nodes Children(const pugi::xml_node& parent, const std::string& name);
// All text below the node, without white space around it; empty if there is no node.
std::string TextOf(const pugi::xml_node& node);

} // namespace client
