#include "store/MergedDocuments.h"

#include <gtest/gtest.h>

using analytics::EnginePlugin;
using analytics::MergedDocuments;
using analytics::RulePlugin;
using analytics::StoredConfiguration;

namespace
{
using Configurations = MergedDocuments::Configurations;

class MergedDocumentsTest : public testing::Test
{
  protected:
    // How often a document had to be merged for it.
    int Merges(int profile, const Configurations& stored)
    {
        const int before = m_merges;
        const std::string text = m_documents.Get(profile, stored,
                                                 [this](const Configurations& configurations)
                                                 {
                                                     ++m_merges;
                                                     return Merge(configurations);
                                                 });
        EXPECT_EQ(text, Merge(stored));
        return m_merges - before;
    }
    static std::string Merge(const Configurations& stored)
    {
        std::string text;
        for (const StoredConfiguration& one : stored)
            text += one.id + (one.kind == RulePlugin ? "R" : "E") + (one.active ? "1" : "0") + one.document;
        return text;
    }
    static Configurations Of(std::size_t bytes)
    {
        return {{RulePlugin, "a", std::string(bytes, 'x'), false}};
    }

    MergedDocuments m_documents;

  private:
    int m_merges = 0;
};
} // namespace

TEST_F(MergedDocumentsTest, MergesOnceWhatStaysTheSame)
{
    const Configurations stored = {{EnginePlugin, "e", "text", false}, {RulePlugin, "r", "text", true}};
    EXPECT_EQ(Merges(1, stored), 1);
    EXPECT_EQ(Merges(1, stored), 0);
    EXPECT_EQ(Merges(2, stored), 1);
    EXPECT_EQ(Merges(1, stored), 0);
    EXPECT_EQ(Merges(3, {}), 1);
    EXPECT_EQ(Merges(3, {}), 0);
}

TEST_F(MergedDocumentsTest, MergesAnewWhateverHasChanged)
{
    const StoredConfiguration one = {RulePlugin, "r", "text", false};
    for (const Configurations& stored :
         {Configurations{one}, Configurations{{RulePlugin, "r", "tExt", false}},
          Configurations{{RulePlugin, "r", "text", true}}, Configurations{{EnginePlugin, "r", "text", false}},
          Configurations{{RulePlugin, "s", "text", false}}, Configurations{one, one}, Configurations{},
          Configurations{one}})
        EXPECT_EQ(Merges(1, stored), 1);
}

TEST_F(MergedDocumentsTest, ForgetsTheProfileThatWasntAskedForLongest)
{
    constexpr int kMost = MergedDocuments::kMost;
    for (int profile = 0; profile < kMost; ++profile)
        EXPECT_EQ(Merges(profile, Of(1)), 1);
    EXPECT_EQ(Merges(0, Of(1)), 0);
    EXPECT_EQ(Merges(kMost, Of(1)), 1);
    EXPECT_EQ(Merges(0, Of(1)), 0);
    EXPECT_EQ(Merges(1, Of(1)), 1);
}

// The text is kept beside what it was made of: a third of the room each leaves none for a second.
TEST_F(MergedDocumentsTest, KeepsNoMoreTextThanItMay)
{
    constexpr std::size_t kThird = MergedDocuments::kMostBytes / 3;
    EXPECT_EQ(Merges(1, Of(kThird)), 1);
    EXPECT_EQ(Merges(1, Of(kThird)), 0);
    EXPECT_EQ(Merges(2, Of(kThird)), 1);
    EXPECT_EQ(Merges(2, Of(kThird)), 0);
    EXPECT_EQ(Merges(1, Of(kThird)), 1);
    EXPECT_EQ(Merges(3, Of(3 * kThird)), 1);
    EXPECT_EQ(Merges(3, Of(3 * kThird)), 1);
    EXPECT_EQ(Merges(3, Of(1)), 1);
    EXPECT_EQ(Merges(3, Of(1)), 0);
}
