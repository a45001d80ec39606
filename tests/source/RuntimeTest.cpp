// The SOAP runtime with our functions in it, beside what it does alone.

#include "Wire.h"

#include <fake-platform/FakePlatform.h>

#include <soapH.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
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

// A message that the runtime reads in pieces.
class Message
{
  public:
    Message(std::string text, std::size_t piece)
        : m_text(std::move(text)),
          m_input{m_text, piece},
          m_context(soap_new1(SOAP_XML_TREE | SOAP_C_UTFSTRING))
    {
        m_context->user = &m_input;
        m_context->frecv = Receive;
        EXPECT_EQ(soap_begin_recv(m_context), SOAP_OK);
    }
    ~Message()
    {
        soap_end(m_context);
        soap_free(m_context);
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    soap& Context() { return *m_context; }

  private:
    const std::string m_text;
    Input m_input;
    soap* const m_context;
};

Result Read(const std::string& text, std::size_t piece, Reader read)
{
    Message message("<m><t>" + text + "</t><t>&lt;a/> b</t></m>", piece);
    soap& context = message.Context();
    EXPECT_EQ(soap_element_begin_in(&context, "m", 1, nullptr), SOAP_OK);
    Result result = {};
    result.text = ReadElement(context, read);
    result.error = context.error;
    if (context.error == SOAP_OK)
        result.next = ReadElement(context, read);
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
            Message message("<t>a&lt;b</t>", 100);
            soap& context = message.Context();
            soap_element_begin_in(&context, "t", 1, nullptr);
            const char* const text = reader(&context, 1, bounds.least, bounds.most, nullptr);
            return std::pair<std::string, int>(text == nullptr ? "(none)" : text, context.error);
        };
        EXPECT_EQ(read(soap_string_in), read(RuntimeStringIn));
    }
}

} // namespace
