// ActionLogTest: records are copied, and saved and loaded as JSON lines bit for bit; bad lines are refused.
#include "engine/ActionLog.h"
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

using engine::ActionLog;
using engine::Document;

namespace {

std::uint32_t bitsOf(float value) { return std::bit_cast<std::uint32_t>(value); }

float floatFromBits(std::uint32_t bits) { return std::bit_cast<float>(bits); }

SelectionEventRecord makeRecord(std::int32_t kind, std::array<float, 9> params, std::string text, std::string name)
{
    SelectionEventRecord record;
    record.kind = kind;
    float* fields[] = { &record.param0, &record.param1, &record.param2, &record.param3, &record.param4, &record.param5,
        &record.param6, &record.param7, &record.param8 };
    for (std::size_t i = 0; i < params.size(); ++i)
        *fields[i] = params[i];
    record.text = std::move(text);
    record.name = std::move(name);
    return record;
}

// Floats compare by bits so that NaN payloads, signs of zero and denormals all count.
void expectSameRecord(const SelectionEventRecord& a, const SelectionEventRecord& b)
{
    EXPECT_EQ(a.kind, b.kind);
    const float* pa = &a.param0;
    const float* pb = &b.param0;
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(bitsOf(pa[i]), bitsOf(pb[i])) << "param" << i;
    EXPECT_EQ(a.text, b.text);
    EXPECT_EQ(a.name, b.name);
}

std::vector<SelectionEventRecord> trickyRecords()
{
    const float inf = std::numeric_limits<float>::infinity();
    return {
        makeRecord(
            90, { 2, 0.1f, 3, 1.0f / 3.0f, -0.0f, 0.0f, 16777216.0f, 1e-7f, 123456.789f }, "mode=new", "Selection"),
        makeRecord(INT_MIN,
            { std::numeric_limits<float>::denorm_min(), floatFromBits(0x007fffffu), std::numeric_limits<float>::min(),
                std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(), inf, -inf,
                std::numeric_limits<float>::quiet_NaN(), floatFromBits(0xffc00001u) },
            "quote \" backslash \\ newline \n tab \t cr \r bell \x01 del \x7f",
            "Auswahl \xE2\x9C\x93 \xE9\x81\xB8\xE6\x8A\x9E \xF0\x9F\x98\x80"),
        makeRecord(INT_MAX, { floatFromBits(0x7f800001u), floatFromBits(0x80000001u), 0, 0, 0, 0, 0, 0, 0 }, "", ""),
    };
}

// A complete line with one member's value replaced.
std::string lineWith(const std::string& member, const std::string& value)
{
    std::string line = "{";
    for (const char* name : { "kind", "param0", "param1", "param2", "param3", "param4", "param5", "param6", "param7",
             "param8", "text", "name" }) {
        std::string fallback = name[0] == 'p' || name[0] == 'k' ? "0" : "\"\"";
        line += std::string(line.size() > 1 ? "," : "") + "\"" + name + "\":" + (member == name ? value : fallback);
    }
    return line + "}";
}

} // namespace

TEST(ActionLogRecording, RecordEventKeepsADeepCopy)
{
    Document document;
    SelectionEventRecord record = makeRecord(90, { 2, 1, 3, 0, 0, 0, 0, 0, 0 }, "tolerance=32", "Selection");
    ASSERT_EQ(IPD_RecordEvent(document.context(), &record), 0);
    record.text.assign(100, 'x');
    record.name = "changed";
    record.param2 = 99;
    ASSERT_EQ(document.actionLog().size(), 1u);
    const SelectionEventRecord& kept = document.actionLog().records()[0];
    EXPECT_EQ(kept.text, "tolerance=32");
    EXPECT_EQ(kept.name, "Selection");
    EXPECT_EQ(kept.param2, 3.0f);
}

TEST(ActionLogRecording, RefusesStringsBeyondTheLoadableLimit)
{
    Document document;
    SelectionEventRecord record;
    record.text.assign(ActionLog::kMaxStringBytes + 1, 'a');
    EXPECT_LT(IPD_RecordEvent(document.context(), &record), 0);
    EXPECT_EQ(document.actionLog().size(), 0u);
}

TEST(ActionLogFile, SavesAndLoadsBitExact)
{
    ActionLog log;
    for (const SelectionEventRecord& record : trickyRecords())
        ASSERT_TRUE(log.append(record));
    std::filesystem::path path = enginetest::scratchDirectory("roundtrip") / "actions.jsonl";
    std::ofstream(path, std::ios::binary) << log.toJsonLines();
    std::string error;

    ActionLog loaded;
    ASSERT_TRUE(loaded.load(path, error)) << error;
    ASSERT_EQ(loaded.size(), log.size());
    for (std::size_t i = 0; i < log.size(); ++i)
        expectSameRecord(loaded.records()[i], log.records()[i]);
    EXPECT_EQ(loaded.toJsonLines(), log.toJsonLines()) << "saving again gives the same text";
}

TEST(ActionLogFile, WritesOneObjectPerLineWithMembersInOrder)
{
    ActionLog log;
    log.append(trickyRecords()[1]);
    std::string text = log.toJsonLines();
    ASSERT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << "a newline in a string is escaped";
    std::size_t last = 0;
    for (const char* member : { "\"kind\":", "\"param0\":", "\"param1\":", "\"param2\":", "\"param3\":", "\"param4\":",
             "\"param5\":", "\"param6\":", "\"param7\":", "\"param8\":", "\"text\":", "\"name\":" }) {
        std::size_t at = text.find(member);
        ASSERT_NE(at, std::string::npos) << member;
        EXPECT_GT(at, last) << member;
        last = at;
    }
    EXPECT_NE(text.find("\"param5\":\"inf\""), std::string::npos);
    EXPECT_NE(text.find("\"param6\":\"-inf\""), std::string::npos);
    EXPECT_NE(text.find("\"param7\":\"nan\""), std::string::npos);
    EXPECT_NE(text.find("\"param8\":\"nan:0xffc00001\""), std::string::npos);
    EXPECT_NE(text.find("\\u0001"), std::string::npos);
}

TEST(ActionLogFile, AcceptsMembersInAnyOrderSpacesEscapesAndBlankLines)
{
    const std::string text = "\n  { \"name\" : \"S\\u00e9l\\ud83d\\ude00\", \"text\":\"a\\/b\\n\", \"param8\":-1.5e3,"
                             "\"param7\":7,\"param6\":6,\"param5\":5,\"param4\":4,\"param3\":3,\"param2\":2,"
                             "\"param1\":1E-2,\"param0\":0, \"kind\" : -90 }\r\n\n";
    ActionLog log;
    std::string error;
    ASSERT_TRUE(log.parseJsonLines(text, "in.jsonl", error)) << error;
    ASSERT_EQ(log.size(), 1u);
    const SelectionEventRecord& record = log.records()[0];
    EXPECT_EQ(record.kind, -90);
    EXPECT_EQ(record.param1, 0.01f);
    EXPECT_EQ(record.param8, -1500.0f);
    EXPECT_EQ(record.text, "a/b\n");
    EXPECT_EQ(record.name, "S\xC3\xA9l\xF0\x9F\x98\x80");
}

// Numbers too small for a float read as the nearest float, the way the parser rounds any other
// decimal; only overflow is refused (below).
TEST(ActionLogFile, ReadsNumbersBelowFloatRangeAsTheNearestFloat)
{
    const std::pair<const char*, std::uint32_t> cases[] = { { "-1e-78", 0x80000000u }, { "1e-400", 0x00000000u },
        { "1e-46", 0x00000000u }, { "1e-45", 0x00000001u }, { "-1.2e-38", 0x8082ab1eu }, { "2.5e-40", 0x0002b8e6u } };
    for (const auto& [number, bits] : cases) {
        ActionLog log;
        std::string error;
        ASSERT_TRUE(log.parseJsonLines(lineWith("param3", number), "tiny.jsonl", error)) << number << ": " << error;
        EXPECT_EQ(bitsOf(log.records()[0].param3), bits) << number;
    }
}

// Hosts built against the record read its words by offset; the padding must be zero so that
// two equal records are equal byte for byte.
TEST(SelectionEventRecordLayout, HoldsEveryWordAtItsOffsetAndZeroPadding)
{
    SelectionEventRecord record = makeRecord(90, { 1, 2, 3, 4, 5, 6, 7, 8, 9 }, "10,#,20,#,", "Selection");
    unsigned char bytes[sizeof(SelectionEventRecord)];
    std::memcpy(bytes, static_cast<const void*>(&record), sizeof bytes);
    auto word = [&](std::size_t offset) {
        std::uint32_t value;
        std::memcpy(&value, bytes + offset, 4);
        return value;
    };
    EXPECT_EQ(word(0) | word(4) | word(12) | word(52), 0u);
    EXPECT_EQ(word(8), 90u);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(floatFromBits(word(16 + 4 * i)), float(i + 1)) << "param" << i;
    const auto* base = reinterpret_cast<const unsigned char*>(&record);
    EXPECT_EQ(reinterpret_cast<const std::string*>(base + 56)->c_str(), std::string("10,#,20,#,"));
    EXPECT_EQ(reinterpret_cast<const std::string*>(base + 88)->c_str(), std::string("Selection"));
}

struct MalformedLine {
    const char* why;
    std::string line;
    const char* message;
};

class ActionLogMalformed : public ::testing::TestWithParam<MalformedLine> {};

// The bad line comes second, after a good one, so the reported line number is checked too.
TEST_P(ActionLogMalformed, IsRefusedWithItsLineNumberAndLeavesTheLogAlone)
{
    const std::string good = lineWith("kind", "90") + "\n";
    ActionLog log;
    log.append(makeRecord(1, {}, "kept", "kept"));
    std::string error;
    EXPECT_FALSE(log.parseJsonLines(good + GetParam().line + "\n", "bad.jsonl", error));
    EXPECT_EQ(error.rfind("bad.jsonl:2: ", 0), 0u) << error;
    EXPECT_NE(error.find(GetParam().message), std::string::npos) << error;
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log.records()[0].text, "kept");
}

INSTANTIATE_TEST_SUITE_P(Cases, ActionLogMalformed,
    ::testing::Values(MalformedLine { "notJson", "hello", "expected '{'" },
        MalformedLine { "emptyObject", "{}", "missing member \"kind\"" },
        MalformedLine { "truncated", "{\"kind\":90,", "expected a string" },
        MalformedLine { "missingMember", "{\"kind\":90}", "missing member \"param0\"" },
        MalformedLine { "unknownMember", "{\"kind\":90,\"colour\":1}", "unknown member \"colour\"" },
        MalformedLine { "duplicateMember", "{\"kind\":90,\"kind\":91}", "duplicate member \"kind\"" },
        MalformedLine { "kindNotInteger", lineWith("kind", "1.5"), "kind is not a 32-bit integer" },
        MalformedLine { "kindTooLarge", lineWith("kind", "2147483648"), "kind is not a 32-bit integer" },
        MalformedLine { "paramBool", lineWith("param3", "true"), "expected a number" },
        MalformedLine { "paramLeadingZero", lineWith("param3", "01"), "expected" },
        MalformedLine { "paramBareNan", lineWith("param3", "nan"), "expected a number" },
        MalformedLine { "paramWord", lineWith("param3", "\"many\""), "param3 is not a float" },
        MalformedLine { "nanBitsThatAreInfinity", lineWith("param3", "\"nan:0x7f800000\""), "param3 is not a float" },
        MalformedLine { "paramOutOfRange", lineWith("param3", "1e39"), "param3 is out of float range" },
        MalformedLine { "unterminatedString", "{\"kind\":90,\"text\":\"abc", "unterminated string" },
        MalformedLine { "badEscape", lineWith("text", "\"a\\qb\""), "invalid escape \\q" },
        MalformedLine { "loneSurrogate", lineWith("text", "\"\\ud800x\""), "unpaired high surrogate" },
        MalformedLine { "rawControl", lineWith("text", "\"a\tb\""), "control character in string" },
        MalformedLine { "trailingText", lineWith("text", "\"\"") + " x", "unexpected characters" },
        MalformedLine { "overlongLine", std::string(ActionLog::kMaxLineBytes + 1, ' '), "line longer than" },
        MalformedLine { "overlongString",
            lineWith("name", "\"" + std::string(ActionLog::kMaxStringBytes + 1, 'n') + "\""), "string longer than" }),
    [](const auto& info) { return std::string(info.param.why); });

TEST(ActionLogFile, LoadingAMissingFileNamesIt)
{
    ActionLog log;
    std::string error;
    std::filesystem::path path = enginetest::scratchDirectory("missing") / "none.jsonl";
    EXPECT_FALSE(log.load(path, error));
    EXPECT_NE(error.find(path.string()), std::string::npos) << error;
}
