// PixelKernels: source-over with fast paths for clear destinations and opaque sources, and colour writers.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/PixelKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/PixelKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#ifndef KIT_PIXEL_KERNELS_ONCE
#define KIT_PIXEL_KERNELS_ONCE
namespace kit::pixelkernels {

// One pixel, exactly: byte + round(byte' x (255 - alpha) / 255).
inline std::uint32_t over(std::uint32_t s, std::uint32_t d)
{
    const std::uint32_t keep = 255 - (s >> 24);
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const std::uint32_t t = ((d >> shift) & 0xFF) * keep + 128;
        const std::uint32_t v = ((s >> shift) & 0xFF) + ((t + (t >> 8)) >> 8);
        out |= (v > 255 ? 255 : v) << shift;
    }
    return out;
}

// v / 255 rounded to nearest, exact for v up to 255 x 255.
inline std::uint32_t divideBy255(std::uint32_t v)
{
    v += 128;
    return (v + (v >> 8)) >> 8;
}

// One pixel of paintCoverage, in bytes.
inline void paintPixel(std::uint32_t cover, const std::uint8_t* colour, bool clear, std::uint8_t* pixel)
{
    if (cover == 0)
        return;
    if (clear) {
        for (int c = 0; c < 4; ++c)
            pixel[c] = std::uint8_t(divideBy255(pixel[c] * (255 - cover)));
        return;
    }
    std::uint32_t covered[4];
    for (int c = 0; c < 4; ++c)
        covered[c] = divideBy255(colour[c] * cover);
    const std::uint32_t keep = 255 - covered[3];
    for (int c = 0; c < 4; ++c)
        pixel[c] = std::uint8_t(std::min(255u, covered[c] + divideBy255(pixel[c] * keep)));
}

// One byte of a scaled colour; the vector path rounds the same way (to nearest, ties to even).
inline std::uint8_t scaledByte(float value) { return std::uint8_t(std::min(255.0f, std::nearbyint(value))); }

} // namespace kit::pixelkernels
#endif

HWY_BEFORE_NAMESPACE();
namespace kit::pixelkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using DU = hn::ScalableTag<std::uint32_t>;

// Stores `s` over the destination vector: a clear destination or an opaque source takes the
// source as it is, which is what masks meet almost everywhere; anything else blends per pixel.
HWY_INLINE void storeOver(DU du, hn::Vec<DU> s, std::uint32_t* dst, std::size_t lanes)
{
    const auto d = hn::LoadU(du, dst);
    const auto opaque = hn::Set(du, 0xFF000000u);
    if (hn::AllTrue(du, hn::Eq(d, hn::Zero(du))) || hn::AllTrue(du, hn::Eq(hn::And(s, opaque), opaque))) {
        hn::StoreU(s, du, dst);
        return;
    }
    HWY_ALIGN std::uint32_t src[hn::MaxLanes(DU())];
    hn::Store(s, du, src);
    for (std::size_t i = 0; i < lanes; ++i)
        dst[i] = over(src[i], dst[i]);
}

void CompositeOver(const std::uint8_t* src, std::uint8_t* dst, std::size_t count)
{
    const DU du;
    const std::size_t n = hn::Lanes(du);
    std::size_t i = 0;
    HWY_ALIGN std::uint32_t words[hn::MaxLanes(DU())];
    for (; i + n <= count; i += n) {
        std::memcpy(words, src + 4 * i, 4 * n);
        HWY_ALIGN std::uint32_t out[hn::MaxLanes(DU())];
        std::memcpy(out, dst + 4 * i, 4 * n);
        storeOver(du, hn::Load(du, words), out, n);
        std::memcpy(dst + 4 * i, out, 4 * n);
    }
    for (; i < count; ++i) {
        std::uint32_t s, d;
        std::memcpy(&s, src + 4 * i, 4);
        std::memcpy(&d, dst + 4 * i, 4);
        d = over(s, d);
        std::memcpy(dst + 4 * i, &d, 4);
    }
}

void CompositeValuesOver(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count)
{
    const DU du;
    const hn::Rebind<std::uint8_t, DU> d8;
    const std::size_t n = hn::Lanes(du);
    std::size_t i = 0;
    const bool aligned = reinterpret_cast<std::uintptr_t>(dst) % 4 == 0;
    if (aligned) {
        auto* words = reinterpret_cast<std::uint32_t*>(dst);
        for (; i + n <= count; i += n) {
            const auto v = hn::PromoteTo(du, hn::LoadU(d8, values + i));
            const auto s = grey ? hn::Mul(v, hn::Set(du, 0x01010101u)) : hn::ShiftLeft<24>(v);
            storeOver(du, s, words + i, n);
        }
    }
    for (; i < count; ++i) {
        const std::uint32_t v = values[i];
        std::uint32_t d;
        std::memcpy(&d, dst + 4 * i, 4);
        d = over(grey ? v * 0x01010101u : v << 24, d);
        std::memcpy(dst + 4 * i, &d, 4);
    }
}

void WriteValues(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count)
{
    const DU du;
    const hn::Rebind<std::uint8_t, DU> d8;
    const std::size_t n = hn::Lanes(du);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        const auto v = hn::PromoteTo(du, hn::LoadU(d8, values + i));
        const auto words = grey ? hn::Mul(v, hn::Set(du, 0x01010101u)) : hn::ShiftLeft<24>(v);
        hn::StoreU(words, du, reinterpret_cast<std::uint32_t*>(dst + 4 * i));
    }
    for (; i < count; ++i) {
        const std::uint32_t v = values[i];
        const std::uint32_t word = grey ? v * 0x01010101u : v << 24;
        std::memcpy(dst + 4 * i, &word, 4);
    }
}

void PaintCoverage(
    const std::uint8_t* coverage, const std::uint8_t* colour, bool clear, std::uint8_t* dst, std::size_t count)
{
    const DU du;
    const hn::Rebind<std::uint8_t, DU> d8;
    const std::size_t n = hn::Lanes(du);
    std::uint32_t colourWord;
    std::memcpy(&colourWord, colour, 4);
    const bool opaque = colour[3] == 255;
    const bool grey = colour[0] == colour[1] && colour[1] == colour[2] && colour[2] == colour[3];
    const auto zero = hn::Zero(du), full = hn::Set(du, 255u);
    const auto fullWord = hn::Set(du, clear ? 0u : colourWord);
    const auto greyValue = hn::Set(du, colour[3]), spread = hn::Set(du, 0x01010101u), rounding = hn::Set(du, 128u);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        const auto cover = hn::PromoteTo(du, hn::LoadU(d8, coverage + i));
        auto* words = reinterpret_cast<std::uint32_t*>(dst + 4 * i);
        if (hn::AllTrue(du, hn::Eq(cover, zero)))
            continue;
        if ((opaque || clear) && hn::AllTrue(du, hn::Eq(cover, full))) {
            hn::StoreU(fullWord, du, words);
            continue;
        }
        if (!clear && grey && hn::AllTrue(du, hn::Eq(hn::LoadU(du, words), zero))) {
            // Over nothing the covered colour is the result: a mask's edges.
            auto t = hn::Add(hn::Mul(greyValue, cover), rounding);
            t = hn::ShiftRight<8>(hn::Add(t, hn::ShiftRight<8>(t)));
            hn::StoreU(hn::Mul(t, spread), du, words);
            continue;
        }
        for (std::size_t j = i; j < i + n; ++j)
            paintPixel(coverage[j], colour, clear, dst + 4 * j);
    }
    for (; i < count; ++i)
        paintPixel(coverage[i], colour, clear, dst + 4 * i);
}

void WriteCoverage(const std::uint8_t* coverage, const std::uint8_t* colour, std::uint8_t* dst, std::size_t count)
{
    const DU du;
    const hn::Rebind<std::uint8_t, DU> d8;
    const std::size_t n = hn::Lanes(du);
    const bool grey = colour[0] == colour[1] && colour[1] == colour[2] && colour[2] == colour[3];
    const auto rounding = hn::Set(du, 128u), spread = hn::Set(du, 0x01010101u);
    // colour[c] x cover / 255 for every lane, as divideBy255 rounds it.
    auto scaled = [&](hn::Vec<DU> cover, std::uint8_t c) {
        const auto t = hn::Add(hn::Mul(hn::Set(du, c), cover), rounding);
        return hn::ShiftRight<8>(hn::Add(t, hn::ShiftRight<8>(t)));
    };
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        const auto cover = hn::PromoteTo(du, hn::LoadU(d8, coverage + i));
        hn::Vec<DU> words;
        if (grey) {
            words = hn::Mul(scaled(cover, colour[3]), spread);
        } else {
            words = hn::Or(hn::Or(scaled(cover, colour[0]), hn::ShiftLeft<8>(scaled(cover, colour[1]))),
                hn::Or(hn::ShiftLeft<16>(scaled(cover, colour[2])), hn::ShiftLeft<24>(scaled(cover, colour[3]))));
        }
        hn::StoreU(words, du, reinterpret_cast<std::uint32_t*>(dst + 4 * i));
    }
    for (; i < count; ++i) {
        for (int c = 0; c < 4; ++c)
            dst[4 * i + std::size_t(c)] = std::uint8_t(divideBy255(colour[c] * std::uint32_t(coverage[i])));
    }
}

void WriteScaledColour(
    const float* columns, float rowFactor, const std::uint8_t* colour, std::uint8_t* dst, std::size_t count)
{
    const bool grey = colour[0] == colour[1] && colour[1] == colour[2] && colour[2] == colour[3];
    if (!grey) {
        for (std::size_t i = 0; i < count; ++i) {
            const float factor = columns[i] * rowFactor;
            for (int c = 0; c < 4; ++c)
                dst[4 * i + std::size_t(c)] = scaledByte(float(colour[c]) * factor);
        }
        return;
    }
    const float scale = rowFactor * float(colour[0]);
    if (scale == 0) {
        std::memset(dst, 0, count * 4);
        return;
    }
    const hn::Rebind<float, DU> df;
    const hn::RebindToSigned<DU> di;
    const DU du;
    const std::size_t n = hn::Lanes(du);
    const auto factor = hn::Set(df, scale);
    const auto most = hn::Set(di, 255);
    const auto spread = hn::Set(du, 0x01010101u);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        const auto value = hn::Min(hn::NearestInt(hn::Mul(hn::LoadU(df, columns + i), factor)), most);
        const auto words = hn::Mul(hn::BitCast(du, value), spread);
        hn::StoreU(words, du, reinterpret_cast<std::uint32_t*>(dst + 4 * i));
    }
    for (; i < count; ++i) {
        const std::uint32_t word = scaledByte(columns[i] * scale) * 0x01010101u;
        std::memcpy(dst + 4 * i, &word, 4);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kit::pixelkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::pixelkernels {

HWY_EXPORT(CompositeOver);
HWY_EXPORT(CompositeValuesOver);
HWY_EXPORT(PaintCoverage);
HWY_EXPORT(WriteValues);
HWY_EXPORT(WriteCoverage);
HWY_EXPORT(WriteScaledColour);

void compositeOver(const std::uint8_t* src, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(CompositeOver)(src, dst, count);
}

void compositeValuesOver(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(CompositeValuesOver)(values, grey, dst, count);
}

void writeValues(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(WriteValues)(values, grey, dst, count);
}

void paintCoverage(
    const std::uint8_t* coverage, const std::uint8_t colour[4], bool clear, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(PaintCoverage)(coverage, colour, clear, dst, count);
}

void writeCoverage(const std::uint8_t* coverage, const std::uint8_t colour[4], std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(WriteCoverage)(coverage, colour, dst, count);
}

void writeScaledColour(
    const float* columns, float rowFactor, const std::uint8_t colour[4], std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(WriteScaledColour)(columns, rowFactor, colour, dst, count);
}

} // namespace kit::pixelkernels
#endif
