// GaussianBlurKernels: the recursive Gaussian passes, vectorised across columns with Highway.
//
// Both passes run the same recursion with one vector lane per line. The horizontal pass reads
// sixteen source rows side by side (lanes x lanes blocks transposed in registers) and writes its
// result in strips of sixteen columns, each strip's rows one after the other, so that the
// vertical pass reads every strip front to back instead of striding down the image.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/GaussianBlurKernels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/BlurTiles.h"
#include "kit/FlushDenormals.h"
#include "kit/GaussianBlurKernels.h"

#include <algorithm>

HWY_BEFORE_NAMESPACE();
namespace kit::blurkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Eight lanes: on processors with wider vectors the arithmetic throughput is the same and the
// transposes stay cheap.
using D = hn::CappedTag<float, 8>;
using V = hn::Vec<D>;
constexpr std::size_t kMaxLanes = hn::MaxLanes(D());

struct Sections {
    V n0[2], n1[2], m1[2], m2[2], d1[2], d2[2];
    explicit Sections(const GaussianBlur::Coefficients& c)
    {
        const D d;
        for (int k = 0; k < 2; ++k) {
            n0[k] = hn::Set(d, c.n0[k]);
            n1[k] = hn::Set(d, c.n1[k]);
            m1[k] = hn::Set(d, c.m1[k]);
            m2[k] = hn::Set(d, c.m2[k]);
            d1[k] = hn::Set(d, c.d1[k]);
            d2[k] = hn::Set(d, c.d2[k]);
        }
    }
};

// Transposes lanes x lanes floats held as one vector per row.
HWY_INLINE void transpose(V* v)
{
    const D d;
    constexpr std::size_t n = kMaxLanes;
#if HWY_TARGET == HWY_SCALAR
    (void)d;
    (void)n;
    (void)v;
#else
    if constexpr (n == 4 || n == 8) {
        const hn::Repartition<double, D> d64;
        V t[8], u[8];
        for (std::size_t i = 0; i < n; i += 2) {
            t[i] = hn::InterleaveLower(d, v[i], v[i + 1]);
            t[i + 1] = hn::InterleaveUpper(d, v[i], v[i + 1]);
        }
        for (std::size_t i = 0; i < n; i += 4) {
            u[i] = hn::BitCast(d, hn::InterleaveLower(d64, hn::BitCast(d64, t[i]), hn::BitCast(d64, t[i + 2])));
            u[i + 1] = hn::BitCast(d, hn::InterleaveUpper(d64, hn::BitCast(d64, t[i]), hn::BitCast(d64, t[i + 2])));
            u[i + 2] = hn::BitCast(d, hn::InterleaveLower(d64, hn::BitCast(d64, t[i + 1]), hn::BitCast(d64, t[i + 3])));
            u[i + 3] = hn::BitCast(d, hn::InterleaveUpper(d64, hn::BitCast(d64, t[i + 1]), hn::BitCast(d64, t[i + 3])));
        }
        if constexpr (n == 4) {
            for (std::size_t i = 0; i < 4; ++i)
                v[i] = u[i];
        } else {
            for (std::size_t i = 0; i < 4; ++i) {
                v[i] = hn::ConcatLowerLower(d, u[i + 4], u[i]);
                v[i + 4] = hn::ConcatUpperUpper(d, u[i + 4], u[i]);
            }
        }
    } else {
        HWY_ALIGN float tile[kMaxLanes * kMaxLanes];
        for (std::size_t i = 0; i < n; ++i)
            hn::Store(v[i], d, tile + i * n);
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = i + 1; j < n; ++j)
                std::swap(tile[i * n + j], tile[j * n + i]);
        for (std::size_t i = 0; i < n; ++i)
            v[i] = hn::Load(d, tile + i * n);
    }
#endif
}

// Lines a pass carries side by side: two vectors, so that two independent recursions hide each
// other's latency.
constexpr std::size_t kVectors = 2;

// One line's causal recursion (both sections).
struct Causal {
    V xp, y0a, y0b, y1a, y1b;
    // As if every earlier input had been `level`.
    HWY_INLINE Causal(const GaussianBlur::Coefficients& c, float level)
        : xp(hn::Set(D(), level))
        , y0a(hn::Set(D(), level * (c.n0[0] + c.n1[0]) / (1 + c.d1[0] + c.d2[0])))
        , y0b(y0a)
        , y1a(hn::Set(D(), level * (c.n0[1] + c.n1[1]) / (1 + c.d1[1] + c.d2[1])))
        , y1b(y1a)
    {
    }
    HWY_INLINE V step(const Sections& s, V x)
    {
        // The parts that do not wait for the previous output go first: one fused step per
        // section lies on the recursion's critical path.
        const V t0 = hn::MulAdd(s.n0[0], x, hn::NegMulAdd(s.d2[0], y0b, hn::Mul(s.n1[0], xp)));
        const V t1 = hn::MulAdd(s.n0[1], x, hn::NegMulAdd(s.d2[1], y1b, hn::Mul(s.n1[1], xp)));
        y0b = y0a;
        y1b = y1a;
        y0a = hn::NegMulAdd(s.d1[0], y0a, t0);
        y1a = hn::NegMulAdd(s.d1[1], y1a, t1);
        xp = x;
        return hn::Add(y0a, y1a);
    }
};

// One line's anticausal recursion; step() takes the input one step ahead of its output.
struct Anticausal {
    V x1, x2, z0a, z0b, z1a, z1b;
    // As if every later input had been `level`.
    HWY_INLINE Anticausal(const GaussianBlur::Coefficients& c, float level)
        : x1(hn::Set(D(), level))
        , x2(x1)
        , z0a(hn::Set(D(), level * (c.m1[0] + c.m2[0]) / (1 + c.d1[0] + c.d2[0])))
        , z0b(z0a)
        , z1a(hn::Set(D(), level * (c.m1[1] + c.m2[1]) / (1 + c.d1[1] + c.d2[1])))
        , z1b(z1a)
    {
    }
    HWY_INLINE V step(const Sections& s, V next)
    {
        x2 = x1;
        x1 = next;
        const V t0 = hn::MulAdd(s.m1[0], x1, hn::NegMulAdd(s.d2[0], z0b, hn::Mul(s.m2[0], x2)));
        const V t1 = hn::MulAdd(s.m1[1], x1, hn::NegMulAdd(s.d2[1], z1b, hn::Mul(s.m2[1], x2)));
        z0b = z0a;
        z1b = z1a;
        z0a = hn::NegMulAdd(s.d1[0], z0a, t0);
        z1a = hn::NegMulAdd(s.d1[1], z1a, t1);
        return hn::Add(z0a, z1a);
    }
};

// The causal half over steps from .. to-1, the inputs before `from` all `before`: keeps each input
// and causal output in `scratch` (four vectors a step) for the anticausal half. load(step, a, b)
// gives both lines' inputs.
template <class Load>
HWY_INLINE void causal(const GaussianBlur::Coefficients& c, const Sections& s, std::size_t from, std::size_t to,
    float before, Load&& load, float* scratch)
{
    const D d;
    const std::size_t n = hn::Lanes(d);
    Causal a(c, before), b(c, before);
    for (std::size_t i = from; i < to; ++i) {
        V xa, xb;
        load(i, xa, xb);
        float* out = scratch + 4 * (i - from) * n;
        hn::Store(xa, d, out);
        hn::Store(xb, d, out + n);
        hn::Store(a.step(s, xa), d, out + 2 * n);
        hn::Store(b.step(s, xb), d, out + 3 * n);
    }
}

// The anticausal half, from step to-1 back to `from`, the inputs from `to` on all `after`, adding
// the causal half. With kTransposed, `emit(blockStart, v, block)` gets each lanes-long block of
// finished steps of line v transposed (block[j] holds lane j's outputs; `from` and `to` are
// multiples of lanes); otherwise `emit(step, v, output)`.
template <bool kTransposed, class Emit>
HWY_INLINE void anticausal(const GaussianBlur::Coefficients& c, const Sections& s, std::size_t from, std::size_t to,
    float after, const float* scratch, Emit&& emit)
{
    const D d;
    const std::size_t n = hn::Lanes(d);
    Anticausal a(c, after), b(c, after);
    V blockA[kMaxLanes], blockB[kMaxLanes];
    V nextA = hn::Set(d, after), nextB = nextA;
    for (std::size_t i = to; i-- > from;) {
        const float* in = scratch + 4 * (i - from) * n;
        const V outA = hn::Add(hn::Load(d, in + 2 * n), a.step(s, nextA));
        const V outB = hn::Add(hn::Load(d, in + 3 * n), b.step(s, nextB));
        nextA = hn::Load(d, in);
        nextB = hn::Load(d, in + n);
        if constexpr (kTransposed) {
            blockA[i % n] = outA;
            blockB[i % n] = outB;
            if (i % n == 0) {
                transpose(blockA);
                transpose(blockB);
                emit(i, 0, blockA);
                emit(i, 1, blockB);
            }
        } else {
            emit(i, 0, outA);
            emit(i, 1, outB);
        }
    }
}

// Runs `pass(from, to, before, after)` over the whole line, or with `tiles` over each stretch of
// mixed tiles along `line` only.
template <class Pass>
HWY_INLINE void overMixedRuns(
    const BlurTiles* tiles, bool acrossColumns, std::size_t line, std::size_t length, float levelScale, Pass&& pass)
{
    if (!tiles) {
        pass(std::size_t(0), length, 0.0f, 0.0f);
        return;
    }
    tiles->forEachMixedRun(acrossColumns, int(line / BlurTiles::kSize), length,
        [&](std::size_t from, std::size_t to, float before, float after) {
            pass(from, to, before * levelScale, after * levelScale);
        });
}

// Reads one channel of the source in lanes x lanes blocks and notes how the other bytes relate to it.
struct ChannelReader {
    using DU = hn::RebindToUnsigned<D>;
    using VU = hn::Vec<DU>;
    const BlurSource& source;
    VU othersMask, byteMask, notEqual, notZero;

    explicit ChannelReader(const BlurSource& s)
        : source(s)
        , othersMask(hn::Set(DU(), ~(0xFFu << s.shift)))
        , byteMask(hn::Set(DU(), 0xFFu))
        , notEqual(hn::Zero(DU()))
        , notZero(hn::Zero(DU()))
    {
    }

    // lanes() bytes of a plane's line from column sx on, zero outside the source.
    HWY_INLINE V loadBytes(const std::uint8_t* line, std::ptrdiff_t sx, bool inside) const
    {
        const D d;
        const DU du;
        const hn::Rebind<std::uint8_t, D> d8;
        const std::size_t n = hn::Lanes(d);
        HWY_ALIGN std::uint8_t edge[kMaxLanes];
        const std::uint8_t* bytes = line + sx;
        if (!inside) {
            for (std::size_t j = 0; j < n; ++j) {
                const std::ptrdiff_t col = sx + std::ptrdiff_t(j);
                edge[j] = col >= 0 && col < source.width ? line[col] : 0;
            }
            bytes = edge;
        }
        return hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<D>(), hn::PromoteTo(du, hn::LoadU(d8, bytes))));
    }

    // The lanes x lanes pixels from (column, row) on, transposed: out[j] holds column + j.
    HWY_INLINE void loadBlock(std::ptrdiff_t row, std::ptrdiff_t column, V* out)
    {
        const D d;
        const DU du;
        const hn::RebindToSigned<D> di;
        const std::size_t n = hn::Lanes(d);
        const std::ptrdiff_t sx = column - source.x;
        const bool inside = sx >= 0 && sx + std::ptrdiff_t(n) <= source.width;
        HWY_ALIGN std::uint32_t edge[kMaxLanes];
        for (std::size_t r = 0; r < n; ++r) {
            const std::ptrdiff_t sy = row + std::ptrdiff_t(r) - source.y;
            if (sy < 0 || sy >= source.height) {
                out[r] = hn::Zero(d);
                continue;
            }
            if (source.bytesPerPixel == 1) {
                out[r] = loadBytes(source.pixels + sy * source.rowStride, sx, inside);
                continue;
            }
            const auto* line = reinterpret_cast<const std::uint32_t*>(source.pixels + sy * source.rowStride);
            const std::uint32_t* pixels = line + sx;
            if (!inside) {
                for (std::size_t j = 0; j < n; ++j) {
                    const std::ptrdiff_t col = sx + std::ptrdiff_t(j);
                    edge[j] = col >= 0 && col < source.width ? line[col] : 0;
                }
                pixels = edge;
            }
            const VU p = hn::LoadU(du, pixels);
            // A pixel whose four bytes are equal is its own rotation by a byte.
            notEqual = hn::Or(notEqual, hn::Xor(p, hn::RotateRight<8>(p)));
            notZero = hn::Or(notZero, hn::And(p, othersMask));
            const VU channel = hn::And(hn::ShiftRightSame(p, source.shift), byteMask);
            out[r] = hn::ConvertTo(d, hn::BitCast(di, channel));
        }
        transpose(out);
    }
};

void BlurHorizontally(const GaussianBlur::Coefficients& c, const BlurSource& source, std::size_t paddedWidth,
    std::size_t paddedHeight, std::uint16_t* strips, float* scratch, std::uint32_t* mismatch, const BlurTiles* tiles)
{
    const D d;
    const hn::RebindToUnsigned<D> du;
    const hn::Rebind<std::uint16_t, D> d16;
    const std::size_t n = hn::Lanes(d);
    const std::size_t band = n * kVectors;
    const FlushDenormals flush;
    const Sections s(c);
    const V scale = hn::Set(d, 256.0f);
    ChannelReader reader(source);
    V columns[kVectors][kMaxLanes];

    for (std::size_t y0 = 0; y0 < paddedHeight; y0 += band) {
        auto load = [&](std::size_t column, V& a, V& b) {
            if (column % n == 0) {
                reader.loadBlock(std::ptrdiff_t(y0), std::ptrdiff_t(column), columns[0]);
                reader.loadBlock(std::ptrdiff_t(y0 + n), std::ptrdiff_t(column), columns[1]);
            }
            a = columns[0][column % n];
            b = columns[1][column % n];
        };
        const auto run = [&](std::size_t from, std::size_t to, float before, float after) {
            causal(c, s, from, to, before, load, scratch);
            anticausal<true>(c, s, from, to, after, scratch, [&](std::size_t column0, std::size_t v, V* block) {
                std::uint16_t* strip = strips + column0 / band * (paddedHeight * band) + column0 % band;
                for (std::size_t j = 0; j < n; ++j) {
                    const auto fixed = hn::NearestInt(hn::Mul(block[j], scale));
                    hn::StoreU(hn::DemoteTo(d16, fixed), d16, strip + (y0 + v * n + j) * band);
                }
            });
        };
        overMixedRuns(tiles, true, y0, paddedWidth, 1.0f, run);
    }
    HWY_ALIGN std::uint32_t lanesOut[kMaxLanes];
    hn::Store(reader.notEqual, du, lanesOut);
    for (std::size_t j = 0; j < n; ++j)
        mismatch[0] |= lanesOut[j];
    hn::Store(reader.notZero, du, lanesOut);
    for (std::size_t j = 0; j < n; ++j)
        mismatch[1] |= lanesOut[j];
}

// The vertical pass, storing each finished row's values through store(row, column, vector).
template <class Store>
HWY_INLINE void verticalPass(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, const BlurTiles* tiles, Store&& store)
{
    const D d;
    const hn::RebindToUnsigned<D> du;
    const hn::RebindToSigned<D> di;
    const hn::Rebind<std::uint16_t, D> d16;
    const std::size_t n = hn::Lanes(d);
    const std::size_t band = n * kVectors;
    const FlushDenormals flush;
    const Sections s(c);
    for (std::size_t x0 = 0; x0 < paddedWidth; x0 += band) {
        const std::uint16_t* strip = strips + x0 / band * (paddedHeight * band);
        auto load = [&](std::size_t row, V& a, V& b) {
            const std::uint16_t* line = strip + row * band;
            a = hn::ConvertTo(d, hn::BitCast(di, hn::PromoteTo(du, hn::LoadU(d16, line))));
            b = hn::ConvertTo(d, hn::BitCast(di, hn::PromoteTo(du, hn::LoadU(d16, line + n))));
        };
        const auto run = [&](std::size_t from, std::size_t to, float before, float after) {
            causal(c, s, from, to, before, load, scratch);
            anticausal<false>(c, s, from, to, after, scratch, [&](std::size_t row, std::size_t v, V out) {
                if (row < height)
                    store(row, x0 + v * n, out);
            });
        };
        // The strips hold 256 per 8-bit step.
        overMixedRuns(tiles, false, x0, paddedHeight, 256.0f, run);
    }
}

void BlurVertically(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint8_t* plane, std::size_t planeStride,
    const BlurTiles* tiles)
{
    const hn::Rebind<std::uint8_t, D> d8;
    verticalPass(
        c, strips, paddedWidth, paddedHeight, height, scratch, tiles, [&](std::size_t row, std::size_t column, V out) {
            hn::StoreU(hn::DemoteTo(d8, hn::NearestInt(out)), d8, plane + row * planeStride + column);
        });
}

void BlurVerticallyWide(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint16_t* plane, std::size_t planeStride,
    const BlurTiles* tiles)
{
    const hn::Rebind<std::uint16_t, D> d16;
    verticalPass(
        c, strips, paddedWidth, paddedHeight, height, scratch, tiles, [&](std::size_t row, std::size_t column, V out) {
            hn::StoreU(hn::DemoteTo(d16, hn::NearestInt(out)), d16, plane + row * planeStride + column);
        });
}

std::size_t Lanes() { return hn::Lanes(D()) * kVectors; }

void InterpolateAcross(const float* samples, std::size_t from, std::size_t to, std::size_t step, std::uint8_t* out)
{
    // Up to sixteen lanes: every lane is independent here, and a full vector holds a step's pixels.
    using DW = hn::CappedTag<float, 16>;
    const DW d;
    const hn::RebindToSigned<DW> di;
    const hn::Rebind<std::uint8_t, DW> d8;
    const std::size_t n = hn::Lanes(d);
    constexpr std::size_t kWideLanes = hn::MaxLanes(DW());
    HWY_ALIGN float weights[kWideLanes];
    HWY_ALIGN std::int32_t firsts[kWideLanes], seconds[kWideLanes];
    const float scale = 1.0f / float(step);
    for (std::size_t j = 0; j < n; ++j) {
        weights[j] = (float(j % step) + 0.5f) * scale;
        firsts[j] = std::int32_t(j / step);
        seconds[j] = std::int32_t(std::min(j / step + 1, n - 1));
    }
    const auto weight = hn::Load(d, weights);
    for (std::size_t v = from * step; v < to * step; v += n) {
        hn::Vec<DW> a, b, w = weight;
        const std::size_t m = v / step;
        if (step >= n || n < 2) {
            // A vector within one interval: its weights go on from where the last left off.
            a = hn::Set(d, samples[m]);
            b = hn::Set(d, samples[m + 1]);
            w = hn::Add(weight, hn::Set(d, float(v % step) * scale));
        } else {
            // n / step intervals a vector: each lane picks its interval's two ends.
            const auto ends = hn::LoadU(d, samples + m);
            a = hn::TableLookupLanes(ends, hn::SetTableIndices(d, firsts));
            b = hn::TableLookupLanes(ends, hn::SetTableIndices(d, seconds));
        }
        const auto value = hn::MulAdd(hn::Sub(b, a), w, a);
        hn::StoreU(hn::DemoteTo(d8, hn::ConvertTo(di, value)), d8, out + v);
    }
}

void LowerAndRaise(const std::uint8_t* line, std::uint8_t* low, std::uint8_t* high, std::size_t count)
{
    const hn::ScalableTag<std::uint8_t> d8;
    const std::size_t n = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + n <= count; i += n) {
        const auto v = hn::LoadU(d8, line + i);
        hn::StoreU(hn::Min(v, hn::LoadU(d8, low + i)), d8, low + i);
        hn::StoreU(hn::Max(v, hn::LoadU(d8, high + i)), d8, high + i);
    }
    for (; i < count; ++i) {
        low[i] = std::min(low[i], line[i]);
        high[i] = std::max(high[i], line[i]);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kit::blurkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::blurkernels {

HWY_EXPORT(BlurHorizontally);
HWY_EXPORT(BlurVertically);
HWY_EXPORT(BlurVerticallyWide);
HWY_EXPORT(Lanes);
HWY_EXPORT(LowerAndRaise);
HWY_EXPORT(InterpolateAcross);

void interpolateAcross(const float* samples, std::size_t from, std::size_t to, std::size_t step, std::uint8_t* out)
{
    HWY_DYNAMIC_DISPATCH(InterpolateAcross)(samples, from, to, step, out);
}

void lowerAndRaise(const std::uint8_t* line, std::uint8_t* low, std::uint8_t* high, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(LowerAndRaise)(line, low, high, count);
}

std::size_t lanes() { return HWY_DYNAMIC_DISPATCH(Lanes)(); }

void blurVerticallyWide(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint16_t* plane, std::size_t planeStride,
    const BlurTiles* tiles)
{
    HWY_DYNAMIC_DISPATCH(BlurVerticallyWide)
    (c, strips, paddedWidth, paddedHeight, height, scratch, plane, planeStride, tiles);
}

void blurHorizontally(const GaussianBlur::Coefficients& c, const BlurSource& source, std::size_t paddedWidth,
    std::size_t paddedHeight, std::uint16_t* strips, float* scratch, std::uint32_t mismatch[2], const BlurTiles* tiles)
{
    HWY_DYNAMIC_DISPATCH(BlurHorizontally)(c, source, paddedWidth, paddedHeight, strips, scratch, mismatch, tiles);
}

void blurVertically(const GaussianBlur::Coefficients& c, const std::uint16_t* strips, std::size_t paddedWidth,
    std::size_t paddedHeight, std::size_t height, float* scratch, std::uint8_t* plane, std::size_t planeStride,
    const BlurTiles* tiles)
{
    HWY_DYNAMIC_DISPATCH(BlurVertically)
    (c, strips, paddedWidth, paddedHeight, height, scratch, plane, planeStride, tiles);
}

} // namespace kit::blurkernels
#endif
