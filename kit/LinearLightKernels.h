// LinearLightKernels: sRGB bytes to and from premultiplied linear light, and 3 x 3 colour
// matrices, a vector of pixels at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::linearlightkernels {

/// Steps of the encoding curve's table.
constexpr int kFineSteps = 65535;

/// The tables of the conversions.
struct Tables {
    /// Premultiplied linear colour of an 8-bit sRGB value under an alpha: 256 x 256, alpha major.
    const float* decode = nullptr;
    /// The encoding of i / kFineSteps, for i from 0 to kFineSteps.
    const float* fine = nullptr;
    /// The same times 255, rounded: the colour bytes of opaque pixels.
    const std::uint8_t* opaque = nullptr;
};

// Each handles whole vectors from the start of the row and returns how many pixels it did; the
// caller finishes the rest one pixel at a time. Pixels are R, G, B, A.

/// Premultiplied 8-bit sRGB to premultiplied linear floats as linearlight::decodeRow makes them.
std::size_t decode(const std::uint8_t* pixels, std::size_t count, const Tables& t, float* out);
/// The same in units of 1 / 65535, rounded.
std::size_t decodeUnits(const std::uint8_t* pixels, std::size_t count, const Tables& t, std::uint16_t* out);
/// Premultiplied linear floats to premultiplied 8-bit sRGB as linearlight::encodeRow makes them.
std::size_t encode(const float* pixels, std::size_t count, const Tables& t, std::uint8_t* out);
/// The same for values that are `sums` x `scale`.
std::size_t encodeSums(const std::uint32_t* sums, float scale, std::size_t count, const Tables& t, std::uint8_t* out);
/// rgb' = m rgb (m row major) for premultiplied floats, alpha kept.
std::size_t mapMatrix(const float m[9], float* rgba, std::size_t count);
/// The same on premultiplied 8-bit sRGB in place: decoded, mapped and encoded as above.
std::size_t mapMatrixBytes(const float m[9], const Tables& t, std::uint8_t* rgba, std::size_t count);

} // namespace kit::linearlightkernels
