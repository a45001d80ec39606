#include "xml/XmlFile.h"

#include "xml/Path.h"
#include "xml/Text.h"

namespace analytics::platform
{

std::unique_ptr<XmlFile> XmlFile::Parse(const std::string& text, xml::SyntaxError& error)
{
    std::unique_ptr<XmlFile> file(new XmlFile(text));
    return xml::Read(text, file->m_tree, error, xml::Doctype::NamesFile) ? std::move(file) : nullptr;
}

std::vector<XmlText> XmlFile::Texts(const std::string& query) const
try
{
    const pugi::xpath_query compiled(query.c_str());
    if (compiled.return_type() != pugi::xpath_type_node_set)
        return {{std::string(xml::Trimmed(compiled.evaluate_string(m_tree))), 0}};
    std::vector<XmlText> texts;
    pugi::xpath_node_set nodes = compiled.evaluate_node_set(m_tree);
    nodes.sort();
    for (const pugi::xpath_node& found : nodes)
    {
        const xml::Match match = {found.attribute() ? found.parent() : found.node(), found.attribute()};
        texts.push_back({std::string(xml::Trimmed(match.Text())), m_lines.Of(match.element)});
    }
    return texts;
}
catch (const pugi::xpath_exception&)
{
    return {};
}

} // namespace analytics::platform
