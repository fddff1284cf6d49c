// StringValue: the numeric readings of a string that the original platform's strings offer.
#pragma once

#include <cstdint>
#include <string_view>

namespace kit {

/// The decimal number at the start of `text` after leading blanks (spaces, tabs, line
/// breaks): an optional sign, digits with an optional fraction, an optional exponent. Trailing
/// text is ignored and text without a leading number reads 0, so " 3.5x" is 3.5, "abc" 0 and
/// ".5" 0.5. Only decimal numbers count: "nan", "inf" and hexadecimal read 0. A number beyond
/// the type's range reads as infinity of its sign.
double doubleValue(std::string_view text);
float floatValue(std::string_view text);
/// The leading decimal integer after leading blanks ("12.9" is 12, "-7 px" is -7, "abc" 0),
/// saturated at the type's limits.
std::int32_t intValue(std::string_view text);
std::int64_t integerValue(std::string_view text);

} // namespace kit
