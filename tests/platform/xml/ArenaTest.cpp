#include "xml/Arena.h"

#include <analytics/Document.h>

#include "Nodes.h"
#include "xml/Memory.h"

#include <gtest/gtest.h>

#include <libxml/xmlmemory.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace analytics::test
{
namespace
{
using xml::Arena;

TEST(Arena, GivesBlocksOfTheirOwn)
{
    Arena arena(0);
    std::vector<std::string_view> texts;
    for (std::size_t size = 1; size < 3000; size += 7)
    {
        auto* block = static_cast<char*>(arena.Take(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(void*), 0U);
        std::fill_n(block, size, static_cast<char>(size));
        texts.emplace_back(block, size);
    }
    for (const std::string_view text : texts)
        EXPECT_EQ(text, std::string(text.size(), static_cast<char>(text.size())));
}

TEST(Arena, KnowsItsBlocks)
{
    Arena arena(0);
    Arena other(0);
    void* block = other.Take(10);
    void* const large = arena.Take(1'000'000);
    EXPECT_TRUE(arena.Owns(arena.Take(10)));
    EXPECT_TRUE(arena.Owns(large));
    EXPECT_FALSE(arena.Owns(block));
    EXPECT_FALSE(arena.GiveBack(block));
    EXPECT_TRUE(other.GiveBack(block));
    EXPECT_EQ(other.Take(8), block) << "the newest block is used again";
}

TEST(Arena, ResizesWithTheContent)
{
    Arena arena(0);
    auto* text = static_cast<char*>(arena.Take(5));
    std::copy_n("text", 5, text);
    EXPECT_EQ(arena.Resize(text, 50), text) << "the newest block grows in its place";
    arena.Take(1);
    auto* const moved = static_cast<char*>(arena.Resize(text, 100'000));
    EXPECT_NE(moved, text);
    EXPECT_STREQ(moved, "text");
    EXPECT_STREQ(text, "text");
}

TEST(Arena, MovesABlockBehindTheNextOne)
{
    Arena arena(0);
    auto* text = static_cast<char*>(arena.Take(5));
    std::copy_n("text", 5, text);
    arena.Take(1);
    auto* const moved = static_cast<char*>(arena.Resize(text, 200)); // of the same piece
    EXPECT_GT(moved, text);
    EXPECT_LT(moved - text, 200);
    EXPECT_STREQ(moved, "text");
}

TEST(Arena, KeepsWhatItShares)
{
    auto source = std::make_unique<Arena>(0);
    auto* text = static_cast<char*>(source->Take(5));
    std::copy_n("text", 5, text);
    Arena arena(0);
    arena.Share(*source);
    source.reset();
    EXPECT_TRUE(arena.Owns(text));
    EXPECT_STREQ(text, "text"); // which a sanitizer looks at
}

TEST(Arena, IsUsedByTheThreadUntilTheEnd)
{
    xml::Initialise();
    Arena outer(0);
    Arena inner(0);
    const Arena::Use use(outer);
    {
        const Arena::Use nested(inner);
        EXPECT_TRUE(inner.Owns(xmlMalloc(10)));
    }
    void* block = xmlMalloc(10);
    EXPECT_TRUE(outer.Owns(block));
    EXPECT_TRUE(outer.Owns(xmlRealloc(block, 100)));
    EXPECT_EQ(Arena::InUse(), &outer);
}

TEST(Arena, LetsNodesOutliveTheDocumentThatTheyCameFrom)
{
    Document target;
    ASSERT_TRUE(target.ParseString("<a/>"));
    const Node root = Select(target, "/a");
    const std::string text(1000, 'x');
    for (int i = 0; i < 3; ++i)
    {
        Document source;
        ASSERT_TRUE(source.ParseString("<s><b c='1'>" + text + "</b></s>"));
        const Node node = Select(source, "/s/b");
        Node(node->AddNewChild("d", text));
        root->AddChild(node.get());
        EXPECT_NE(source.DumpToString().find("<s/>"), std::string::npos);
    }
    for (const Node& node : SelectAll(target, "/a/b"))
        node->SetProperty("c", text);
    const std::string one = "<b c=\"" + text + "\">" + text + "<d>" + text + "</d></b>";
    EXPECT_NE(target.DumpToString().find("<a>" + one + one + one + "</a>"), std::string::npos);
    target.DeleteNodes("/a/b/d", nullptr);
    Select(target, "/a/b")->SetValue(7);
    EXPECT_NE(target.DumpToString().find(">7</b><b"), std::string::npos);
}

} // namespace
} // namespace analytics::test
