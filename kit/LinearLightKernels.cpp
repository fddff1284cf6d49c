// LinearLightKernels: encoding and colour matrices over pixel vectors, one build per SIMD
// target. A 128-bit block holds one pixel.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/LinearLightKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/LinearLightKernels.h"

HWY_BEFORE_NAMESPACE();
namespace kit::linearlightkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
using DF = hn::CappedTag<float, 16>;
using DI = hn::RebindToSigned<DF>;
using DU = hn::RebindToUnsigned<DF>;

// The lanes that hold alpha.
HWY_INLINE hn::Mask<DI> alphaLanes()
{
    const DI di;
    return hn::Eq(hn::And(hn::Iota(di, 0), hn::Set(di, 3)), hn::Set(di, 3));
}

// Four floats a pixel from its bytes: colour from the table row of its alpha, for `count`
// pixels. Read by scalar loads (gathers measured slower here, and much slower on a loaded
// machine), and written ahead of the vector loads that read them back, so that these do not
// wait on the scalar stores.
HWY_INLINE void decodeAhead(const std::uint8_t* pixels, std::size_t count, const float* table, float* out)
{
    for (std::size_t k = 0; k < 4 * count; k += 4) {
        const std::uint8_t* p = pixels + k;
        const float* row = table + std::size_t(p[3]) * 256;
        out[k] = row[p[0]], out[k + 1] = row[p[1]], out[k + 2] = row[p[2]];
        out[k + 3] = p[3] * (1.0f / 255);
    }
}

// The inverse of the sRGB curve of bytes v (floats 0 .. 255), times `scale`: above the linear
// toe a degree-7 polynomial, within 2.2e-6 of the exact curve (0.15 of a unit of 1 / 65535).
HWY_INLINE hn::Vec<DF> linearOfBytes(hn::Vec<DF> v, float scale)
{
    const DF df;
    // z runs from -1 to 1 from the toe's end, 0.04045, to 1.
    const auto z = hn::MulAdd(
        v, hn::Set(df, float(2 / (255 * (1 - 0.04045)))), hn::Set(df, float(-1 - 2 * 0.04045 / (1 - 0.04045))));
    auto c = hn::Set(df, 0.00032793320f * scale);
    for (float k :
        { -0.00062386534f, 0.00085582753f, -0.0036020908f, 0.030362796f, 0.27255082f, 0.46688747f, 0.23324227f })
        c = hn::MulAdd(c, z, hn::Set(df, k * scale));
    return hn::IfThenElse(hn::Le(v, hn::Set(df, 10.5f)), hn::Mul(v, hn::Set(df, float(scale / (255 * 12.92)))), c);
}

// Premultiplied sRGB bytes of a vector's pixels in linear light times `scale`, alpha too, when
// every one of them is opaque (photographs are, and need no table of alpha); otherwise false,
// with nothing made.
HWY_INLINE bool decodedOpaque(const std::uint8_t* pixels, float scale, hn::Vec<DF>& out)
{
    const DF df;
    const DI di;
    const DU du;
    const hn::Rebind<std::uint8_t, DU> d8;
    const auto bytes = hn::PromoteTo(du, hn::LoadU(d8, pixels));
    const auto alpha = alphaLanes();
    if (!hn::AllTrue(di, hn::Or(hn::Not(alpha), hn::RebindMask(di, hn::Eq(bytes, hn::Set(du, 255u))))))
        return false;
    const auto v = hn::ConvertTo(df, hn::BitCast(di, bytes));
    out = hn::IfThenElse(hn::RebindMask(df, alpha), hn::Set(df, scale), linearOfBytes(v, scale));
    return true;
}

// Pixels a chunk of decoded floats holds.
constexpr std::size_t kChunk = 16;

// AVX-512's estimates of 1 / x and 1 / sqrt(x) are within 2^-14; the other x86 targets' only
// within 1.5 x 2^-12 (and Arm's worse), which moves some bytes by one: there one Newton step
// brings them within 2^-20. The portable targets compute them exactly.
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
constexpr bool kRefineEstimates = false;
#else
constexpr bool kRefineEstimates = HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128;
#endif

HWY_INLINE hn::Vec<DF> reciprocalSqrt(hn::Vec<DF> x)
{
    const auto y = hn::ApproximateReciprocalSqrt(x);
    if constexpr (!kRefineEstimates)
        return y;
    const DF df;
    const auto halfXY = hn::Mul(hn::Mul(hn::Set(df, 0.5f), x), y);
    return hn::Mul(y, hn::NegMulAdd(halfXY, y, hn::Set(df, 1.5f)));
}

HWY_INLINE hn::Vec<DF> reciprocal(hn::Vec<DF> x)
{
    const auto y = hn::ApproximateReciprocal(x);
    if constexpr (!kRefineEstimates)
        return y;
    return hn::Mul(y, hn::NegMulAdd(x, y, hn::Set(DF(), 2.0f)));
}

// x^(1/4) to within 1.2e-4 of itself, for x from 1e-4 up (below it, whatever is finite): two
// estimates of 1 / sqrt, which is enough for 0.03 of an 8-bit step.
HWY_INLINE hn::Vec<DF> fourthRoot(hn::Vec<DF> x)
{
    x = hn::Max(x, hn::Set(DF(), 1e-4f));
    const auto root = hn::Mul(x, reciprocalSqrt(x));
    return hn::Mul(root, reciprocalSqrt(root));
}

// Added to a float from 0 to 2^22, 2^23 leaves it rounded to the nearest integer in the low
// bits of the sum's mantissa: a rounding conversion in one addition, where converting to integers
// costs a handful of instructions more to catch overflow.
constexpr float kRounding = 8388608.0f;

// Alpha above this counts as 1: dividing by it would move no colour by 0.01 of a step.
constexpr float kOpaque = 0.99998f;

// The sRGB curve on 0 .. 1, computed, not read: above its linear toe, 1.055 u^(1/2.4) - 0.055 is
// t^(5/3) for the fourth root t of u, which a degree-5 polynomial in t follows to within 1e-5
// (0.0025 of a step). Reading a table, by gathers or lane by lane, cost several times more.
HWY_INLINE hn::Vec<DF> curve(hn::Vec<DF> u)
{
    const DF df;
    const auto z = hn::MulAdd(fourthRoot(u), hn::Set(df, 2.6196699f), hn::Set(df, -1.6196699f));
    auto c = hn::Set(df, -0.00050867820f);
    for (float k : { 0.0016719262f, -0.0068371533f, 0.10015047f, 0.48712370f, 0.41839564f })
        c = hn::MulAdd(c, z, hn::Set(df, k));
    return hn::IfThenElse(hn::Le(u, hn::Set(df, 0.0031308f)), hn::Mul(u, hn::Set(df, 12.92f)), c);
}

// Stores the bytes k of floats that hold kRounding + k.
HWY_INLINE void storeRounded(hn::Vec<DF> v, std::uint8_t* out)
{
    const hn::Rebind<std::uint8_t, DU> d8;
    hn::StoreU(hn::TruncateTo(d8, hn::BitCast(DU(), v)), d8, out);
}

// Bytes from premultiplied floats, rounded to nearest as linearlight::encodeRow rounds them (a
// tie may go the other way). A vector of opaque pixels, what photographs are made of, needs no
// division by alpha.
HWY_INLINE void encoded(hn::Vec<DF> p, std::uint8_t* out)
{
    const DF df;
    const auto zero = hn::Zero(df), one = hn::Set(df, 1.0f), rounding = hn::Set(df, kRounding);
    const auto alpha = hn::RebindMask(df, alphaLanes());
    const auto a = hn::Max(hn::Min(hn::Broadcast<3>(p), one), zero);
    if (hn::AllTrue(df, hn::Gt(a, hn::Set(df, kOpaque)))) {
        const auto q = hn::MulAdd(curve(hn::Max(zero, hn::Min(p, one))), hn::Set(df, 255.0f), rounding);
        storeRounded(hn::IfThenElse(alpha, hn::Set(df, kRounding + 255), q), out);
        return;
    }
    const auto alpha8 = hn::MulAdd(a, hn::Set(df, 255.0f), rounding);
    const auto a8 = hn::Sub(alpha8, rounding);
    // Colour over alpha; a transparent pixel's colour comes out 0 whatever the quotient. Division
    // of whole vectors is slow: an estimate within 2^-14 takes its place (refined where the
    // target's are coarser), which moves the encoded value by at most 0.03 of a step.
    const auto u
        = hn::Min(hn::Mul(hn::Max(zero, hn::Min(p, a)), reciprocal(hn::IfThenElse(hn::Eq(a8, zero), one, a))), one);
    storeRounded(hn::IfThenElse(alpha, alpha8, hn::MulAdd(a8, curve(u), rounding)), out);
}

std::size_t Encode(const float* pixels, std::size_t count, std::uint8_t* out)
{
    std::size_t i = 0;
    const DF df;
    for (const std::size_t n = hn::Lanes(df); i + n <= 4 * count; i += n)
        encoded(hn::LoadU(df, pixels + i), out + i);
    return i / 4;
}

std::size_t EncodeWindowSums(
    const std::uint32_t* columns, std::size_t window, float scale, std::size_t count, std::uint8_t* out)
{
    // Sums of whole vectors of pixels at once: with D_j the column entering minus the one leaving
    // after pixel j, pixel k of a vector is the sum at the vector's start plus D's sum before k,
    // found in two moves of the vector by one and two pixels. Only the vector's total waits on
    // the one before; a pixel at a time, the sum waited on every pixel. Sums stay below 2^31, so
    // the arithmetic modulo 2^32 on the way is exact.
    const DF df;
    const DI di;
    const DU du;
    const std::size_t n = hn::Lanes(du), pixels = n / 4;
    const auto iota = hn::Iota(di, 0);
    const auto up1 = hn::IndicesFromVec(du, hn::Max(hn::Sub(iota, hn::Set(di, 4)), hn::Zero(di)));
    const auto up2 = hn::IndicesFromVec(du, hn::Max(hn::Sub(iota, hn::Set(di, 8)), hn::Zero(di)));
    const auto last = hn::IndicesFromVec(du, hn::Add(hn::And(iota, hn::Set(di, 3)), hn::Set(di, int(n) - 4)));
    const auto from1 = hn::RebindMask(du, hn::Gt(iota, hn::Set(di, 3)));
    const auto from2 = hn::RebindMask(du, hn::Gt(iota, hn::Set(di, 7)));
    HWY_ALIGN std::uint32_t first[4] = { 0, 0, 0, 0 };
    for (std::size_t t = 0; t < window; ++t)
        for (std::size_t c = 0; c < 4; ++c)
            first[c] += columns[4 * t + c];
    auto start = hn::LoadDup128(du, first);
    const auto s = hn::Set(df, scale);
    std::size_t i = 0;
    // The last pixel's D would read past the columns: it is left to the caller.
    for (; i + pixels < count; i += pixels) {
        const auto d = hn::Sub(hn::LoadU(du, columns + 4 * (i + window)), hn::LoadU(du, columns + 4 * i));
        auto through = d; // D summed up to and including each pixel
        if (pixels > 1)
            through = hn::Add(through, hn::IfThenElseZero(from1, hn::TableLookupLanes(through, up1)));
        if (pixels > 2)
            through = hn::Add(through, hn::IfThenElseZero(from2, hn::TableLookupLanes(through, up2)));
        const auto sums = hn::Add(start, hn::Sub(through, d));
        start = hn::Add(start, hn::TableLookupLanes(through, last));
        encoded(hn::Mul(hn::ConvertTo(df, hn::BitCast(di, sums)), s), out + 4 * i);
    }
    return i;
}

// A 3 x 3 matrix applied to pixel vectors: each pixel the sum of its broadcast channels times
// the matrix's columns, alpha kept.
class Matrix {
public:
    explicit Matrix(const float m[9]) : m_alpha(hn::RebindMask(DF(), alphaLanes()))
    {
        HWY_ALIGN const float columns[3][4]
            = { { m[0], m[3], m[6], 0 }, { m[1], m[4], m[7], 0 }, { m[2], m[5], m[8], 0 } };
        for (int c = 0; c < 3; ++c)
            m_columns[c] = hn::LoadDup128(DF(), columns[c]);
    }
    hn::Vec<DF> operator()(hn::Vec<DF> p) const
    {
        const auto rgb = hn::MulAdd(m_columns[2], hn::Broadcast<2>(p),
            hn::MulAdd(m_columns[1], hn::Broadcast<1>(p), hn::Mul(m_columns[0], hn::Broadcast<0>(p))));
        return hn::IfThenElse(m_alpha, p, rgb);
    }

private:
    hn::Mask<DF> m_alpha;
    hn::Vec<DF> m_columns[3];
};

std::size_t MapMatrix(const float m[9], float* rgba, std::size_t count)
{
    std::size_t i = 0;
    const DF df;
    const Matrix matrix(m);
    for (const std::size_t n = hn::Lanes(df); i + n <= 4 * count; i += n)
        hn::StoreU(matrix(hn::LoadU(df, rgba + i)), df, rgba + i);
    return i / 4;
}

std::size_t MapMatrixBytes(
    const float m[9], const float* table, const std::uint8_t* in, std::uint8_t* out, std::size_t count)
{
    const DF df;
    const std::size_t n = hn::Lanes(df);
    const Matrix matrix(m);
    HWY_ALIGN float chunk[4 * kChunk];
    std::size_t done = 0;
    for (; done + kChunk <= count; done += kChunk) {
        const std::uint8_t* pixels = in + 4 * done;
        std::uint8_t* bytes = out + 4 * done;
        std::size_t i = 0;
        hn::Vec<DF> p;
        for (; i < 4 * kChunk && decodedOpaque(pixels + i, 1.0f, p); i += n)
            encoded(matrix(p), bytes + i);
        if (i == 4 * kChunk)
            continue;
        decodeAhead(pixels + i, kChunk - i / 4, table, chunk + i);
        for (; i < 4 * kChunk; i += n)
            encoded(matrix(hn::Load(df, chunk + i)), bytes + i);
    }
    return done;
}

std::size_t Decode(const std::uint8_t* pixels, std::size_t count, const float* table, float* out)
{
    const DF df;
    const std::size_t n = hn::Lanes(df);
    std::size_t i = 0;
    for (; i + n <= 4 * count; i += n) {
        hn::Vec<DF> p;
        if (decodedOpaque(pixels + i, 1.0f, p))
            hn::StoreU(p, df, out + i);
        else
            decodeAhead(pixels + i, n / 4, table, out + i);
    }
    return i / 4;
}

std::size_t DecodeUnits(const std::uint8_t* pixels, std::size_t count, const std::uint16_t* table, std::uint16_t* out)
{
    const DF df;
    const DU du;
    const hn::Rebind<std::uint16_t, DU> d16;
    const std::size_t n = hn::Lanes(df);
    std::size_t i = 0;
    for (; i + n <= 4 * count; i += n) {
        hn::Vec<DF> p;
        if (decodedOpaque(pixels + i, 65535.0f, p)) {
            hn::StoreU(hn::TruncateTo(d16, hn::BitCast(du, hn::Add(p, hn::Set(df, kRounding)))), d16, out + i);
            continue;
        }
        for (std::size_t k = i; k < i + n; k += 4) {
            const std::uint16_t* row = table + std::size_t(pixels[k + 3]) * 256;
            for (std::size_t c = 0; c < 4; ++c)
                out[k + c] = row[pixels[k + c]];
        }
    }
    return i / 4;
}

#else
// Without vectors every pixel goes the caller's way.
std::size_t Encode(const float*, std::size_t, std::uint8_t*) { return 0; }
std::size_t EncodeWindowSums(const std::uint32_t*, std::size_t, float, std::size_t, std::uint8_t*) { return 0; }
std::size_t MapMatrix(const float*, float*, std::size_t) { return 0; }
std::size_t MapMatrixBytes(const float*, const float*, const std::uint8_t*, std::uint8_t*, std::size_t) { return 0; }
std::size_t Decode(const std::uint8_t*, std::size_t, const float*, float*) { return 0; }
std::size_t DecodeUnits(const std::uint8_t*, std::size_t, const std::uint16_t*, std::uint16_t*) { return 0; }
#endif

} // namespace HWY_NAMESPACE
} // namespace kit::linearlightkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::linearlightkernels {

HWY_EXPORT(Encode);
HWY_EXPORT(EncodeWindowSums);
HWY_EXPORT(MapMatrix);
HWY_EXPORT(MapMatrixBytes);
HWY_EXPORT(Decode);
HWY_EXPORT(DecodeUnits);

std::size_t encode(const float* pixels, std::size_t count, std::uint8_t* out)
{
    return HWY_DYNAMIC_DISPATCH(Encode)(pixels, count, out);
}

std::size_t encodeWindowSums(
    const std::uint32_t* columns, std::size_t window, float scale, std::size_t count, std::uint8_t* out)
{
    return HWY_DYNAMIC_DISPATCH(EncodeWindowSums)(columns, window, scale, count, out);
}

std::size_t mapMatrix(const float m[9], float* rgba, std::size_t count)
{
    return HWY_DYNAMIC_DISPATCH(MapMatrix)(m, rgba, count);
}

std::size_t mapMatrixBytes(
    const float m[9], const float* table, const std::uint8_t* in, std::uint8_t* out, std::size_t count)
{
    return HWY_DYNAMIC_DISPATCH(MapMatrixBytes)(m, table, in, out, count);
}

std::size_t decode(const std::uint8_t* pixels, std::size_t count, const float* table, float* out)
{
    return HWY_DYNAMIC_DISPATCH(Decode)(pixels, count, table, out);
}

std::size_t decodeUnits(const std::uint8_t* pixels, std::size_t count, const std::uint16_t* table, std::uint16_t* out)
{
    return HWY_DYNAMIC_DISPATCH(DecodeUnits)(pixels, count, table, out);
}

} // namespace kit::linearlightkernels
#endif
