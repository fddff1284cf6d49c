// FloatBlurKernels: Deriche's recursion over float RGBA rows (a pixel a vector) and down column
// strips (whole vectors of a row side by side), vectorised with Highway.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/FloatBlurKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/FloatBlurKernels.h"
#include "kit/FlushDenormals.h"

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace kit::floatblurkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class D> struct Sections {
    using V = hn::Vec<D>;
    V n0[2], n1[2], m1[2], m2[2], d1[2], d2[2];
    Sections(D d, const GaussianBlur::Coefficients& c)
    {
        for (int k = 0; k < 2; ++k) {
            n0[k] = hn::Set(d, c.n0[k]), n1[k] = hn::Set(d, c.n1[k]), m1[k] = hn::Set(d, c.m1[k]);
            m2[k] = hn::Set(d, c.m2[k]), d1[k] = hn::Set(d, c.d1[k]), d2[k] = hn::Set(d, c.d2[k]);
        }
    }
    // One step of section k: a x + b x' - d1 y1 - d2 y2.
    V step(int k, V a, V x, V b, V x2, V y1, V y2) const
    {
        return hn::NegMulAdd(d1[k], y1, hn::NegMulAdd(d2[k], y2, hn::MulAdd(a, x, hn::Mul(b, x2))));
    }
};

void BlurRows(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch)
{
    const FlushDenormals flush;
    const hn::CappedTag<float, 4> d;
    using V = hn::Vec<decltype(d)>;
    const Sections<decltype(d)> s(d, c);
    const long long lanes = (long long)hn::Lanes(d);
    for (long long r = 0; r < height; ++r) {
        float* row = pixels.row(r);
        for (long long g = 0; g < 4; g += lanes) {
            V xPrev = hn::Zero(d), ya1 = xPrev, ya2 = xPrev, yb1 = xPrev, yb2 = xPrev;
            for (long long i = 0; i < width; ++i) {
                const V x = hn::LoadU(d, row + 4 * i + g);
                const V ya = s.step(0, s.n0[0], x, s.n1[0], xPrev, ya1, ya2);
                const V yb = s.step(1, s.n0[1], x, s.n1[1], xPrev, yb1, yb2);
                hn::StoreU(hn::Add(ya, yb), d, scratch + 4 * i + g);
                xPrev = x, ya2 = ya1, ya1 = ya, yb2 = yb1, yb1 = yb;
            }
            V x1 = hn::Zero(d), x2 = x1, za1 = x1, za2 = x1, zb1 = x1, zb2 = x1;
            for (long long i = width - 1; i >= 0; --i) {
                const V za = s.step(0, s.m1[0], x1, s.m2[0], x2, za1, za2);
                const V zb = s.step(1, s.m1[1], x1, s.m2[1], x2, zb1, zb2);
                x2 = x1;
                x1 = hn::LoadU(d, row + 4 * i + g);
                hn::StoreU(hn::Add(hn::LoadU(d, scratch + 4 * i + g), hn::Add(za, zb)), d, row + 4 * i + g);
                za2 = za1, za1 = za, zb2 = zb1, zb1 = zb;
            }
        }
    }
}

void BlurColumns(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch)
{
    const FlushDenormals flush;
    const hn::CappedTag<float, 16> d;
    using V = hn::Vec<decltype(d)>;
    const Sections<decltype(d)> s(d, c);
    const long long lanes = (long long)hn::Lanes(d), vectors = kStrip / lanes;
    HWY_ALIGN float padded[kStrip] = {};
    // State per vector: x[n - 1] or x[n + 1], x[n + 2], and the last two outputs of each section.
    V x1[kStrip], x2[kStrip], a1[kStrip], a2[kStrip], b1[kStrip], b2[kStrip];
    auto reset = [&] {
        for (long long v = 0; v < vectors; ++v)
            x1[v] = x2[v] = a1[v] = a2[v] = b1[v] = b2[v] = hn::Zero(d);
    };
    for (long long first = 0; first < width * 4; first += kStrip) {
        const long long floats = std::min(kStrip, width * 4 - first);
        auto load = [&](long long r, long long v) {
            const float* p = pixels.row(r) + first + v * lanes;
            if (v * lanes + lanes <= floats)
                return hn::LoadU(d, p);
            std::memcpy(padded, p, std::size_t(std::max(0LL, floats - v * lanes)) * sizeof(float));
            return hn::Load(d, padded);
        };
        reset();
        for (long long r = 0; r < height; ++r) {
            for (long long v = 0; v < vectors; ++v) {
                const V x = load(r, v);
                const V ya = s.step(0, s.n0[0], x, s.n1[0], x1[v], a1[v], a2[v]);
                const V yb = s.step(1, s.n0[1], x, s.n1[1], x1[v], b1[v], b2[v]);
                hn::StoreU(hn::Add(ya, yb), d, scratch + r * kStrip + v * lanes);
                x1[v] = x, a2[v] = a1[v], a1[v] = ya, b2[v] = b1[v], b1[v] = yb;
            }
        }
        reset();
        for (long long r = height - 1; r >= 0; --r) {
            for (long long v = 0; v < vectors; ++v) {
                const V za = s.step(0, s.m1[0], x1[v], s.m2[0], x2[v], a1[v], a2[v]);
                const V zb = s.step(1, s.m1[1], x1[v], s.m2[1], x2[v], b1[v], b2[v]);
                x2[v] = x1[v];
                x1[v] = load(r, v);
                a2[v] = a1[v], a1[v] = za, b2[v] = b1[v], b1[v] = zb;
                const V sum = hn::Add(hn::LoadU(d, scratch + r * kStrip + v * lanes), hn::Add(za, zb));
                float* p = pixels.row(r) + first + v * lanes;
                if (v * lanes + lanes <= floats) {
                    hn::StoreU(sum, d, p);
                } else if (floats > v * lanes) {
                    hn::Store(sum, d, padded);
                    std::memcpy(p, padded, std::size_t(floats - v * lanes) * sizeof(float));
                }
            }
        }
    }
}

} // namespace HWY_NAMESPACE
} // namespace kit::floatblurkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::floatblurkernels {

HWY_EXPORT(BlurRows);
HWY_EXPORT(BlurColumns);

void blurRows(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch)
{
    HWY_DYNAMIC_DISPATCH(BlurRows)(c, pixels, width, height, scratch);
}

void blurColumns(
    const GaussianBlur::Coefficients& c, const FloatPixels& pixels, long long width, long long height, float* scratch)
{
    HWY_DYNAMIC_DISPATCH(BlurColumns)(c, pixels, width, height, scratch);
}

} // namespace kit::floatblurkernels
#endif
