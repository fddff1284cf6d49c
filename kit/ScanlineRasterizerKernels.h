// ScanlineRasterizerKernels: the vectorised row passes behind ScanlineRasterizer, one build per SIMD target.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kit::rasterkernels {

/// Cells a bit of the touched map stands for.
constexpr std::size_t kCellsPerMark = 64;

/// An edge in device space from (x0, y0) down to (x1, y1), y0 < y1, moving dxdy in x per unit of
/// y; winding is +1 for an edge drawn downward and -1 for one drawn upward, rate 1 / |dxdy| (0
/// for a vertical edge).
struct Edge {
    double x0, y0, x1, y1;
    double dxdy;
    float winding;
    float rate;
};

/// A row's area cells (a running sum along them is the coverage), the bit map of the stretches
/// of kCellsPerMark cells that may be non-zero (64 to a word), and the first and last cell
/// touched.
struct RowCells {
    float* cells;
    std::uint64_t* touched;
    int first;
    int last;
};

/// Adds the part within row `row` of every edge that stays within x 0 .. width there. The
/// indices of the edges that leave it are written to `clipped` and their count returned. Cells
/// up to four past a piece's last one may be written (with zero): cells needs that room.
std::size_t accumulateRow(
    const Edge* edges, std::size_t count, int row, int width, RowCells& cells, std::uint32_t* clipped);

/// Adds one straight piece within the clip, from xa to xb (xa <= xb), spanning a height of |dy|
/// with the winding's sign.
void addPiece(RowCells& cells, double xa, double xb, float dy);

/// Runs a sum along cells begin .. end-1 starting from `sum` and writes coverage[x - begin] from
/// the sum after cell x: its magnitude clamped to 1 (non-zero rule) or folded into 0 .. 1
/// (even-odd rule), times 255, rounded to nearest. Cells whose stretch is not marked in
/// `touched` are zero and only take the running value. Every cell read is zeroed. Whole vectors
/// may run up to 15 cells past `end`: cells and coverage must have that room, and such cells
/// are summed and zeroed too. Returns the sum after the last cell read.
float sweepCells(float* cells, const std::uint64_t* touched, std::size_t begin, std::size_t end, float sum,
    bool evenOdd, std::uint8_t* coverage);

/// The coverage byte of one running sum, exactly as sweepCells computes it.
std::uint8_t coverageByte(float sum, bool evenOdd);

} // namespace kit::rasterkernels
