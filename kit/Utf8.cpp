// Utf8: validation by the well-formed byte sequences of Unicode's table 3-7.
#include "kit/Utf8.h"

namespace kit {

namespace {

bool continuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// The length of the well-formed sequence at `i`, or 0 when there is none.
std::size_t sequenceLength(std::string_view s, std::size_t i)
{
    const auto at = [&](std::size_t k) { return i + k < s.size() ? static_cast<unsigned char>(s[i + k]) : 0u; };
    const unsigned c = at(0);
    if (c < 0x80)
        return 1;
    if (c >= 0xC2 && c <= 0xDF)
        return continuation(at(1)) ? 2 : 0;
    if (c >= 0xE0 && c <= 0xEF) {
        const unsigned lo = c == 0xE0 ? 0xA0 : 0x80;
        const unsigned hi = c == 0xED ? 0x9F : 0xBF;
        return at(1) >= lo && at(1) <= hi && continuation(at(2)) ? 3 : 0;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        const unsigned lo = c == 0xF0 ? 0x90 : 0x80;
        const unsigned hi = c == 0xF4 ? 0x8F : 0xBF;
        return at(1) >= lo && at(1) <= hi && continuation(at(2)) && continuation(at(3)) ? 4 : 0;
    }
    return 0;
}

} // namespace

std::string sanitizedUtf8(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = sequenceLength(text, i);
        if (length == 0) {
            out += "\xEF\xBF\xBD";
            ++i;
        } else {
            out.append(text.substr(i, length));
            i += length;
        }
    }
    return out;
}

std::size_t nextCharacterOffset(std::string_view text, std::size_t offset)
{
    if (offset >= text.size())
        return text.size();
    ++offset;
    while (offset < text.size() && continuation(static_cast<unsigned char>(text[offset])))
        ++offset;
    return offset;
}

std::size_t previousCharacterOffset(std::string_view text, std::size_t offset)
{
    if (offset == 0)
        return 0;
    if (offset > text.size())
        return text.size();
    --offset;
    while (offset > 0 && continuation(static_cast<unsigned char>(text[offset])))
        --offset;
    return offset;
}

std::size_t characterCount(std::string_view text)
{
    std::size_t count = 0;
    for (char c : text) {
        if (!continuation(static_cast<unsigned char>(c)))
            ++count;
    }
    return count;
}

} // namespace kit
