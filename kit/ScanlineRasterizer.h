// ScanlineRasterizer: exact-area coverage of filled polygons, one pixel row at a time.
#pragma once

#include "kit/CrossingCoverage.h"
#include "kit/ScanlineRasterizerKernels.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace kit {

enum class FillRule {
    NonZero,
    EvenOdd,
};

/// Turns closed polygons in device space (x right, y down, pixel (x, y) the unit square at
/// (x, y)) into 8-bit coverage. With antialiasing each pixel's coverage is the area of the
/// pixel inside the shape, computed analytically from the edges (exact wherever edges of
/// opposite or overlapping windings do not share a pixel) and rounded to 8 bits; without it a
/// pixel is in (255) or out (0) by its centre. Work is proportional to the rows and to the
/// width between each row's leftmost and rightmost edge, with no per-pixel branches. Where the
/// path may wind more than once (it crosses or touches itself, or there are several polygons),
/// the pixels that two edges share are measured again exactly (CrossingCoverage).
class ScanlineRasterizer {
public:
    /// One row's coverage, 0 to 255: pixels left of x0 are 0, pixel x of x0 .. x1-1 has
    /// coverage[x - x0], and every pixel from x1 to the clip's right side has `rest`. Rows
    /// that no edge reaches are not handed on; they are empty.
    using RowSink = std::function<void(int y, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest)>;

    /// Clears the edges and sets the clip: pixels 0 .. width-1, rows 0 .. height-1.
    void reset(int width, int height);
    /// One closed polygon (the last point joins the first).
    void addPolygon(const double* xy, std::size_t pointCount);
    /// One edge of a path the caller closes; edges added this way are always treated as possibly
    /// crossing.
    void addEdge(double x0, double y0, double x1, double y1);
    /// Calls `sink` for every row that an edge reaches, top to bottom.
    void rasterize(FillRule rule, bool antialias, const RowSink& sink);

private:
    using Edge = rasterkernels::Edge;
    struct Segment {
        double x0, y0, x1, y1;
    };
    void addPolygonEdge(double x0, double y0, double x1, double y1);
    bool mayWindTwice() const;
    void accumulateRow(int row);
    void accumulateClipped(const Edge& e, int row, rasterkernels::RowCells& cells);
    void sweepRow(int row, FillRule rule, const RowSink& sink);
    void rasterizeAliased(FillRule rule, const RowSink& sink);

    int m_width = 0;
    int m_height = 0;
    std::vector<Edge> m_edges;
    // The single polygon's sides in order, horizontal ones too, to tell whether it crosses itself.
    std::vector<Segment> m_segments;
    int m_polygonCount = 0;
    bool m_looseEdges = false;
    bool m_correctShared = false;
    CrossingCoverage m_crossings;
    std::vector<Edge> m_active;
    std::vector<std::uint32_t> m_clipped;
    // Signed area deltas of width + 2 cells (and room for whole vectors past them): a running
    // sum along a row is the coverage. The row's touched cells lie in m_first .. m_last.
    std::vector<float> m_cells;
    int m_first = 0;
    int m_last = -1;
    // One bit for each stretch of cells that a piece of an edge reached in this row.
    std::vector<std::uint64_t> m_touched;
    std::vector<std::uint8_t> m_rowCoverage;
};

} // namespace kit
