// StringValue: the leading-number scans, written out so that no locale and no "nan" reach them.
#include "kit/StringValue.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace kit {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t skipBlanks(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i]))
        ++i;
    return i;
}

std::size_t skipDigits(std::string_view text, std::size_t i)
{
    while (i < text.size() && isDigit(text[i]))
        ++i;
    return i;
}

// The length of the decimal number starting at `start`, or 0 when there is none.
std::size_t decimalLength(std::string_view text, std::size_t start)
{
    std::size_t i = start;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        ++i;
    const std::size_t intStart = i;
    i = skipDigits(text, i);
    bool digits = i > intStart;
    if (i < text.size() && text[i] == '.') {
        const std::size_t fracStart = i + 1;
        const std::size_t fracEnd = skipDigits(text, fracStart);
        if (fracEnd > fracStart || digits) {
            digits = digits || fracEnd > fracStart;
            i = fracEnd;
        }
    }
    if (!digits)
        return 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t e = i + 1;
        if (e < text.size() && (text[e] == '+' || text[e] == '-'))
            ++e;
        const std::size_t expEnd = skipDigits(text, e);
        if (expEnd > e)
            i = expEnd;
    }
    return i - start;
}

} // namespace

double doubleValue(std::string_view text)
{
    const std::size_t start = skipBlanks(text);
    const std::size_t length = decimalLength(text, start);
    if (length == 0)
        return 0;
    // strtod on a copy that holds only the number: it cannot read on, and the "C" locale's
    // decimal point is the only one the number can contain.
    const std::string number(text.substr(start, length));
    return std::strtod(number.c_str(), nullptr);
}

float floatValue(std::string_view text)
{
    const double value = doubleValue(text);
    if (value > std::numeric_limits<float>::max())
        return std::numeric_limits<float>::infinity();
    if (value < -std::numeric_limits<float>::max())
        return -std::numeric_limits<float>::infinity();
    return float(value);
}

std::int64_t integerValue(std::string_view text)
{
    std::size_t i = skipBlanks(text);
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    std::uint64_t magnitude = 0;
    bool overflow = false;
    for (; i < text.size() && isDigit(text[i]); ++i) {
        const unsigned digit = unsigned(text[i] - '0');
        if (magnitude > (std::uint64_t(kMax) + 1 - digit) / 10)
            overflow = true;
        else
            magnitude = magnitude * 10 + digit;
    }
    if (negative)
        return overflow || magnitude > std::uint64_t(kMax) ? std::numeric_limits<std::int64_t>::min()
                                                           : -std::int64_t(magnitude);
    return overflow || magnitude > std::uint64_t(kMax) ? kMax : std::int64_t(magnitude);
}

std::int32_t intValue(std::string_view text)
{
    const std::int64_t value = integerValue(text);
    if (value > std::numeric_limits<std::int32_t>::max())
        return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min())
        return std::numeric_limits<std::int32_t>::min();
    return std::int32_t(value);
}

} // namespace kit
