#include <XmlHelper.h>

namespace varloapi
{
namespace
{
constexpr char kBegin[] = "<?xml";
constexpr char kEnd[] = "?>";
} // namespace

std::string XmlHelper::RemoveXmlDeclaration(const std::string& xml)
{
    const std::size_t begin = xml.find(kBegin);
    const std::size_t end = begin == std::string::npos ? begin : xml.find(kEnd, begin);
    return end == std::string::npos ? xml : xml.substr(end + sizeof kEnd - 1);
}

} // namespace varloapi
