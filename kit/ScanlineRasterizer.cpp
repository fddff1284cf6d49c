// ScanlineRasterizer: signed-area accumulation per row with an active edge list.
#include "kit/ScanlineRasterizer.h"

#include <algorithm>
#include <cmath>

namespace kit {

namespace {

float coverageFor(float accumulated, FillRule rule)
{
    const float a = std::fabs(accumulated);
    switch (rule) {
    case FillRule::NonZero:
        return std::min(a, 1.0f);
    case FillRule::EvenOdd: {
        const float folded = std::fmod(a, 2.0f);
        return folded > 1.0f ? 2.0f - folded : folded;
    }
    }
    return 0;
}

// Sorts a sequence that is already nearly in order in about linear time.
template <typename T, typename Less> void insertionSort(std::vector<T>& items, Less less)
{
    for (std::size_t i = 1; i < items.size(); ++i) {
        T item = items[i];
        std::size_t j = i;
        for (; j > 0 && less(item, items[j - 1]); --j)
            items[j] = items[j - 1];
        items[j] = item;
    }
}

// Coverage below half an 8-bit step draws nothing.
constexpr float kInvisible = 0.5f / 255;

} // namespace

void ScanlineRasterizer::reset(int width, int height)
{
    m_width = std::max(0, width);
    m_height = std::max(0, height);
    m_edges.clear();
    m_cells.assign(std::size_t(m_width) + 2, 0.0f);
}

void ScanlineRasterizer::addEdge(double x0, double y0, double x1, double y1)
{
    if (!(y0 != y1) || !std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1))
        return;
    float winding = 1;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        winding = -1;
    }
    if (y1 <= 0 || y0 >= m_height)
        return;
    m_edges.push_back({ x0, y0, x1, y1, (x1 - x0) / (y1 - y0), winding });
}

void ScanlineRasterizer::addPolygon(const double* xy, std::size_t pointCount)
{
    if (pointCount < 2)
        return;
    for (std::size_t i = 0; i < pointCount; ++i) {
        const std::size_t j = (i + 1) % pointCount;
        addEdge(xy[2 * i], xy[2 * i + 1], xy[2 * j], xy[2 * j + 1]);
    }
}

// Adds one edge's part within row `row` to the cells: each cell gets the signed area the edge
// leaves to its right within that cell, and the cell after the edge the rest of the edge's
// height, so that a running sum along the row is the coverage.
void ScanlineRasterizer::accumulateRow(const Edge& e, int row)
{
    const double top = std::max(e.y0, double(row));
    const double bottom = std::min(e.y1, double(row + 1));
    if (!(bottom > top))
        return;
    const double xTop = e.x0 + (top - e.y0) * e.dxdy;
    const double xBottom = e.x0 + (bottom - e.y0) * e.dxdy;
    // Where the edge crosses the clip's sides it is cut there: a part left of the clip acts as a
    // vertical edge on its left side (it still decides what lies to its right), a part right of
    // it touches no visible pixel and is pressed onto the right side.
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
        accumulateSegment(xa, xb, float((bottom - top) * (t1 - t0)) * e.winding);
    }
}

// One straight piece within the clip, spanning a height of |dy| with the winding's sign.
void ScanlineRasterizer::accumulateSegment(double xa, double xb, float dy)
{
    if (xa > xb)
        std::swap(xa, xb);
    float* cells = m_cells.data();
    const double xaFloor = std::floor(xa);
    const int ia = int(xaFloor);
    const int ib = int(std::ceil(xb));
    if (ib <= ia + 1) {
        // Within one cell: the area right of the edge is the height times the distance from the
        // edge's mean x to the cell's right side.
        const float mid = float(0.5 * (xa + xb) - xaFloor);
        cells[ia] += dy * (1 - mid);
        cells[ia + 1] += dy * mid;
        m_touched.emplace_back(ia, ia + 1);
        return;
    }
    // Across cells: the edge's height is spread along x at a constant rate s per unit of x.
    const float s = float(1.0 / (xb - xa));
    const float fa = float(xa - xaFloor);
    const float first = 0.5f * s * (1 - fa) * (1 - fa);
    const float fb = float(xb - (ib - 1));
    const float last = 0.5f * s * fb * fb;
    cells[ia] += dy * first;
    if (ib == ia + 2) {
        cells[ia + 1] += dy * (1 - first - last);
    } else {
        const float second = s * (1.5f - fa);
        cells[ia + 1] += dy * (second - first);
        for (int x = ia + 2; x < ib - 1; ++x)
            cells[x] += dy * s;
        const float before = second + float(ib - ia - 3) * s;
        cells[ib - 1] += dy * (1 - before - last);
    }
    cells[ib] += dy * last;
    m_touched.emplace_back(ia, ib);
}

void ScanlineRasterizer::sweepRow(int row, FillRule rule, const SpanSink& sink)
{
    // The active edges arrive in x order, so the ranges are nearly sorted already.
    insertionSort(m_touched, [](const auto& a, const auto& b) { return a < b; });
    float* cells = m_cells.data();
    float sum = 0;
    int x = 0; // first pixel not yet handed on
    auto solid = [&](int x0, int x1, float coverage) {
        x1 = std::min(x1, m_width);
        if (x1 > x0 && coverage > kInvisible)
            sink(row, x0, x1, coverage, nullptr);
    };
    std::size_t i = 0;
    while (i < m_touched.size()) {
        const int first = m_touched[i].first;
        int last = m_touched[i].second;
        for (++i; i < m_touched.size() && m_touched[i].first <= last + 1; ++i)
            last = std::max(last, m_touched[i].second);
        // Between touched cells the coverage does not change: one run.
        solid(x, first, coverageFor(sum, rule));
        // Across touched cells it changes from pixel to pixel: one array.
        const int end = std::min(last + 1, m_width);
        m_rowCoverage.resize(std::size_t(std::max(0, end - first)));
        for (int c = first; c <= last; ++c) {
            sum += cells[c];
            cells[c] = 0;
            if (c < end)
                m_rowCoverage[std::size_t(c - first)] = coverageFor(sum, rule);
        }
        emitVarying(row, first, end, sink);
        x = last + 1;
    }
    solid(x, m_width, coverageFor(sum, rule));
    m_touched.clear();
}

// Hands on the coverage of pixels first .. end-1 from m_rowCoverage: long stretches of one value
// (the inside of a shape between edges whose cells overlap) as runs, the rest pixel by pixel.
void ScanlineRasterizer::emitVarying(int row, int first, int end, const SpanSink& sink)
{
    constexpr int kLongRun = 16;
    const float* coverage = m_rowCoverage.data();
    int pending = first; // first pixel not yet handed on
    for (int x = first; x < end;) {
        int runEnd = x + 1;
        while (runEnd < end && coverage[runEnd - first] == coverage[x - first])
            ++runEnd;
        if (runEnd - x >= kLongRun) {
            if (x > pending)
                sink(row, pending, x, 0, coverage + (pending - first));
            if (coverage[x - first] > kInvisible)
                sink(row, x, runEnd, coverage[x - first], nullptr);
            pending = runEnd;
        }
        x = runEnd;
    }
    if (end > pending)
        sink(row, pending, end, 0, coverage + (pending - first));
}

void ScanlineRasterizer::rasterizeAliased(FillRule rule, const SpanSink& sink)
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
        float winding = 0;
        for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
            winding += crossings[i].second;
            const bool inside = rule == FillRule::NonZero ? winding != 0 : std::fmod(std::fabs(winding), 2.0f) == 1;
            if (!inside)
                continue;
            // Pixels whose centres x + 0.5 lie in [from, to).
            const double from = std::ceil(crossings[i].first - 0.5);
            const double to = std::ceil(crossings[i + 1].first - 0.5);
            const int x0 = int(std::clamp(from, 0.0, double(m_width)));
            const int x1 = int(std::clamp(to, 0.0, double(m_width)));
            if (x1 > x0)
                sink(row, x0, x1, 1.0f, nullptr);
        }
        if (next == m_edges.size() && active.empty())
            break;
    }
}

void ScanlineRasterizer::rasterize(FillRule rule, bool antialias, const SpanSink& sink)
{
    std::sort(m_edges.begin(), m_edges.end(), [](const Edge& a, const Edge& b) { return a.y0 < b.y0; });
    if (!antialias) {
        rasterizeAliased(rule, sink);
        return;
    }
    std::vector<const Edge*> active;
    std::size_t next = 0;
    const int firstRow = m_edges.empty() ? m_height : std::max(0, int(std::floor(m_edges.front().y0)));
    for (int row = firstRow; row < m_height; ++row) {
        while (next < m_edges.size() && m_edges[next].y0 < row + 1)
            active.push_back(&m_edges[next++]);
        if (active.empty() && next == m_edges.size())
            break;
        // Edges cross each other rarely between rows: keeping them in x order is nearly free
        // and keeps the touched cells in order.
        const double middle = row + 0.5;
        insertionSort(active, [middle](const Edge* a, const Edge* b) {
            return a->x0 + (std::clamp(middle, a->y0, a->y1) - a->y0) * a->dxdy
                < b->x0 + (std::clamp(middle, b->y0, b->y1) - b->y0) * b->dxdy;
        });
        for (const Edge* e : active)
            accumulateRow(*e, row);
        std::erase_if(active, [&](const Edge* e) { return e->y1 <= row + 1; });
        sweepRow(row, rule, sink);
    }
}

} // namespace kit
