// The leading-number readings of strings, and the UTF-8 clean-up that text goes through.
#include "kit/StringValue.h"
#include "kit/Utf8.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(StringFloatValue, ReadsTheLeadingDecimalNumber)
{
    const struct {
        const char* text;
        double value;
    } cases[] = {
        { "12.9", 12.9 },
        { " 3.5x", 3.5 },
        { "abc", 0 },
        { "", 0 },
        { " 0.0 Pixels", 0 },
        { "250", 250 },
        { "-5", -5 },
        { "+7.25", 7.25 },
        { ".5", 0.5 },
        { "5.", 5 },
        { "-.5e1", -5 },
        { "1e3px", 1000 },
        { "1e", 1 },
        { "2e+", 2 },
        { "\t\n 42", 42 },
        { "- 3", 0 },
        { "+-3", 0 },
        { ".", 0 },
        { "nan", 0 },
        { "inf", 0 },
        { "0x1A", 0 },
        { "99.96", 99.96 },
        { "1,5", 1 },
        { "007", 7 },
    };
    for (const auto& c : cases) {
        EXPECT_DOUBLE_EQ(kit::doubleValue(c.text), c.value) << '"' << c.text << '"';
        EXPECT_FLOAT_EQ(kit::floatValue(c.text), float(c.value)) << '"' << c.text << '"';
    }
}

TEST(StringFloatValue, NumbersBeyondTheRangeReadAsInfinityOfTheirSign)
{
    EXPECT_EQ(kit::doubleValue("1e999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(kit::floatValue("1e39"), std::numeric_limits<float>::infinity());
    EXPECT_EQ(kit::floatValue("-1e39"), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(kit::floatValue("1e-999"), 0);
    const std::string digits(5000, '9');
    EXPECT_EQ(kit::floatValue(digits), std::numeric_limits<float>::infinity());
}

TEST(StringIntValue, ReadsTheLeadingIntegerAndSaturates)
{
    const struct {
        const char* text;
        std::int64_t value;
    } cases[] = {
        { "12.9", 12 },
        { "abc", 0 },
        { " -7 px", -7 },
        { "+3", 3 },
        { " 200 Pixels", 200 },
        { "-", 0 },
        { ".9", 0 },
        { "1e3", 1 },
        { "0042", 42 },
    };
    for (const auto& c : cases) {
        EXPECT_EQ(kit::integerValue(c.text), c.value) << '"' << c.text << '"';
        EXPECT_EQ(kit::intValue(c.text), std::int32_t(c.value)) << '"' << c.text << '"';
    }
    EXPECT_EQ(kit::intValue("3000000000"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(kit::intValue("-3000000000"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(kit::integerValue("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(kit::integerValue("9223372036854775808"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(kit::integerValue("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(kit::integerValue("-99999999999999999999999"), std::numeric_limits<std::int64_t>::min());
}

TEST(Utf8Text, BrokenSequencesBecomeReplacementCharacters)
{
    EXPECT_EQ(kit::sanitizedUtf8("abc"), "abc");
    EXPECT_EQ(kit::sanitizedUtf8("\xC3\xA9"), "\xC3\xA9");
    EXPECT_EQ(kit::sanitizedUtf8("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
    const std::string fffd = "\xEF\xBF\xBD";
    EXPECT_EQ(kit::sanitizedUtf8("a\xFF"), "a" + fffd);
    EXPECT_EQ(kit::sanitizedUtf8("\xC0\xAF"), fffd + fffd); // overlong
    EXPECT_EQ(kit::sanitizedUtf8("\xED\xA0\x80"), fffd + fffd + fffd); // a surrogate
    EXPECT_EQ(kit::sanitizedUtf8("\xF4\x90\x80\x80"), fffd + fffd + fffd + fffd); // past U+10FFFF
    EXPECT_EQ(kit::sanitizedUtf8("\xE2\x82"), fffd + fffd); // cut short
}

TEST(Utf8Text, StepsGoByWholeCharacters)
{
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80z";
    EXPECT_EQ(kit::nextCharacterOffset(text, 0), 1u);
    EXPECT_EQ(kit::nextCharacterOffset(text, 1), 3u);
    EXPECT_EQ(kit::nextCharacterOffset(text, 3), 7u);
    EXPECT_EQ(kit::nextCharacterOffset(text, 8), 8u);
    EXPECT_EQ(kit::previousCharacterOffset(text, 7), 3u);
    EXPECT_EQ(kit::previousCharacterOffset(text, 3), 1u);
    EXPECT_EQ(kit::previousCharacterOffset(text, 0), 0u);
    EXPECT_EQ(kit::characterCount(text), 4u);
}

} // namespace
