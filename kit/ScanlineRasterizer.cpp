// ScanlineRasterizer: signed-area accumulation per row, swept into coverage bytes with SIMD.
#include "kit/ScanlineRasterizer.h"

#include "kit/ScanlineRasterizerKernels.h"

#include <algorithm>
#include <cmath>

namespace kit {

namespace {

// Cells past the row's end: a row's sweep runs over whole vectors, and a short piece writes
// four cells from its first.
constexpr std::size_t kCellSlack = 20;
constexpr int kMark = int(rasterkernels::kCellsPerMark);

} // namespace

void ScanlineRasterizer::reset(int width, int height)
{
    m_width = std::max(0, width);
    m_height = std::max(0, height);
    m_edges.clear();
    m_segments.clear();
    m_crossings.reset();
    m_polygonCount = 0;
    m_looseEdges = false;
    m_cells.assign(std::size_t(m_width) + 2 + kCellSlack, 0.0f);
    m_rowCoverage.resize(std::size_t(m_width) + kCellSlack);
    m_touched.assign(m_cells.size() / (64 * rasterkernels::kCellsPerMark) + 1, 0);
    m_first = m_width + 2;
    m_last = -1;
}

void ScanlineRasterizer::addEdge(double x0, double y0, double x1, double y1)
{
    m_looseEdges = true;
    addPolygonEdge(x0, y0, x1, y1);
}

void ScanlineRasterizer::addPolygonEdge(double x0, double y0, double x1, double y1)
{
    if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1))
        return;
    if (y0 == y1) {
        if (y0 > 0 && y0 < m_height && x0 != x1)
            m_crossings.addFlat(y0, x0, x1);
        return;
    }
    float winding = 1;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        winding = -1;
    }
    if (y1 <= 0 || y0 >= m_height)
        return;
    const double dxdy = (x1 - x0) / (y1 - y0);
    m_edges.push_back({ x0, y0, x1, y1, dxdy, winding, dxdy != 0 ? float(1 / std::fabs(dxdy)) : 0.0f });
}

void ScanlineRasterizer::addPolygon(const double* xy, std::size_t pointCount)
{
    if (pointCount < 2)
        return;
    ++m_polygonCount;
    for (std::size_t i = 0; i < pointCount; ++i) {
        const std::size_t j = (i + 1) % pointCount;
        const Segment side { xy[2 * i], xy[2 * i + 1], xy[2 * j], xy[2 * j + 1] };
        if (m_polygonCount == 1 && (side.x0 != side.x1 || side.y0 != side.y1))
            m_segments.push_back(side);
        addPolygonEdge(side.x0, side.y0, side.x1, side.y1);
    }
}

// A single polygon whose sides meet only where consecutive ones share a corner winds at most
// once, and the summed areas are exact everywhere. Sides are compared only with those they
// overlap in y; past a budget proportional to the sides the answer is "may", which costs only
// time.
bool ScanlineRasterizer::mayWindTwice() const
{
    if (m_looseEdges || m_polygonCount != 1)
        return m_polygonCount > 0 || m_looseEdges;
    const std::size_t n = m_segments.size();
    std::vector<std::size_t> order(n);
    for (std::size_t i = 0; i < n; ++i)
        order[i] = i;
    auto top = [&](std::size_t i) { return std::min(m_segments[i].y0, m_segments[i].y1); };
    auto bottom = [&](std::size_t i) { return std::max(m_segments[i].y0, m_segments[i].y1); };
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return top(a) < top(b); });
    auto side = [](const Segment& s, double x, double y) {
        const double d = (s.x1 - s.x0) * (y - s.y0) - (s.y1 - s.y0) * (x - s.x0);
        return (d > 0) - (d < 0);
    };
    auto touch = [&](const Segment& a, const Segment& b) {
        if (std::max(a.x0, a.x1) < std::min(b.x0, b.x1) || std::max(b.x0, b.x1) < std::min(a.x0, a.x1))
            return false;
        return side(a, b.x0, b.y0) * side(a, b.x1, b.y1) <= 0 && side(b, a.x0, a.y0) * side(b, a.x1, a.y1) <= 0;
    };
    std::vector<std::size_t> active;
    std::size_t budget = 64 * n + 1'000'000;
    for (std::size_t i : order) {
        std::erase_if(active, [&](std::size_t a) { return bottom(a) < top(i); });
        for (std::size_t a : active) {
            if (budget-- == 0)
                return true;
            const bool neighbours = (a + 1) % n == i || (i + 1) % n == a;
            if (!neighbours && touch(m_segments[a], m_segments[i]))
                return true;
        }
        active.push_back(i);
    }
    return false;
}

// Where an edge crosses the clip's sides it is cut there: a part left of the clip acts as a
// vertical edge on its left side (it still decides what lies to its right), a part right of it
// touches no visible pixel and is pressed onto the right side.
void ScanlineRasterizer::accumulateClipped(const Edge& e, int row, rasterkernels::RowCells& cells)
{
    const double top = std::max(e.y0, double(row));
    const double bottom = std::min(e.y1, double(row + 1));
    const double xTop = e.x0 + (top - e.y0) * e.dxdy;
    const double xBottom = e.x0 + (bottom - e.y0) * e.dxdy;
    const float dy = float(bottom - top) * e.winding;
    double cuts[4] = { 0, 1, 1, 1 };
    int count = 1;
    for (double side : { 0.0, double(m_width) }) {
        if ((xTop - side) * (xBottom - side) < 0)
            cuts[count++] = (side - xTop) / (xBottom - xTop);
    }
    if (count == 3 && cuts[2] < cuts[1])
        std::swap(cuts[1], cuts[2]);
    cuts[count++] = 1;
    for (int k = 0; k + 1 < count; ++k) {
        const double t0 = cuts[k], t1 = cuts[k + 1];
        if (!(t1 > t0))
            continue;
        const double xa = std::clamp(xTop + (xBottom - xTop) * t0, 0.0, double(m_width));
        const double xb = std::clamp(xTop + (xBottom - xTop) * t1, 0.0, double(m_width));
        rasterkernels::addPiece(cells, std::min(xa, xb), std::max(xa, xb), float(t1 - t0) * dy);
    }
}

void ScanlineRasterizer::accumulateRow(int row)
{
    rasterkernels::RowCells cells { m_cells.data(), m_touched.data(), m_first, m_last };
    m_clipped.resize(m_active.size());
    const std::size_t clipped
        = rasterkernels::accumulateRow(m_active.data(), m_active.size(), row, m_width, cells, m_clipped.data());
    for (std::size_t i = 0; i < clipped; ++i)
        accumulateClipped(m_active[m_clipped[i]], row, cells);
    m_first = cells.first;
    m_last = cells.last;
}

// Turns the row's touched cells into coverage bytes and clears them for the next row. Left of
// the first touched cell the running sum is zero; right of the last it no longer changes.
void ScanlineRasterizer::sweepRow(int row, FillRule rule, const RowSink& sink)
{
    if (m_last < m_first)
        return;
    const bool evenOdd = rule == FillRule::EvenOdd;
    const int first = m_first, end = std::min(m_last + 1, m_width);
    float* cells = m_cells.data();
    float sum = 0;
    if (end > first)
        sum = rasterkernels::sweepCells(
            cells, m_touched.data(), std::size_t(first), std::size_t(end), 0, evenOdd, m_rowCoverage.data());
    // Cells past the last pixel (pressed onto the right side) still count for what lies right
    // of it; those the sweep already read are zero.
    for (int c = std::max(first, end); c <= m_last; ++c) {
        sum += cells[c];
        cells[c] = 0;
    }
    std::fill(m_touched.begin() + first / kMark / 64, m_touched.begin() + (m_last + 1) / kMark / 64 + 1, 0);
    m_first = m_width + 2;
    m_last = -1;
    if (first < m_width && m_correctShared)
        m_crossings.correctRow(
            m_active.data(), m_active.size(), row, m_width, evenOdd, m_rowCoverage.data(), first, end);
    if (first < m_width)
        sink(row, first, end, m_rowCoverage.data(), rasterkernels::coverageByte(sum, evenOdd));
}

void ScanlineRasterizer::rasterizeAliased(FillRule rule, const RowSink& sink)
{
    std::vector<std::pair<double, float>> crossings;
    std::size_t next = 0;
    std::vector<const Edge*> active;
    for (int row = 0; row < m_height; ++row) {
        const double y = row + 0.5;
        while (next < m_edges.size() && m_edges[next].y0 <= y)
            active.push_back(&m_edges[next++]);
        std::erase_if(active, [&](const Edge* e) { return e->y1 <= y; });
        crossings.clear();
        for (const Edge* e : active) {
            if (e->y0 <= y)
                crossings.emplace_back(e->x0 + (y - e->y0) * e->dxdy, e->winding);
        }
        std::sort(crossings.begin(), crossings.end());
        // Spans come left to right and do not overlap: the gaps between them stay out.
        std::uint8_t* coverage = m_rowCoverage.data();
        float winding = 0;
        int first = -1, end = 0;
        for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
            winding += crossings[i].second;
            const bool inside = rule == FillRule::NonZero ? winding != 0 : std::fmod(std::fabs(winding), 2.0f) == 1;
            if (!inside)
                continue;
            // Pixels whose centres x + 0.5 lie in [from, to).
            const int x0 = int(std::clamp(std::ceil(crossings[i].first - 0.5), 0.0, double(m_width)));
            const int x1 = int(std::clamp(std::ceil(crossings[i + 1].first - 0.5), 0.0, double(m_width)));
            if (x1 <= x0)
                continue;
            if (first < 0)
                first = end = x0;
            std::fill(coverage + end, coverage + x0, std::uint8_t(0));
            std::fill(coverage + x0, coverage + x1, std::uint8_t(255));
            end = x1;
        }
        if (first >= 0)
            sink(row, first, end, coverage + first, 0);
        if (next == m_edges.size() && active.empty())
            break;
    }
}

void ScanlineRasterizer::rasterize(FillRule rule, bool antialias, const RowSink& sink)
{
    std::sort(m_edges.begin(), m_edges.end(), [](const Edge& a, const Edge& b) { return a.y0 < b.y0; });
    if (!antialias) {
        rasterizeAliased(rule, sink);
        return;
    }
    // The order of the active edges does not matter: each adds its areas to the cells. They are
    // copied side by side for the rows' passes over them.
    m_correctShared = mayWindTwice();
    m_active.clear();
    std::size_t next = 0;
    const int firstRow = m_edges.empty() ? m_height : std::max(0, int(std::floor(m_edges.front().y0)));
    for (int row = firstRow; row < m_height; ++row) {
        while (next < m_edges.size() && m_edges[next].y0 < row + 1)
            m_active.push_back(m_edges[next++]);
        if (m_active.empty() && next == m_edges.size())
            break;
        accumulateRow(row);
        sweepRow(row, rule, sink);
        std::erase_if(m_active, [&](const Edge& e) { return e.y1 <= row + 1; });
    }
}

} // namespace kit
