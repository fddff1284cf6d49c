// LinearLight: sRGB encoding and decoding, and 8-bit pixels to and from premultiplied floats.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::linearlight {

/// The sRGB transfer curve and its inverse on 0 .. 1 (values outside are held at the ends),
/// from tables interpolated linearly: within 2e-5 of the exact curve.
float toLinear(float encoded);
float toSRGB(float linear);

/// 8-bit premultiplied pixels (R, G, B, A in memory, or A, R, G, B with `argb`) to premultiplied
/// floats R, G, B, A: divided by 255, and with `srgb` un-premultiplied, decoded and
/// premultiplied again.
void decodeRow(const std::uint8_t* pixels, bool argb, bool srgb, std::size_t count, float* out);
/// Premultiplied floats to 8-bit premultiplied R, G, B, A: alpha held to 0 .. 1 and colour to
/// 0 .. alpha, then rounded; with `srgb` the colour is encoded first (as
/// round(alpha8 x toSRGB(colour / alpha))).
void encodeRow(const float* pixels, bool srgb, std::size_t count, std::uint8_t* out);

/// Premultiplied 8-bit sRGB R, G, B, A to premultiplied linear light in units of 1 / 65535,
/// rounded: what decodeRow makes, times 65535.
void decodeUnitsRow(const std::uint8_t* pixels, std::size_t count, std::uint16_t* out);
/// Premultiplied 8-bit sRGB R, G, B, A through the colour matrix m (row major) in linear light:
/// decodeRow, rgb' = m rgb, encodeRow, from `in` into `out` (which may be `in`).
void mapMatrixRow(const float m[9], const std::uint8_t* in, std::uint8_t* out, std::size_t count);
/// encodeRow into sRGB of `count` premultiplied pixels, pixel i the sum of pixels i .. i +
/// window - 1 of `columns` times `scale` (sums below 2^31), per channel.
void encodeWindowSumsRow(
    const std::uint32_t* columns, std::size_t window, float scale, std::size_t count, std::uint8_t* out);

} // namespace kit::linearlight
