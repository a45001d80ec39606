#include "request/DocumentLimit.h"

#include <analytics/ProfileDoc.h>

#include "platform/PlatformTest.h"

#include <memory>

using analytics::ProfileDoc;
using analytics::platform::RequestScope;

class DocumentLimitTest : public PlatformTest
{
  protected:
    DocumentLimitTest()
    {
        Write("settings.xml",
              "<settings><limits><documentElements>10</documentElements></limits></settings>");
        Configure();
    }
    // A document of that many elements.
    static std::string Text(int elements)
    {
        std::string text = "<a>";
        for (int i = 1; i < elements; ++i)
            text += "<b/>";
        return text + "</a>";
    }
    // Takes that many new elements into a document of one; what it is written as.
    static std::string Grown(int elements)
    {
        ProfileDoc doc;
        EXPECT_TRUE(doc.ParseString("<a/>"));
        const std::unique_ptr<analytics::DocumentNode> root(doc.SelectNode("/a", nullptr));
        for (int i = 0; i < elements; ++i)
            delete root->AddNewChild("b", "");
        return doc.DumpToString();
    }
};

TEST_F(DocumentLimitTest, ATextOfMoreElementsIsNotParsedAndRemembered)
{
    const RequestScope request;
    EXPECT_TRUE(ProfileDoc().ParseString(Text(10)));
    EXPECT_FALSE(analytics::platform::DocumentIsTooLarge());
    EXPECT_FALSE(ProfileDoc().ParseString(Text(11)));
    EXPECT_TRUE(ProfileDoc().ParseString(Text(10)));
    EXPECT_TRUE(analytics::platform::DocumentIsTooLarge());
}

TEST_F(DocumentLimitTest, ADocumentGrowsUpToItAndThatMoreWasWantedIsRemembered)
{
    {
        const RequestScope request;
        const std::string full = Grown(9);
        EXPECT_FALSE(analytics::platform::DocumentIsTooLarge());
        EXPECT_EQ(Grown(10), full);
        EXPECT_TRUE(analytics::platform::DocumentIsTooLarge());
    }
    const RequestScope next;
    EXPECT_FALSE(analytics::platform::DocumentIsTooLarge());
}

TEST_F(DocumentLimitTest, WhatIsStoredAndWhatNoClientSentIsNotBounded)
{
    EXPECT_TRUE(ProfileDoc().ParseString(Text(11)));
    EXPECT_NE(Grown(10), "");
    const RequestScope request;
    analytics::platform::LiftDocumentLimit();
    EXPECT_TRUE(ProfileDoc().ParseString(Text(11)));
    EXPECT_NE(Grown(10), "");
    EXPECT_FALSE(analytics::platform::DocumentIsTooLarge());
}

TEST_F(DocumentLimitTest, WithoutASettingItIsTwoHundredThousand)
{
    Write("settings.xml", "<settings/>");
    Configure();
    EXPECT_EQ(analytics::platform::DocumentElements(), 200'000u);
}
