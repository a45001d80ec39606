#pragma once

#include <memory>
#include <string>
#include <vector>

struct _xmlDoc;

namespace analytics::platform
{

// Why a text is no XML for us.
struct XmlError
{
    int line = 0; // counted from 1; 0 if no line is to blame
    std::string reason;
};

// The text of one node, white space around it removed.
struct XmlText
{
    std::string text;
    int line = 0;
};

// A small parsed document that is only read: settings, a manifest. Reading is strict: well-formed or
// nothing, 256 levels deep at most, no other file or address is opened, no entity but the five of XML
// itself is known. Nothing is written to standard error.
//
// One thread at a time.
class XmlFile
{
  public:
    // Null if the text isn't well-formed; `error` then says why.
    static std::unique_ptr<XmlFile> Parse(const std::string& text, XmlError& error);

    std::string RootName() const;
    // The nodes that the path query selects, in document order. A query for a number or a text gives
    // that one, a broken query nothing.
    std::vector<XmlText> Texts(const std::string& query) const;

  private:
    struct Free
    {
        void operator()(_xmlDoc* document) const;
    };
    using Handle = std::unique_ptr<_xmlDoc, Free>;

    explicit XmlFile(Handle document) : m_document(std::move(document)) {}

    Handle m_document;
};

} // namespace analytics::platform
