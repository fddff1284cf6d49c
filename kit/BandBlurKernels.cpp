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

void SlideRow(const std::uint32_t* columns, std::size_t window, std::size_t count, std::uint32_t* out)
{
    // One pixel's four channels a vector; the difference of the columns entering and leaving is
    // taken apart from the running sum, so that the sum waits on one add a pixel.
    const hn::CappedTag<std::uint32_t, 4> d;
    if (hn::Lanes(d) == 4) {
        auto sum = hn::Zero(d);
        for (std::size_t t = 0; t < window; ++t)
            sum = hn::Add(sum, hn::LoadU(d, columns + 4 * t));
        for (std::size_t i = 0; i < count; ++i) {
            hn::StoreU(sum, d, out + 4 * i);
            if (i + 1 < count)
                sum = hn::Add(sum, hn::Sub(hn::LoadU(d, columns + 4 * (i + window)), hn::LoadU(d, columns + 4 * i)));
        }
        return;
    }
    for (int c = 0; c < 4; ++c) {
        std::uint32_t sum = 0;
        for (std::size_t t = 0; t < window; ++t)
            sum += columns[4 * t + std::size_t(c)];
        for (std::size_t i = 0; i < count; ++i) {
            out[4 * i + std::size_t(c)] = sum;
            if (i + 1 < count)
                sum += columns[4 * (i + window) + std::size_t(c)] - columns[4 * i + std::size_t(c)];
        }
    }
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
HWY_EXPORT(SlideRow);
HWY_EXPORT(WeighRows);
HWY_EXPORT(WeighColumns);

void slideColumns(std::uint32_t* sums, const std::uint16_t* entering, const std::uint16_t* leaving, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(SlideColumns)(sums, entering, leaving, count);
}

void slideRow(const std::uint32_t* columns, std::size_t window, std::size_t count, std::uint32_t* out)
{
    HWY_DYNAMIC_DISPATCH(SlideRow)(columns, window, count, out);
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
