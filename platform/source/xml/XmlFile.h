#pragma once

#include "xml/Reader.h"

#include <memory>
#include <string>
#include <vector>

namespace analytics::platform
{

// The text of one node, white space around it removed.
struct XmlText
{
    std::string text;
    int line = 0; // of its element
};

// A small parsed document that is only read: settings, a manifest. Names in queries stand for themselves,
// prefix included.
//
// Any thread.
class XmlFile
{
  public:
    // Null if the text is refused (Reader.h); `error` then says why.
    static std::unique_ptr<XmlFile> Parse(const std::string& text, xml::SyntaxError& error);

    // The nodes that the XPath query selects, in document order. A query for a number or a text gives
    // that one, a broken query nothing.
    std::vector<XmlText> Texts(const std::string& query) const;

  private:
    explicit XmlFile(const std::string& text) : m_lines(text) {}

    pugi::xml_document m_tree;
    const xml::Lines m_lines;
};

} // namespace analytics::platform
