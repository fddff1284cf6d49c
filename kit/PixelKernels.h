// PixelKernels: vectorised source-over compositing of premultiplied RGBA pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::pixelkernels {

/// dst = src + dst x (1 - src alpha), per byte, over `count` RGBA pixels (rounded to nearest).
void compositeOver(const std::uint8_t* src, std::uint8_t* dst, std::size_t count);

/// The same with source pixel i made from one byte v = values[i]: (v, v, v, v) when `grey`,
/// otherwise (0, 0, 0, v).
void compositeValuesOver(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count);

} // namespace kit::pixelkernels
