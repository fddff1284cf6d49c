// PixelKernels: source-over with fast paths for clear destinations and opaque sources.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/PixelKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/PixelKernels.h"

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

} // namespace HWY_NAMESPACE
} // namespace kit::pixelkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::pixelkernels {

HWY_EXPORT(CompositeOver);
HWY_EXPORT(CompositeValuesOver);

void compositeOver(const std::uint8_t* src, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(CompositeOver)(src, dst, count);
}

void compositeValuesOver(const std::uint8_t* values, bool grey, std::uint8_t* dst, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(CompositeValuesOver)(values, grey, dst, count);
}

} // namespace kit::pixelkernels
#endif
