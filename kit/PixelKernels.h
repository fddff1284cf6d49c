// PixelKernels: vectorised compositing and writing of premultiplied RGBA pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::pixelkernels {

/// dst = src + dst x (1 - src alpha), per byte, over `count` RGBA pixels (rounded to nearest).
void compositeOver(const std::uint8_t* src, std::uint8_t* dst, std::size_t count);

/// The same with source pixel i made from one byte v = values[i]: (v, v, v, v) when `grey`,
/// otherwise (0, 0, 0, v).
void compositeValuesOver(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count);

/// Writes pixel i as (v, v, v, v) when `grey`, otherwise (0, 0, 0, v), for v = values[i],
/// whatever the pixels held: compositeValuesOver onto transparent black, without reading.
void writeValues(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count);

/// Paints `colour` (premultiplied) through 8-bit coverage onto `count` pixels, source over:
/// with s = colour x coverage / 255 (each byte rounded), byte c becomes
/// min(255, s[c] + dst[c] x (255 - s[3]) / 255), rounded to nearest. With `clear` the pixels
/// are erased instead: byte c becomes dst[c] x (255 - coverage) / 255. Coverage 0 leaves a
/// pixel as it was. Blocks of empty or full coverage, and a grey colour over clear pixels, go
/// as whole vectors.
void paintCoverage(
    const std::uint8_t* coverage, const std::uint8_t colour[4], bool clear, std::uint8_t* dst, std::size_t count);

/// Writes `colour` (premultiplied) through 8-bit coverage over `count` pixels, whatever they
/// held: byte c becomes colour[c] x coverage / 255, rounded to nearest (what paintCoverage
/// gives over transparent black), without reading the destination.
void writeCoverage(const std::uint8_t* coverage, const std::uint8_t colour[4], std::uint8_t* dst, std::size_t count);

/// Writes `count` RGBA pixels: byte c of pixel i becomes colour[c] x columns[i] x rowFactor
/// rounded to nearest, for factors from 0 to 1, whatever `dst` held. A grey colour (four equal
/// bytes, premultiplied white among them) goes as fast as memory takes the stores.
void writeScaledColour(
    const float* columns, float rowFactor, const std::uint8_t colour[4], std::uint8_t* dst, std::size_t count);

} // namespace kit::pixelkernels
