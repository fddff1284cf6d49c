// LinearLightKernels: premultiplied linear light to sRGB bytes, and 3 x 3 colour matrices, a
// vector of pixels at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::linearlightkernels {

// Each handles whole vectors from the start of the row and returns how many pixels it did; the
// caller finishes the rest one pixel at a time. Pixels are R, G, B, A.

/// Premultiplied 8-bit sRGB to premultiplied linear floats, a vector of opaque pixels computed
/// (within 2.2e-6 of the exact curve), any other read from `table` (premultiplied linear colour
/// of a value under an alpha, 256 x 256, alpha major).
std::size_t decode(const std::uint8_t* pixels, std::size_t count, const float* table, float* out);
/// The same in units of 1 / 65535, rounded (opaque pixels within 0.65 of a unit of the exact
/// curve), from a table of units whose row for alpha a holds a x 257 at a.
std::size_t decodeUnits(const std::uint8_t* pixels, std::size_t count, const std::uint16_t* table, std::uint16_t* out);
/// Premultiplied linear floats to premultiplied 8-bit sRGB, rounded as linearlight::encodeRow
/// rounds, the encoded value within 0.05 of an 8-bit step of the exact curve.
std::size_t encode(const float* pixels, std::size_t count, std::uint8_t* out);
/// The same for values that are sums of `window` consecutive pixels of `columns` (count +
/// window - 1 of them, sums below 2^31) times `scale`; at least the last pixel is left over.
std::size_t encodeWindowSums(
    const std::uint32_t* columns, std::size_t window, float scale, std::size_t count, std::uint8_t* out);
/// rgb' = m rgb (m row major) for premultiplied floats, alpha kept.
std::size_t mapMatrix(const float m[9], float* rgba, std::size_t count);
/// The same on premultiplied 8-bit sRGB from `in` into `out` (which may be `in`): decoded as
/// decode does, mapped and encoded as above.
std::size_t mapMatrixBytes(
    const float m[9], const float* table, const std::uint8_t* in, std::uint8_t* out, std::size_t count);

} // namespace kit::linearlightkernels
