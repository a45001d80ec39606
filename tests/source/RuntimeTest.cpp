// The SOAP runtime with our functions in it, beside what it does alone.

#include "Wire.h"

#include <fake-platform/FakePlatform.h>

#include <soapH.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

extern "C" void RuntimeBegin(soap* context);
extern "C" char* RuntimeStringIn(soap* context, int flag, long least, long most, const char* pattern);

namespace
{

using Reader = char* (*)(soap*, int, long, long, const char*);

struct Input
{
    std::string_view left;
    std::size_t piece; // bytes that come at a time
};

std::size_t Receive(soap* context, char* out, std::size_t most)
{
    auto& input = *static_cast<Input*>(context->user);
    const std::size_t count = std::min({most, input.piece, input.left.size()});
    std::memcpy(out, input.left.data(), count);
    input.left.remove_prefix(count);
    return count;
}

struct Result
{
    std::optional<std::string> text;
    int error;                       // of the whole element
    std::optional<std::string> next; // the text of the element behind it

    bool operator==(const Result& other) const
    {
        return text == other.text && error == other.error && next == other.next;
    }
};

std::ostream& operator<<(std::ostream& out, const Result& result)
{
    return out << result.text.value_or("(none)") << ", " << result.error << ", "
               << result.next.value_or("(none)");
}

std::optional<std::string> ReadElement(soap& context, Reader read)
{
    if (soap_element_begin_in(&context, "t", 1, nullptr) != SOAP_OK)
        return {};
    const char* const text = read(&context, 1, 0, -1, nullptr);
    std::optional<std::string> result;
    if (text != nullptr)
        result = text;
    soap_element_end_in(&context, "t");
    return result;
}

Result Read(const std::string& text, std::size_t piece, Reader read)
{
    const std::string message = "<m><t>" + text + "</t><t>&lt;a/> b</t></m>";
    Input input = {message, piece};
    const std::unique_ptr<soap, void (*)(soap*)> context(soap_new1(SOAP_XML_TREE | SOAP_C_UTFSTRING),
                                                         [](soap* s)
                                                         {
                                                             soap_destroy(s);
                                                             soap_end(s);
                                                             soap_free(s);
                                                         });
    context->user = &input;
    context->frecv = Receive;
    EXPECT_EQ(soap_begin_recv(context.get()), SOAP_OK);
    EXPECT_EQ(soap_element_begin_in(context.get(), "m", 1, nullptr), SOAP_OK);
    Result result = {};
    result.text = ReadElement(*context, read);
    result.error = context->error;
    if (context->error == SOAP_OK)
        result.next = ReadElement(*context, read);
    return result;
}

const std::vector<std::string> kParts = {
    "",
    "a",
    "a b\n\tc ",
    "&lt;x y=&quot;1&quot;/&gt;",
    "\"'>/",
    "&apos;&amp;lt;",
    "&#65;&#xe9;",
    "&#0;",
    "&",
    "&unknown;",
    "&lt",
    "&amp",
    "\r\n",
    "\xc3\xa9",
    "\xff\xc3",
    "\x01\x7f",
    "<b>c/</b>d",
    "<b/>",
    "<b c='d'/>",
    "<!-- e -->",
    "<![CDATA[<f>&lt;]]>",
    "<?g h?>",
    "]]>",
    "</u>",
    "<",
    "%",
    "\xef\xbb\xbf",
    "&#xd;",
};

std::string Bytes(const soap& context) { return {reinterpret_cast<const char*>(&context), sizeof context}; }

TEST(RuntimeTest, ANewContextIsBegunAsByTheRuntime)
{
    fake::Platform platform;
    fake::SocketRecord record;
    analytics::kestrile::SoapIO::SoapIOImpl transport;
    soap* const context = transport.GetSoapStruct(new fake::ScriptedSocket(record, ""));
    soap_begin(context);
    const char* const style = context->encodingStyle;
    const std::string ours = Bytes(*context);
    RuntimeBegin(context);
    EXPECT_STREQ(context->encodingStyle, style);
    context->encodingStyle = style;
    EXPECT_TRUE(Bytes(*context) == ours);
    analytics::kestrile::SoapIO::SoapIOImpl::Close(context);
    soap_end(context);
    soap_free(context);
}

TEST(RuntimeTest, AContextIsBegunAnewAfterItsFirstUse)
{
    soap* const context = soap_new1(SOAP_XML_TREE);
    soap_begin(context);
    context->error = SOAP_EOM;
    context->bufidx = 1;
    context->level = 2;
    soap_begin(context);
    EXPECT_EQ(context->error, SOAP_OK);
    EXPECT_EQ(context->bufidx, 0u);
    EXPECT_EQ(context->level, 0u);
    soap_free(context);
}

TEST(RuntimeTest, ReadsWhatTheRuntimeReads)
{
    for (const std::string& first : kParts)
        for (const std::string& second : kParts)
            for (const std::string third : {"", "z&gt;", "\xc3\xa9", "<b/>"})
                for (const std::size_t piece : {1u, 7u, 4096u})
                {
                    const std::string text = first + second + third;
                    EXPECT_EQ(Read(text, piece, soap_string_in), Read(text, piece, RuntimeStringIn))
                        << text << " in pieces of " << piece;
                }
}

TEST(RuntimeTest, ReadsTextsLongerThanTheBuffer)
{
    std::string text;
    for (int i = 0; text.size() < std::size_t{SOAP_BUFLEN} * 3; ++i)
        text += "&lt;vertex n=&quot;" + std::to_string(i) + "&quot;/&gt;";
    for (const std::size_t piece : {std::size_t{1000}, std::size_t{SOAP_BUFLEN}, text.size()})
    {
        const Result result = Read(text, piece, soap_string_in);
        EXPECT_TRUE(result == Read(text, piece, RuntimeStringIn)) << "in pieces of " << piece;
        EXPECT_TRUE(result.text && result.text->size() > std::size_t{SOAP_BUFLEN});
    }
}

TEST(RuntimeTest, BoundsAreTheRuntimes)
{
    struct Bounds
    {
        long least;
        long most;
    };
    for (const Bounds bounds : {Bounds{3, -1}, Bounds{0, 2}, Bounds{0, 4}})
    {
        const auto read = [bounds](Reader reader)
        {
            const std::string message = "<t>a&lt;b</t>";
            Input input = {message, 100};
            soap* const context = soap_new1(SOAP_XML_TREE | SOAP_C_UTFSTRING);
            context->user = &input;
            context->frecv = Receive;
            soap_begin_recv(context);
            soap_element_begin_in(context, "t", 1, nullptr);
            const char* const text = reader(context, 1, bounds.least, bounds.most, nullptr);
            const std::pair<std::string, int> result = {text == nullptr ? "(none)" : text, context->error};
            soap_end(context);
            soap_free(context);
            return result;
        };
        EXPECT_EQ(read(soap_string_in), read(RuntimeStringIn));
    }
}

} // namespace
