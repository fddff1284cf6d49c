// The vertex text of polygon records: written truncated, read by leading integers, short texts refused.
#include "Classes/Selection/PolygonVertexText.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(PolygonVertexText, WritesEachCoordinateTruncatedWithASeparatorAfterIt)
{
    EXPECT_EQ(
        FormatPolygonVertexText({ { 10.7f, 20.2f }, { 110, 20 }, { 60, 90.9f } }), "10,#,20,#,110,#,20,#,60,#,90,#,");
    EXPECT_EQ(FormatPolygonVertexText({ { -2.5f, -0.9f } }), "-2,#,0,#,");
    EXPECT_EQ(FormatPolygonVertexText({}), "");
}

TEST(PolygonVertexText, ReadsBackTheVerticesItWrote)
{
    std::vector<kit::Point> vertices;
    ASSERT_TRUE(ParsePolygonVertexText("10,#,20,#,110,#,20,#,60,#,90,#,", 3, vertices));
    EXPECT_EQ(vertices, (std::vector<kit::Point> { { 10, 20 }, { 110, 20 }, { 60, 90 } }));
    // Only the first count vertices are read; a missing final separator still ends a component.
    ASSERT_TRUE(ParsePolygonVertexText("1,#,2,#,3,#,4,#,5,#,6", 3, vertices));
    EXPECT_EQ(vertices.back(), (kit::Point { 5, 6 }));
    ASSERT_TRUE(ParsePolygonVertexText("1,#,2,#,3,#,4,#,5,#,6,#,7,#,8,#,", 2, vertices));
    EXPECT_EQ(vertices.size(), 2u);
}

TEST(PolygonVertexText, ComponentsAreReadByTheirLeadingInteger)
{
    std::vector<kit::Point> vertices;
    ASSERT_TRUE(ParsePolygonVertexText(" 7px,#,abc,#,-12.9,#,+4,#,,#,9", 3, vertices));
    EXPECT_EQ(vertices, (std::vector<kit::Point> { { 7, 0 }, { -12, 4 }, { 0, 9 } }));
    EXPECT_EQ(LeadingIntegerValue("99999999999"), INT_MAX);
    EXPECT_EQ(LeadingIntegerValue("-99999999999"), INT_MIN);
    EXPECT_EQ(LeadingIntegerValue("-2147483648"), INT_MIN);
    EXPECT_EQ(LeadingIntegerValue("- 5"), 0);
    EXPECT_EQ(LeadingIntegerValue(""), 0);
}

TEST(PolygonVertexText, ATextWithTooFewComponentsIsRefusedWhole)
{
    std::vector<kit::Point> vertices { { 1, 1 } };
    EXPECT_FALSE(ParsePolygonVertexText("10,#,20,#,110,#,20,#,60,#,", 3, vertices));
    EXPECT_TRUE(vertices.empty());
    EXPECT_FALSE(ParsePolygonVertexText("", 3, vertices));
    EXPECT_FALSE(ParsePolygonVertexText("1,#,2,#,", 0, vertices));
    EXPECT_FALSE(ParsePolygonVertexText("1,#,2,#,", -5, vertices));
}

} // namespace
