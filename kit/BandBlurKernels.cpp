// BandBlurKernels: integer running sums and float weighted sums over rows of RGBA pixels,
// vectorised with Highway.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/BandBlurKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/BandBlurKernels.h"

HWY_BEFORE_NAMESPACE();
namespace kit::bandblurkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void SlideColumns(std::uint32_t* sums, const std::uint16_t* entering, const std::uint16_t* leaving, std::size_t count)
{
    const hn::ScalableTag<std::uint32_t> d;
    const hn::Rebind<std::uint16_t, decltype(d)> d16;
    const std::size_t n = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        auto v = hn::Add(hn::LoadU(d, sums + i), hn::PromoteTo(d, hn::LoadU(d16, entering + i)));
        if (leaving)
            v = hn::Sub(v, hn::PromoteTo(d, hn::LoadU(d16, leaving + i)));
        hn::StoreU(v, d, sums + i);
    }
    for (; i < count; ++i)
        sums[i] += entering[i] - (leaving ? leaving[i] : 0u);
}

void WeighRows(const float* const* rows, const float* weights, std::size_t taps, std::size_t count, float* const* out)
{
    // Four output rows at once, so that each row read serves up to four of them: the rows
    // come from the second-level cache, and reading them once an output row was the cost.
    const hn::ScalableTag<float> d;
    const std::size_t n = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        hn::Vec<decltype(d)> sums[kRowsAtOnce];
        for (auto& sum : sums)
            sum = hn::Zero(d);
        for (std::size_t k = 0; k < taps + kRowsAtOnce - 1; ++k) {
            const auto v = hn::LoadU(d, rows[k] + i);
            for (std::size_t j = 0; j < kRowsAtOnce; ++j)
                if (k >= j && k - j < taps)
                    sums[j] = hn::MulAdd(hn::Set(d, weights[k - j]), v, sums[j]);
        }
        for (std::size_t j = 0; j < kRowsAtOnce; ++j)
            hn::StoreU(sums[j], d, out[j] + i);
    }
    for (; i < count; ++i)
        for (std::size_t j = 0; j < kRowsAtOnce; ++j) {
            float sum = 0;
            for (std::size_t k = 0; k < taps; ++k)
                sum += weights[k] * rows[j + k][i];
            out[j][i] = sum;
        }
}

void WeighColumns(const float* in, const float* weights, std::size_t taps, std::size_t count, float* out)
{
    // Whole pixels a vector, so tap k is the same vector shifted by k pixels.
    const hn::ScalableTag<float> d;
    const std::size_t n = hn::Lanes(d);
    std::size_t i = 0;
    if (n % 4 == 0) {
        for (; 4 * i + n <= 4 * count; i += n / 4) {
            const float* from = in + 4 * i;
            auto sum = hn::Mul(hn::Set(d, weights[0]), hn::LoadU(d, from));
            for (std::size_t k = 1; k < taps; ++k)
                sum = hn::MulAdd(hn::Set(d, weights[k]), hn::LoadU(d, from + 4 * k), sum);
            hn::StoreU(sum, d, out + 4 * i);
        }
    }
    for (; i < count; ++i)
        for (std::size_t c = 0; c < 4; ++c) {
            float sum = 0;
            for (std::size_t k = 0; k < taps; ++k)
                sum += weights[k] * in[4 * (i + k) + c];
            out[4 * i + c] = sum;
        }
}

} // namespace HWY_NAMESPACE
} // namespace kit::bandblurkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::bandblurkernels {

HWY_EXPORT(SlideColumns);
HWY_EXPORT(WeighRows);
HWY_EXPORT(WeighColumns);

void slideColumns(std::uint32_t* sums, const std::uint16_t* entering, const std::uint16_t* leaving, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(SlideColumns)(sums, entering, leaving, count);
}

void weighRows(const float* const* rows, const float* weights, std::size_t taps, std::size_t count, float* const* out)
{
    HWY_DYNAMIC_DISPATCH(WeighRows)(rows, weights, taps, count, out);
}

void weighColumns(const float* in, const float* weights, std::size_t taps, std::size_t count, float* out)
{
    HWY_DYNAMIC_DISPATCH(WeighColumns)(in, weights, taps, count, out);
}

} // namespace kit::bandblurkernels
#endif
