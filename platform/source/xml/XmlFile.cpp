#include "xml/XmlFile.h"

namespace analytics::platform
{
namespace
{
std::string Trimmed(const std::string& text)
{
    constexpr const char* kSpace = " \t\r\n";
    const auto begin = text.find_first_not_of(kSpace);
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

std::string Content(const pugi::xpath_node& found)
{
    return found.attribute() ? found.attribute().value() : xml::Content(found.node());
}
} // namespace

std::unique_ptr<XmlFile> XmlFile::Parse(const std::string& text, xml::SyntaxError& error)
{
    std::unique_ptr<XmlFile> file(new XmlFile(text));
    xml::Limits limits;
    limits.namedType = true;
    return xml::Read(text, file->m_tree, error, limits) ? std::move(file) : nullptr;
}

std::string XmlFile::RootName() const { return m_tree.document_element().name(); }

std::vector<XmlText> XmlFile::Texts(const std::string& query) const
try
{
    const pugi::xpath_query compiled(query.c_str());
    if (compiled.return_type() != pugi::xpath_type_node_set)
        return {{Trimmed(compiled.evaluate_string(m_tree)), 0}};
    std::vector<XmlText> texts;
    pugi::xpath_node_set nodes = compiled.evaluate_node_set(m_tree);
    nodes.sort();
    for (const pugi::xpath_node& found : nodes)
        texts.push_back(
            {Trimmed(Content(found)), m_lines.Of(found.attribute() ? found.parent() : found.node())});
    return texts;
}
catch (const pugi::xpath_exception&)
{
    return {};
}

} // namespace analytics::platform
