// Strings tables: the file syntax, escapes and errors that say where.
#include "kit/StringsTable.h"

#include <gtest/gtest.h>

namespace {

TEST(StringsTable, ReadsPairsCommentsAndEscapes)
{
    const auto table = kit::StringsTable::parse(R"(/* header
   comment */
"Pixels" = "Pixels";   // trailing comment
"W:"="W:";
"quote \" inside" = "line\nbreak\ttab \\ \u00e9";
BareKey = "bare";
"Pixels" = "last one wins";
)");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->size(), 4u);
    EXPECT_EQ(*table->find("Pixels"), "last one wins");
    EXPECT_EQ(*table->find("W:"), "W:");
    EXPECT_EQ(*table->find("quote \" inside"), "line\nbreak\ttab \\ \xC3\xA9");
    EXPECT_EQ(*table->find("BareKey"), "bare");
    EXPECT_EQ(table->find("missing"), nullptr);
}

TEST(StringsTable, SurrogateEscapesBecomeWellFormedUtf8)
{
    const auto table = kit::StringsTable::parse(R"("pair" = "\uD83D\uDE00";
"lone high" = "a\uD83Db";
"high then plain" = "\uD83D\u0041";
"lone low" = "\uDE00";
)");
    ASSERT_TRUE(table);
    EXPECT_EQ(*table->find("pair"), "\xF0\x9F\x98\x80"); // U+1F600 in four bytes
    EXPECT_EQ(*table->find("lone high"),
        "a\xEF\xBF\xBD"
        "b");
    EXPECT_EQ(*table->find("high then plain"),
        "\xEF\xBF\xBD"
        "A");
    EXPECT_EQ(*table->find("lone low"), "\xEF\xBF\xBD");
}

TEST(StringsTable, AnEmptyFileIsAnEmptyTable)
{
    const auto table = kit::StringsTable::parse("  // nothing here\n");
    ASSERT_TRUE(table);
    EXPECT_EQ(table->size(), 0u);
}

TEST(StringsTable, SyntaxErrorsNameTheLine)
{
    struct Case {
        const char* text;
        const char* error;
    };
    for (const Case& c : { Case { "\"a\" = \"b\";\n\"c\" = \"d\"\n", "line 3: expected ';'" },
             Case { "\"a\" \"b\";", "line 1: expected '='" },
             Case { "\"a\" = \"unterminated;\n", "line 2: unterminated string" },
             Case { "\"a\" = \"\\q\";", "line 1: unknown escape \\q" },
             Case { "\"a\" = \"\\u12\";", "line 1: bad \\u escape" },
             Case { "= \"b\";", "line 1: expected a quoted string" } }) {
        std::string error;
        EXPECT_FALSE(kit::StringsTable::parse(c.text, &error)) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
}

TEST(StringsTable, LoadReportsAnUnreadableFile)
{
    std::string error;
    EXPECT_FALSE(kit::StringsTable::load("/nonexistent/Localizable.strings", &error));
    EXPECT_EQ(error, "cannot read /nonexistent/Localizable.strings");
}

} // namespace
