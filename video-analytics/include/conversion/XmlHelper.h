#pragma once

#include <string>

namespace varloapi
{

class XmlHelper
{
  public:
    // The text behind the first XML declaration, wherever that stands; all of it if there is none or
    // it doesn't end. A processing instruction whose name begins with "xml" counts as one.
    static std::string RemoveXmlDeclaration(const std::string& xml);

  private:
    XmlHelper();
    ~XmlHelper();
};

} // namespace varloapi
