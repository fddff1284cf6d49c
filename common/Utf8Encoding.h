// Utf8Encoding: code points to UTF-8 bytes, for the kit and the engine alike (header only, so
// the engine keeps depending on the standard library alone).
#pragma once

#include <cstdint>
#include <string>

namespace common {

/// A surrogate pair's code point.
constexpr std::uint32_t codePointOfSurrogates(std::uint32_t high, std::uint32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}
constexpr bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Appends the UTF-8 form of `codePoint`; a surrogate or a value past U+10FFFF, which have no
/// well-formed encoding, becomes U+FFFD.
inline void appendUtf8(std::string& out, std::uint32_t codePoint)
{
    if ((codePoint >= 0xD800 && codePoint < 0xE000) || codePoint > 0x10FFFF)
        codePoint = 0xFFFD;
    if (codePoint < 0x80) {
        out += char(codePoint);
    } else if (codePoint < 0x800) {
        out += char(0xC0 | (codePoint >> 6));
        out += char(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        out += char(0xE0 | (codePoint >> 12));
        out += char(0x80 | ((codePoint >> 6) & 0x3F));
        out += char(0x80 | (codePoint & 0x3F));
    } else {
        out += char(0xF0 | (codePoint >> 18));
        out += char(0x80 | ((codePoint >> 12) & 0x3F));
        out += char(0x80 | ((codePoint >> 6) & 0x3F));
        out += char(0x80 | (codePoint & 0x3F));
    }
}

} // namespace common
