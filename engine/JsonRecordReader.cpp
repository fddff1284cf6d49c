// JsonRecordReader: reads one selection event record from a single-line JSON object.
#include "engine/JsonRecordReader.h"

#include "common/Utf8Encoding.h"

#include <array>
#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>

namespace engine {

namespace {

constexpr std::array<std::string_view, 12> kMembers { "kind", "param0", "param1", "param2", "param3", "param4",
    "param5", "param6", "param7", "param8", "text", "name" };

constexpr std::size_t kMaxKeyBytes = 64;

int memberIndex(std::string_view name)
{
    for (std::size_t i = 0; i < kMembers.size(); ++i) {
        if (kMembers[i] == name)
            return static_cast<int>(i);
    }
    return -1;
}

float* paramField(SelectionEventRecord& record, int member)
{
    std::array<float*, 9> fields { &record.param0, &record.param1, &record.param2, &record.param3, &record.param4,
        &record.param5, &record.param6, &record.param7, &record.param8 };
    return fields[static_cast<std::size_t>(member - 1)];
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

int hexValue(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

JsonRecordReader::JsonRecordReader(std::string_view line, std::size_t maxStringBytes)
    : m_text(line), m_maxStringBytes(maxStringBytes)
{
}

const std::string& JsonRecordReader::error() const { return m_error; }

bool JsonRecordReader::read(SelectionEventRecord& record)
{
    SelectionEventRecord parsed;
    std::bitset<kMemberCount> seen;
    skipSpace();
    if (!expect('{'))
        return false;
    skipSpace();
    bool more = m_pos < m_text.size() && m_text[m_pos] != '}';
    while (more) {
        if (!readMember(parsed, seen))
            return false;
        skipSpace();
        more = m_pos < m_text.size() && m_text[m_pos] == ',';
        if (more) {
            ++m_pos;
            skipSpace();
        }
    }
    if (!expect('}'))
        return false;
    skipSpace();
    if (m_pos != m_text.size())
        return fail("unexpected characters after the object");
    for (int i = 0; i < kMemberCount; ++i) {
        if (!seen[static_cast<std::size_t>(i)])
            return fail("missing member \"" + std::string(kMembers[static_cast<std::size_t>(i)]) + "\"");
    }
    record = std::move(parsed);
    return true;
}

bool JsonRecordReader::readMember(SelectionEventRecord& record, std::bitset<kMemberCount>& seen)
{
    std::size_t keyStart = m_pos;
    std::string key;
    if (!readString(key, kMaxKeyBytes))
        return false;
    int member = memberIndex(key);
    if (member < 0) {
        m_pos = keyStart;
        return fail("unknown member \"" + key + "\"");
    }
    if (seen[static_cast<std::size_t>(member)]) {
        m_pos = keyStart;
        return fail("duplicate member \"" + key + "\"");
    }
    seen.set(static_cast<std::size_t>(member));
    skipSpace();
    if (!expect(':'))
        return false;
    skipSpace();
    return readValue(member, record);
}

bool JsonRecordReader::readValue(int member, SelectionEventRecord& record)
{
    std::string_view name = kMembers[static_cast<std::size_t>(member)];
    if (member == 0)
        return readInt32(record.kind, name);
    if (name == "text")
        return readString(record.text, m_maxStringBytes);
    if (name == "name")
        return readString(record.name, m_maxStringBytes);
    return readFloat(*paramField(record, member), name);
}

bool JsonRecordReader::readString(std::string& out, std::size_t limit)
{
    out.clear();
    if (m_pos >= m_text.size() || m_text[m_pos] != '"')
        return fail("expected a string");
    ++m_pos;
    while (m_pos < m_text.size() && m_text[m_pos] != '"') {
        char c = m_text[m_pos];
        if (static_cast<unsigned char>(c) < 0x20)
            return fail("control character in string");
        if (c == '\\') {
            if (!readEscape(out))
                return false;
        } else {
            out += c;
            ++m_pos;
        }
        if (out.size() > limit)
            return fail("string longer than " + std::to_string(limit) + " bytes");
    }
    if (m_pos >= m_text.size())
        return fail("unterminated string");
    ++m_pos;
    return true;
}

bool JsonRecordReader::readEscape(std::string& out)
{
    ++m_pos;
    if (m_pos >= m_text.size())
        return fail("unterminated escape");
    char c = m_text[m_pos++];
    switch (c) {
    case '"': out += '"'; return true;
    case '\\': out += '\\'; return true;
    case '/': out += '/'; return true;
    case 'b': out += '\b'; return true;
    case 'f': out += '\f'; return true;
    case 'n': out += '\n'; return true;
    case 'r': out += '\r'; return true;
    case 't': out += '\t'; return true;
    case 'u': break;
    default: --m_pos; return fail(std::string("invalid escape \\") + c);
    }
    std::uint32_t unit = 0;
    if (!readCodeUnit(unit))
        return false;
    if (common::isLowSurrogate(unit))
        return fail("unpaired low surrogate in \\u escape");
    if (common::isHighSurrogate(unit)) {
        std::uint32_t low = 0;
        if (m_text.substr(m_pos, 2) != "\\u")
            return fail("unpaired high surrogate in \\u escape");
        m_pos += 2;
        if (!readCodeUnit(low))
            return false;
        if (!common::isLowSurrogate(low))
            return fail("unpaired high surrogate in \\u escape");
        unit = common::codePointOfSurrogates(unit, low);
    }
    common::appendUtf8(out, unit);
    return true;
}

bool JsonRecordReader::readCodeUnit(std::uint32_t& unit)
{
    if (m_text.size() - m_pos < 4)
        return fail("\\u escape needs four hex digits");
    unit = 0;
    for (int i = 0; i < 4; ++i) {
        int digit = hexValue(m_text[m_pos]);
        if (digit < 0)
            return fail("\\u escape needs four hex digits");
        unit = unit * 16 + static_cast<std::uint32_t>(digit);
        ++m_pos;
    }
    return true;
}

// Checks the JSON number grammar first: from_chars alone would also take "inf", "nan" and
// numbers JSON does not allow, such as "01" or "1.".
bool JsonRecordReader::readNumberToken(std::string_view& token, bool& isInteger)
{
    std::size_t start = m_pos;
    auto digits = [this] {
        std::size_t from = m_pos;
        while (m_pos < m_text.size() && isDigit(m_text[m_pos]))
            ++m_pos;
        return m_pos - from;
    };
    if (m_pos < m_text.size() && m_text[m_pos] == '-')
        ++m_pos;
    std::size_t intStart = m_pos;
    std::size_t intDigits = digits();
    if (intDigits == 0 || (intDigits > 1 && m_text[intStart] == '0'))
        return fail("expected a number");
    isInteger = true;
    if (m_pos < m_text.size() && m_text[m_pos] == '.') {
        ++m_pos;
        isInteger = false;
        if (digits() == 0)
            return fail("expected digits after '.'");
    }
    if (m_pos < m_text.size() && (m_text[m_pos] == 'e' || m_text[m_pos] == 'E')) {
        ++m_pos;
        isInteger = false;
        if (m_pos < m_text.size() && (m_text[m_pos] == '+' || m_text[m_pos] == '-'))
            ++m_pos;
        if (digits() == 0)
            return fail("expected digits in exponent");
    }
    token = m_text.substr(start, m_pos - start);
    return true;
}

bool JsonRecordReader::readInt32(std::int32_t& value, std::string_view member)
{
    std::size_t start = m_pos;
    std::string_view token;
    bool isInteger = false;
    if (!readNumberToken(token, isInteger))
        return false;
    auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (!isInteger || ec != std::errc() || end != token.data() + token.size()) {
        m_pos = start;
        return fail(std::string(member) + " is not a 32-bit integer");
    }
    return true;
}

bool JsonRecordReader::readFloat(float& value, std::string_view member)
{
    std::size_t start = m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == '"') {
        std::string text;
        if (!readString(text, kMaxKeyBytes))
            return false;
        if (decodeNonFinite(text, value))
            return true;
        m_pos = start;
        return fail(std::string(member) + " is not a float: \"" + text + "\"");
    }
    std::string_view token;
    bool isInteger = false;
    if (!readNumberToken(token, isInteger))
        return false;
    auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (ec == std::errc::result_out_of_range && end == token.data() + token.size() && readTinyFloat(token, value))
        return true;
    if (ec != std::errc() || end != token.data() + token.size()) {
        m_pos = start;
        return fail(std::string(member) + " is out of float range");
    }
    return true;
}

bool JsonRecordReader::readTinyFloat(std::string_view token, float& value)
{
    // A number too small for a float is the nearest float (a denormal or a signed zero), as
    // any JSON reader would take it; only overflow is an error. from_chars reports both as out
    // of range, so the correctly rounded strtof, pinned to the C locale, tells them apart.
    static const locale_t cLocale = newlocale(LC_NUMERIC_MASK, "C", locale_t {});
    if (!cLocale)
        return false;
    const std::string text(token);
    const float nearest = strtof_l(text.c_str(), nullptr, cLocale);
    if (std::isinf(nearest))
        return false;
    value = nearest;
    return true;
}

bool JsonRecordReader::decodeNonFinite(std::string_view text, float& value)
{
    if (text == "inf" || text == "-inf") {
        value = text == "inf" ? INFINITY : -INFINITY;
        return true;
    }
    if (text == "nan") {
        value = std::bit_cast<float>(std::uint32_t { 0x7fc00000u });
        return true;
    }
    if (text.size() != 14 || text.substr(0, 6) != "nan:0x")
        return false;
    std::uint32_t bits = 0;
    for (char c : text.substr(6)) {
        int digit = hexValue(c);
        if (digit < 0)
            return false;
        bits = bits * 16 + static_cast<std::uint32_t>(digit);
    }
    value = std::bit_cast<float>(bits);
    return std::isnan(value);
}

void JsonRecordReader::skipSpace()
{
    while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t' || m_text[m_pos] == '\r'))
        ++m_pos;
}

bool JsonRecordReader::expect(char c)
{
    if (m_pos < m_text.size() && m_text[m_pos] == c) {
        ++m_pos;
        return true;
    }
    return fail(std::string("expected '") + c + "'");
}

bool JsonRecordReader::fail(std::string message)
{
    m_error = std::move(message) + " at column " + std::to_string(m_pos + 1);
    return false;
}

} // namespace engine
