#include "net/RequestReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tarno::osa
{
namespace
{

using Outcome = RequestReader::Outcome;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::size_t kMax = 100'000;

struct Read
{
    Outcome outcome = Outcome::NeedMore;
    std::size_t taken = 0;
    int continues = 0;
};

// Offers the pieces until the reader has decided.
Read Offer(RequestReader& reader, const std::vector<std::string_view>& pieces)
{
    Read read;
    for (const std::string_view piece : pieces)
    {
        if (read.outcome != Outcome::NeedMore)
            break;
        if (piece.empty())
            continue;
        read.outcome = reader.Take(piece);
        read.taken += piece.size();
        if (read.outcome == Outcome::NeedMore && reader.TakeContinue())
            ++read.continues;
    }
    return read;
}

std::vector<std::string_view> Bytes(std::string_view text)
{
    std::vector<std::string_view> pieces;
    for (std::size_t i = 0; i < text.size(); ++i)
        pieces.push_back(text.substr(i, 1));
    return pieces;
}

std::string RequestOf(const std::string& text)
{
    RequestReader reader(kMax);
    EXPECT_EQ(reader.Take(text), Outcome::Complete) << text;
    return reader.TakeRequest();
}

// Whole, byte by byte: the verdict doesn't depend on the pieces.
void ExpectRefused(const std::string& text, Refusal reason, std::size_t max = kMax)
{
    RequestReader whole(max);
    EXPECT_EQ(Offer(whole, {text}).outcome, Outcome::Refused) << text.substr(0, 200);
    EXPECT_EQ(whole.Reason(), reason) << text.substr(0, 200);
    RequestReader bytewise(max);
    EXPECT_EQ(Offer(bytewise, Bytes(text)).outcome, Outcome::Refused) << text.substr(0, 200);
    EXPECT_EQ(bytewise.Reason(), reason) << text.substr(0, 200);
}

const std::string kPlain =
    "POST /a?b=c HTTP/1.1\r\nHost: camera\r\nSOAPAction: \"\"\r\nContent-Length: 11\r\n\r\nhello world";
const std::string kChunked = "POST / HTTP/1.1\r\nHost: camera\r\nTransfer-Encoding: chunked\r\n\r\n"
                             "5;name=value;other=\"a;b\"\r\nhello\r\n1\r\n \r\n005\r\nworld\r\n"
                             "0;last\r\nTrailer: one\r\nOther: two\r\n\r\n";

TEST(RequestReader, WritesTheRequestDownWithALengthOfItsOwn)
{
    EXPECT_EQ(RequestOf(kPlain),
              "POST /a?b=c HTTP/1.1\r\nContent-Length:                   11\r\nHost: camera\r\n"
              "SOAPAction: \"\"\r\n\r\nhello world");
}

TEST(RequestReader, DecodesChunksAndDropsExtensionsAndTrailers)
{
    EXPECT_EQ(RequestOf(kChunked),
              "POST / HTTP/1.1\r\nContent-Length:                   11\r\nHost: camera\r\n\r\nhello world");
}

TEST(RequestReader, TakesAnEmptyBodyInEveryForm)
{
    for (const std::string form :
         {"\r\n", "Content-Length: 0\r\n\r\n", "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n"})
        EXPECT_EQ(RequestOf("GET / HTTP/1.0\r\n" + form),
                  "GET / HTTP/1.0\r\nContent-Length:                    0\r\n\r\n");
}

TEST(RequestReader, GivesTheSameRequestAtEverySplitPoint)
{
    for (const std::string& text : {kPlain, kChunked})
    {
        const std::string expected = RequestOf(text);
        for (std::size_t at = 1; at < text.size(); ++at)
        {
            RequestReader reader(kMax);
            const std::string_view view = text;
            EXPECT_EQ(Offer(reader, {view.substr(0, at), view.substr(at)}).outcome, Outcome::Complete) << at;
            EXPECT_EQ(reader.TakeRequest(), expected) << at;
        }
        RequestReader reader(kMax);
        const Read read = Offer(reader, Bytes(text));
        EXPECT_EQ(read.outcome, Outcome::Complete);
        EXPECT_EQ(read.taken, text.size());
        EXPECT_EQ(reader.TakeRequest(), expected);
    }
}

TEST(RequestReader, TakesTheShortestChunkedBodyByteByByte)
{
    const std::string text = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n";
    RequestReader reader(kMax);
    EXPECT_EQ(Offer(reader, Bytes(text)).outcome, Outcome::Complete);
    EXPECT_THAT(reader.TakeRequest(), EndsWith(" 0\r\n\r\n"));
}

TEST(RequestReader, DropsWhatFollowsTheRequest)
{
    EXPECT_THAT(RequestOf(kPlain + kPlain), EndsWith("\r\n\r\nhello world"));
    EXPECT_THAT(RequestOf(kChunked + kPlain), EndsWith("\r\n\r\nhello world"));
}

TEST(RequestReader, UnfoldsAndTrimsFieldsAndKeepsTheirOrder)
{
    const std::string request = RequestOf("POST / HTTP/1.1\r\nb:  2 \r\nA: one\r\n two\r\nb: 3\r\n\r\n");
    EXPECT_THAT(request, EndsWith("\r\nb: 2\r\nA: one two\r\nb: 3\r\n\r\n"));
}

TEST(RequestReader, AsksForAContinueOnce)
{
    const std::string text = "POST / HTTP/1.1\r\nExpect: 100-Continue\r\nContent-Length: 3\r\n\r\nabc";
    RequestReader reader(kMax);
    EXPECT_EQ(Offer(reader, Bytes(text)).continues, 1);
    EXPECT_THAT(reader.TakeRequest(), Not(HasSubstr("xpect")));
}

TEST(RequestReader, AsksNoClientForAContinueThatDoesNotWaitForIt)
{
    for (const std::string start :
         {"POST / HTTP/1.0\r\nExpect: 100-continue", "POST / HTTP/1.1\r\nExpect: more"})
    {
        RequestReader reader(kMax);
        EXPECT_EQ(Offer(reader, Bytes(start + "\r\nContent-Length: 3\r\n\r\nabc")).continues, 0);
        EXPECT_THAT(reader.TakeRequest(), Not(HasSubstr("xpect")));
    }
}

TEST(RequestReader, RefusesWhatIsNoRequest)
{
    const std::string line = "POST / HTTP/1.1\r\n";
    for (const std::string& text : {
             std::string("\x16\x03\x01\x02\x00\x01\x00\x01", 8),
             std::string("PRI * HTTP/2.0\r\n"),
             std::string("hello\r\n"),
             std::string("POST /\r\n"),
             std::string("POST / HTTP/1.1\n"),
             std::string("POST / HT\n"),
             std::string("HTTP/1.1 200 OK\r\n"),
             std::string("POST / HTTP/3.1\r\n"),
             std::string("\0\0\0\0", 4),
             line + "no field\r\n\r\n",
             line + "a\x01: b\r\n\r\n",
             line + "Content-Length: -1\r\n\r\n",
             line + "Content-Length: 1x\r\n\r\n",
             line + "Content-Length: 99999999999999999999999\r\n\r\n",
             line + "Transfer-Encoding: chunked\r\n\r\nhello\r\n",
             line + "Transfer-Encoding: chunked\r\n\r\n5\r\nhelloworld\r\n",
             line + "Transfer-Encoding: chunked\r\n\r\nfffffffffffffffff\r\n\r\n",
         })
        ExpectRefused(text, Refusal::NotHttp);
}

TEST(RequestReader, RefusesFramingThatTwoReadersCouldTakeDifferently)
{
    const std::string line = "POST / HTTP/1.1\r\n";
    for (const std::string fields : {
             "Content-Length: 3\r\nContent-Length: 4\r\n",
             "Content-Length: 3, 4\r\n",
             "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n",
             "Transfer-Encoding: chunked\r\nContent-Length: 3\r\n",
             "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n",
             "Transfer-Encoding: gzip, chunked\r\n",
             "Transfer-Encoding: identity\r\n",
         })
        ExpectRefused(line + fields + "\r\nabcd\r\n", Refusal::NotHttp);
    // The same length said twice leaves no doubt.
    EXPECT_THAT(RequestOf(line + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nabc"),
                EndsWith("  3\r\n\r\nabc"));
}

TEST(RequestReader, TakesARequestOfExactlyTheLimitAndNoneLarger)
{
    RequestReader exact(kPlain.size());
    EXPECT_EQ(exact.Take(kPlain), Outcome::Complete);
    ExpectRefused(kPlain, Refusal::TooLarge, kPlain.size() - 1);
}

TEST(RequestReader, RefusesAnAnnouncedLengthBeforeTheBody)
{
    ExpectRefused("POST / HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 100001\r\n\r\n",
                  Refusal::TooLarge);
    RequestReader reader(kMax);
    EXPECT_EQ(reader.Take("POST / HTTP/1.1\r\nContent-Length: 99999\r\n\r\n"), Outcome::Refused);
}

TEST(RequestReader, RefusesChunksThatGrowBeyondTheLimit)
{
    const std::string start = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    ExpectRefused(start + "fffff\r\n", Refusal::TooLarge);
    std::string many = start;
    while (many.size() < 2 * kMax)
        many += "400\r\n" + std::string(0x400, 'x') + "\r\n";
    ExpectRefused(many, Refusal::TooLarge);
}

TEST(RequestReader, RefusesEndlessFramingAroundASmallBody)
{
    const std::string start = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    ExpectRefused(start + "1;" + std::string(200'000, 'e'), Refusal::TooLarge);
    ExpectRefused(start + "0\r\n" + std::string(200'000, 't'), Refusal::TooLarge);
    std::string many = start;
    while (many.size() < 3 * kMax)
        many += "1;" + std::string(1000, 'e') + "\r\nx\r\n";
    ExpectRefused(many, Refusal::TooLarge);
}

TEST(RequestReader, RefusesALargeHeaderInEveryShape)
{
    const std::string line = "POST / HTTP/1.1\r\n";
    ExpectRefused(line + "a: " + std::string(70'000, 'b'), Refusal::HeaderTooLarge);
    ExpectRefused("POST /" + std::string(70'000, 'b'), Refusal::HeaderTooLarge);
    ExpectRefused("POST /" + std::string(70'000, 'b') + " HTTP/1.1\r\n\r\n", Refusal::HeaderTooLarge);
    std::string many = line;
    while (many.size() < 70'000)
        many += "a: b\r\n";
    ExpectRefused(many, Refusal::HeaderTooLarge);
    ExpectRefused(many + "\r\n", Refusal::HeaderTooLarge);
    ExpectRefused(line + "a: " + std::string(70'000, 'b') + "\r\n\r\n", Refusal::HeaderTooLarge);
}

TEST(RequestReader, HoldsOnlyWhatHasArrived)
{
    RequestReader reader(4'000'000);
    EXPECT_FALSE(reader.Started());
    EXPECT_EQ(reader.Held(), 0U);
    EXPECT_EQ(reader.Take("POST / HTTP/1.1\r\nContent-Length: 3900000\r\n\r\n"), Outcome::NeedMore);
    EXPECT_TRUE(reader.Started());
    EXPECT_LT(reader.Held(), 200U);
    const std::string piece(10'000, 'x');
    EXPECT_EQ(reader.Take(piece), Outcome::NeedMore);
    EXPECT_LT(reader.Held(), 10'200U);
}

// Neither stops the process nor lets the pieces decide, whatever is thrown at it.
TEST(RequestReader, JudgesDamagedRequestsTheSameInOnePieceAndInMany)
{
    std::mt19937 random(1);
    const auto below = [&random](std::size_t end) { return random() % end; };
    const std::string pool("\r\n \t:;,=0159afx\0\x7f\xff", 18);
    for (int round = 0; round < 20'000; ++round)
    {
        std::string text = below(2) == 0 ? kPlain : kChunked;
        for (std::size_t edits = 1 + below(3); edits > 0; --edits)
            text.replace(below(text.size()), below(3), below(3), pool[below(pool.size())]);
        RequestReader whole(kMax);
        RequestReader parts(kMax);
        const std::size_t first = 1 + below(text.size() - 1);
        const Outcome outcome = Offer(whole, {text}).outcome;
        const std::string_view view = text;
        std::vector<std::string_view> pieces = Bytes(view.substr(first));
        pieces.insert(pieces.begin(), view.substr(0, first));
        // In pieces a wrong field is found only when the header ends, so the verdict may be due yet.
        const Outcome later = Offer(parts, pieces).outcome;
        ASSERT_TRUE(later == outcome || (later == Outcome::NeedMore && outcome == Outcome::Refused)) << text;
        if (later == Outcome::Complete)
        {
            ASSERT_EQ(parts.TakeRequest(), whole.TakeRequest()) << text;
        }
    }
}

} // namespace
} // namespace tarno::osa
