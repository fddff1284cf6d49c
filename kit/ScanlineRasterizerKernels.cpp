// ScanlineRasterizerKernels: edge pieces added to area cells and running sums of them turned into coverage bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kit/ScanlineRasterizerKernels.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep
#include <hwy/highway.h>

#include "kit/ScanlineRasterizerKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#ifndef KIT_RASTER_KERNELS_ONCE
#define KIT_RASTER_KERNELS_ONCE
namespace kit::rasterkernels {

// Adding 1.5 x 2^23 leaves a float between 0 and 2^22 rounded to a whole number in its low
// mantissa bits: the byte is read straight from them.
constexpr float kRoundingMagic = 12582912.0f;

std::uint8_t coverageByte(float sum, bool evenOdd)
{
    float a = std::fabs(sum);
    if (evenOdd) {
        const float folded = a - 2 * std::floor(a * 0.5f);
        a = std::min(folded, 2 - folded);
    } else {
        a = std::min(a, 1.0f);
    }
    const float rounded = a * 255.0f + kRoundingMagic;
    std::uint32_t bits;
    std::memcpy(&bits, &rounded, 4);
    return std::uint8_t(bits);
}

// floor and ceil for the non-negative values of the clip, without the library's general case.
inline int floorOf(double v) { return int(v); }
inline int ceilOf(double v)
{
    const int i = int(v);
    return i + (double(i) < v);
}

// Marks the stretches of cells from `from` to `to`; nearly always a single one.
inline void mark(std::uint64_t* touched, int from, int to)
{
    constexpr int kMark = int(kCellsPerMark);
    const int lastMark = to / kMark;
    for (int m = from / kMark;; ++m) {
        touched[m / 64] |= std::uint64_t(1) << (m % 64);
        if (m >= lastMark)
            break;
    }
}

// Each cell gets the signed area the piece leaves to its right within that cell, and the cell
// after it the rest of the height, so that a running sum along the row is the coverage. `s` is
// 1 / (xb - xa) when the piece leaves its cell.
inline void addPieceScalar(RowCells& row, double xa, double xb, float dy, float s)
{
    float* cells = row.cells;
    const int ia = floorOf(xa);
    const int ib = ceilOf(xb);
    row.first = std::min(row.first, ia);
    mark(row.touched, ia, ib + 1);
    if (ib <= ia + 1) {
        // Within one cell: the area right of the piece is the height times the distance from
        // its mean x to the cell's right side.
        const float mid = float(0.5 * (xa + xb) - ia);
        cells[ia] += dy * (1 - mid);
        cells[ia + 1] += dy * mid;
        row.last = std::max(row.last, ia + 1);
        return;
    }
    // Across cells: the height is spread along x at the constant rate s per unit of x.
    const float fa = float(xa - ia);
    const float head = 0.5f * s * (1 - fa) * (1 - fa);
    const float fb = float(xb - (ib - 1));
    const float tail = 0.5f * s * fb * fb;
    cells[ia] += dy * head;
    if (ib == ia + 2) {
        cells[ia + 1] += dy * (1 - head - tail);
    } else {
        const float second = s * (1.5f - fa);
        cells[ia + 1] += dy * (second - head);
        const float step = dy * s;
        for (int x = ia + 2; x < ib - 1; ++x)
            cells[x] += step;
        const float before = second + float(ib - ia - 3) * s;
        cells[ib - 1] += dy * (1 - before - tail);
    }
    cells[ib] += dy * tail;
    row.last = std::max(row.last, ib);
}

void addPiece(RowCells& cells, double xa, double xb, float dy)
{
    addPieceScalar(cells, xa, xb, dy, xb > xa ? float(1 / (xb - xa)) : 0.0f);
}

} // namespace kit::rasterkernels
#endif

HWY_BEFORE_NAMESPACE();
namespace kit::rasterkernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
using D = hn::ScalableTag<float>;
constexpr std::size_t kLanesOrOne = hn::MaxLanes(D()) >= 4 ? hn::MaxLanes(D()) : 1;
using V = hn::Vec<D>;
constexpr std::size_t kLanes = hn::MaxLanes(D());

// A running sum across a whole vector from sums within its 128-bit blocks: each block in turn
// adds the totals of the blocks before it (a log-step scan over at most four blocks).
struct BlockScan {
    using Indices = decltype(hn::SetTableIndices(D(), static_cast<const std::int32_t*>(nullptr)));
    Indices up1, up2, last;
    hn::Mask<D> firstBlock, firstTwoBlocks;

    BlockScan()
    {
        const D d;
        HWY_ALIGN std::int32_t one[kLanes], two[kLanes], end[kLanes];
        for (std::size_t j = 0; j < kLanes; ++j) {
            one[j] = std::int32_t(j >= 4 ? j - 4 : 0);
            two[j] = std::int32_t(j >= 8 ? j - 8 : 0);
            end[j] = std::int32_t(kLanes - 1);
        }
        up1 = hn::SetTableIndices(d, one);
        up2 = hn::SetTableIndices(d, two);
        last = hn::SetTableIndices(d, end);
        firstBlock = hn::FirstN(d, 4);
        firstTwoBlocks = hn::FirstN(d, 8);
    }

    HWY_INLINE V inclusive(V v) const
    {
        const D d;
        v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
        v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
        if constexpr (kLanes >= 8)
            v = hn::Add(v, hn::IfThenZeroElse(firstBlock, hn::TableLookupLanes(hn::Broadcast<3>(v), up1)));
        if constexpr (kLanes >= 16)
            v = hn::Add(v, hn::IfThenZeroElse(firstTwoBlocks, hn::TableLookupLanes(hn::Broadcast<3>(v), up2)));
        return v;
    }
    HWY_INLINE V total(V inclusiveSums) const
    {
        if constexpr (kLanes == 4)
            return hn::Broadcast<3>(inclusiveSums);
        else
            return hn::TableLookupLanes(inclusiveSums, last);
    }
};
#else
constexpr std::size_t kLanesOrOne = 1;
#endif

// Pieces narrower than this are taken as vertical at their middle: the area that moves is
// below 1e-4 of a pixel, and the general formula would divide by nearly nothing.
constexpr float kNarrow = 1e-3f;

// A piece that ends within four cells of its first, the common case, with one formula for
// all of them and no branch on where it ends: the share of pixel ia + k right of the piece is
// the difference across it of the integral of the unit ramp, Phi(u) = t^2 / 2 + max(u - 1, 0)
// with t = clamp(u, 0, 1), divided by its width.
HWY_INLINE void addShortPiece(RowCells& row, int ia, float fa, float fb, float dy)
{
#if HWY_TARGET != HWY_SCALAR
    const hn::CappedTag<float, 4> d;
    if constexpr (hn::MaxLanes(d) == 4) {
        const auto zero = hn::Zero(d), one = hn::Set(d, 1.0f), half = hn::Set(d, 0.5f);
        const auto right = hn::Iota(d, 1.0f);
        auto ramp = [&](decltype(right) u) {
            const auto t = hn::Min(hn::Max(u, zero), one);
            return hn::MulAdd(hn::Mul(t, t), half, hn::Max(hn::Sub(u, one), zero));
        };
        const float across = fb - fa;
        auto share = across >= kNarrow
            ? hn::Mul(hn::Sub(ramp(hn::Sub(right, hn::Set(d, fa))), ramp(hn::Sub(right, hn::Set(d, fb)))),
                hn::Set(d, 1 / across))
            : hn::Min(hn::Max(hn::Sub(right, hn::Set(d, 0.5f * (fa + fb))), zero), one);
        // The piece ends within the four cells: the last one's pixel lies wholly right of it.
        share = hn::IfThenElse(hn::FirstN(d, 3), share, one);
        const auto delta = hn::Sub(share, hn::ShiftLeftLanes<1>(d, share));
        float* cells = row.cells + ia;
        hn::StoreU(hn::MulAdd(delta, hn::Set(d, dy), hn::LoadU(d, cells)), d, cells);
        row.first = std::min(row.first, ia);
        row.last = std::max(row.last, ia + 3);
        mark(row.touched, ia, ia + 3);
        return;
    }
#endif
    addPieceScalar(row, ia + double(fa), ia + double(fb), dy, fb > fa ? 1 / (fb - fa) : 0.0f);
}

std::size_t AccumulateRow(
    const Edge* edges, std::size_t count, int row, int width, RowCells& cells, std::uint32_t* clipped)
{
    std::size_t clippedCount = 0;
    RowCells local = cells;
    const double right = width, rowTop = row, rowBottom = row + 1;
    for (std::size_t i = 0; i < count; ++i) {
        const Edge& e = edges[i];
        double top = rowTop, bottom = rowBottom;
        float dy = e.winding, s = e.rate;
        // An edge that spans the whole row moves by the same |dx| every row: its rate along x is
        // worked out once.
        if (!(e.y0 <= rowTop && e.y1 >= rowBottom)) {
            top = std::max(e.y0, rowTop);
            bottom = std::min(e.y1, rowBottom);
            if (!(bottom > top))
                continue;
            dy = float(bottom - top) * e.winding;
            s = -1;
        }
        const double xTop = e.x0 + (top - e.y0) * e.dxdy, xBottom = e.x0 + (bottom - e.y0) * e.dxdy;
        const double xa = std::min(xTop, xBottom), xb = std::max(xTop, xBottom);
        if (!(xa >= 0 && xb <= right)) {
            clipped[clippedCount++] = std::uint32_t(i);
            continue;
        }
        const int ia = floorOf(xa);
        if (xb <= ia + 3) {
            addShortPiece(local, ia, float(xa - ia), float(xb - ia), dy);
            continue;
        }
        if (s < 0)
            s = float(1 / (xb - xa));
        addPieceScalar(local, xa, xb, dy, s);
    }
    cells = local;
    return clippedCount;
}

// The running sum over `count` cells (whole vectors when the target has them).
float SweepRun(float* cells, std::size_t count, float sum, bool evenOdd, std::uint8_t* coverage)
{
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const D d;
    const hn::RebindToUnsigned<D> du;
    const hn::Rebind<std::uint8_t, D> d8;
    if constexpr (kLanes >= 4) {
        const BlockScan scan;
        const auto zero = hn::Zero(d), one = hn::Set(d, 1.0f), two = hn::Set(d, 2.0f), half = hn::Set(d, 0.5f);
        const auto full = hn::Set(d, 255.0f), magic = hn::Set(d, kRoundingMagic);
        // Only the carry's add waits for the previous vector.
        auto carry = hn::Set(d, sum);
        for (; i < count; i += kLanes) {
            const auto local = scan.inclusive(hn::LoadU(d, cells + i));
            hn::StoreU(zero, d, cells + i);
            auto a = hn::Abs(hn::Add(local, carry));
            carry = hn::Add(carry, scan.total(local));
            if (evenOdd) {
                a = hn::NegMulAdd(two, hn::Floor(hn::Mul(a, half)), a);
                a = hn::Min(a, hn::Sub(two, a));
            } else {
                a = hn::Min(a, one);
            }
            const auto bits = hn::BitCast(du, hn::MulAdd(a, full, magic));
            hn::StoreU(hn::TruncateTo(d8, bits), d8, coverage + i);
        }
        return hn::GetLane(carry);
    }
#endif
    for (; i < count; ++i) {
        sum += cells[i];
        cells[i] = 0;
        coverage[i] = coverageByte(sum, evenOdd);
    }
    return sum;
}

bool isMarked(const std::uint64_t* touched, std::size_t mark) { return (touched[mark / 64] >> (mark % 64)) & 1; }

float SweepCells(float* cells, const std::uint64_t* touched, std::size_t begin, std::size_t end, float sum,
    bool evenOdd, std::uint8_t* coverage)
{
    // Runs of marked stretches take the running sum; between them the coverage holds still.
    std::size_t x = begin;
    while (x < end) {
        const bool marked = isMarked(touched, x / kCellsPerMark);
        std::size_t runEnd = (x / kCellsPerMark + 1) * kCellsPerMark;
        while (runEnd < end && isMarked(touched, runEnd / kCellsPerMark) == marked)
            runEnd += kCellsPerMark;
        runEnd = std::min(runEnd, end);
        if (marked) {
            sum = SweepRun(cells + x, runEnd - x, sum, evenOdd, coverage + (x - begin));
            // A whole last vector has read zero cells past the run, or cells past `end`.
            x += (runEnd - x + kLanesOrOne - 1) / kLanesOrOne * kLanesOrOne;
        } else {
            std::memset(coverage + (x - begin), coverageByte(sum, evenOdd), runEnd - x);
            x = runEnd;
        }
    }
    return sum;
}

} // namespace HWY_NAMESPACE
} // namespace kit::rasterkernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kit::rasterkernels {

HWY_EXPORT(SweepCells);
HWY_EXPORT(AccumulateRow);

std::size_t accumulateRow(
    const Edge* edges, std::size_t count, int row, int width, RowCells& cells, std::uint32_t* clipped)
{
    return HWY_DYNAMIC_DISPATCH(AccumulateRow)(edges, count, row, width, cells, clipped);
}

float sweepCells(float* cells, const std::uint64_t* touched, std::size_t begin, std::size_t end, float sum,
    bool evenOdd, std::uint8_t* coverage)
{
    return HWY_DYNAMIC_DISPATCH(SweepCells)(cells, touched, begin, end, sum, evenOdd, coverage);
}

} // namespace kit::rasterkernels
#endif
