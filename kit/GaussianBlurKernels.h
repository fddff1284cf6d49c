// GaussianBlurKernels: the vectorised passes behind GaussianBlur, one build per SIMD target.
#pragma once

#include "kit/GaussianBlur.h"

#include <cstddef>
#include <cstdint>

namespace kit::blurkernels {

/// Lines one pass carries side by side (1 x 2, 4 x 2 or 8 x 2 for the running processor): the
/// blurred area is padded to a multiple of it both ways.
std::size_t lanes();

/// The horizontal pass: blurs every row of the source channel across `paddedWidth` columns and
/// writes the result as 16-bit values (256 per 8-bit step) in strips of lanes() columns, strip
/// after strip, each strip `paddedHeight` rows of lanes() values. `scratch` holds
/// 2 x max(paddedWidth, paddedHeight) x lanes() floats. `mismatch[0]` gathers the bits in which
/// a pixel differs from its channel repeated four times, `mismatch[1]` those in which it differs
/// from the channel alone. With `tiles` (for a plane source) only the mixed tiles are blurred and
/// written.
void blurHorizontally(const GaussianBlur::Coefficients& c, const BlurSource& source, std::size_t paddedWidth,
    std::size_t paddedHeight, std::uint16_t* strips, float* scratch, std::uint32_t mismatch[2],
    const BlurTiles* tiles = nullptr);

/// The vertical pass over blurHorizontally's strips: writes rows 0 .. height-1 as 8-bit values,
/// `planeStride` (at least paddedWidth) bytes apart, into `plane`. `c` must already include the
/// 1/256 of the 16-bit values. With `tiles`, only the rows of mixed tiles that the horizontal
/// pass wrote are read and only those pixels written.
void blurVertically(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint8_t* plane, std::size_t planeStride,
    const BlurTiles* tiles = nullptr);

/// The same pass keeping 256 per 8-bit step: `c` without the 1/256, 16-bit values saturated.
void blurVerticallyWide(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint16_t* plane, std::size_t planeStride,
    const BlurTiles* tiles = nullptr);

/// Linear interpolation by `step` (a power of two up to 16) between `samples` (values plus a half,
/// 0.5 to 255.5): interval m, from sample m to m + 1, gives out[m step + t] at weight
/// (t + 0.5) / step, truncated, for intervals from .. to-1. Writes up to 16 bytes past the last
/// and reads up to 16 floats past sample `to`: both must be there.
void interpolateAcross(const float* samples, std::size_t from, std::size_t to, std::size_t step, std::uint8_t* out);

/// Lowers each of `low` to, and raises each of `high` to, `line`'s byte at the same place.
void lowerAndRaise(const std::uint8_t* line, std::uint8_t* low, std::uint8_t* high, std::size_t count);

} // namespace kit::blurkernels
