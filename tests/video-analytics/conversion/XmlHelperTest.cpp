#include <XmlHelper.h>

#include <gtest/gtest.h>

namespace
{
TEST(XmlHelper, RemovesWhatStandsBeforeTheEndOfTheDeclaration)
{
    const struct
    {
        const char* text;
        const char* rest;
    } cases[] = {
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?><behavior/>", "<behavior/>"},
        {"<behavior/>", "<behavior/>"},
        {"", ""},
        {"<?xml version=\"1.0\"", "<?xml version=\"1.0\""},
        {"  <?xml version=\"1.0\"?>\n<a/>", "\n<a/>"},
        {"<?xml?><?xml?><a/>", "<?xml?><a/>"},
        {"<a/><?xml-stylesheet href='x'?><b/>", "<b/>"},
        {"?><?xml?>", ""},
        {"?><?xml", "?><?xml"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(varloapi::XmlHelper::RemoveXmlDeclaration(c.text), c.rest) << c.text;
}
} // namespace
