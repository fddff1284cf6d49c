// BandBlurKernels: the passes of the box and small Gaussian blurs that run a band of rows at a
// time, one build per SIMD target.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::bandblurkernels {

/// sums[i] += entering[i] - leaving[i] over `count` values (leaving may be null: nothing leaves).
void slideColumns(std::uint32_t* sums, const std::uint16_t* entering, const std::uint16_t* leaving, std::size_t count);
/// Output rows weighRows makes at once.
constexpr std::size_t kRowsAtOnce = 4;
/// out[j][i] = sum over k of weights[k] x rows[j + k][i] for j below kRowsAtOnce, over `count`
/// floats; `rows` holds taps + kRowsAtOnce - 1 rows.
void weighRows(const float* const* rows, const float* weights, std::size_t taps, std::size_t count, float* const* out);
/// out[i] = sum over k of weights[k] x in[i + k], per channel of RGBA pixels: `count` pixels
/// out of count + taps - 1.
void weighColumns(const float* in, const float* weights, std::size_t taps, std::size_t count, float* out);

} // namespace kit::bandblurkernels
