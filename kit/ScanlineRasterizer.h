// ScanlineRasterizer: exact-area coverage of filled polygons, one pixel row at a time.
#pragma once

#include <functional>
#include <vector>

namespace kit {

enum class FillRule {
    NonZero,
    EvenOdd,
};

/// Turns closed polygons in device space (x right, y down, pixel (x, y) the unit square at
/// (x, y)) into coverage. With antialiasing each pixel's coverage is the area of the pixel
/// inside the shape, computed analytically from the edges (exact wherever edges of opposite or
/// overlapping windings do not share a pixel); without it a pixel is in or out by its centre.
/// Work is proportional to the rows and edge crossings, not to the area: the insides of spans
/// arrive as single runs.
class ScanlineRasterizer {
public:
    /// Coverage of pixels x0 .. x1-1 of row y: `coverage` for each of them when `perPixel` is
    /// null (0 < coverage <= 1), otherwise perPixel[x - x0] (0 to 1) for each pixel x.
    using SpanSink = std::function<void(int y, int x0, int x1, float coverage, const float* perPixel)>;

    /// Clears the edges and sets the clip: pixels 0 .. width-1, rows 0 .. height-1.
    void reset(int width, int height);
    /// One closed polygon (the last point joins the first).
    void addPolygon(const double* xy, std::size_t pointCount);
    void addEdge(double x0, double y0, double x1, double y1);
    /// Calls `sink` for every covered run, rows top to bottom, left to right within a row.
    void rasterize(FillRule rule, bool antialias, const SpanSink& sink);

private:
    struct Edge {
        double x0, y0, x1, y1; // y0 < y1
        double dxdy;
        float winding; // +1 for an edge that went down, -1 for one that went up
    };
    void accumulateRow(const Edge& e, int row);
    void accumulateSegment(double xa, double xb, float dy);
    void sweepRow(int row, FillRule rule, const SpanSink& sink);
    void emitVarying(int row, int first, int end, const SpanSink& sink);
    void rasterizeAliased(FillRule rule, const SpanSink& sink);

    int m_width = 0;
    int m_height = 0;
    std::vector<Edge> m_edges;
    // Per row: signed area deltas of width + 2 cells and the cell ranges touched.
    std::vector<float> m_cells;
    std::vector<std::pair<int, int>> m_touched;
    std::vector<float> m_rowCoverage;
};

} // namespace kit
