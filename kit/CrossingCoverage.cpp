// CrossingCoverage: shared pixels found by counting the pieces that reach each column, then
// measured slab by slab.
#include "kit/CrossingCoverage.h"

#include <algorithm>
#include <cmath>

namespace kit {

void CrossingCoverage::reset()
{
    m_flats.clear();
    m_flatsSorted = true;
}

void CrossingCoverage::addFlat(double y, double x0, double x1)
{
    m_flats.push_back({ y, std::min(x0, x1), std::max(x0, x1) });
    m_flatsSorted = false;
}

void CrossingCoverage::correctRow(const rasterkernels::Edge* edges, std::size_t count, int row, int width, bool evenOdd,
    std::uint8_t* coverage, int x0, int x1)
{
    if (width <= 0)
        return;
    if (!m_flatsSorted) {
        std::sort(m_flats.begin(), m_flats.end(), [](const Flat& a, const Flat& b) { return a.y < b.y; });
        m_flatsSorted = true;
    }
    collectPieces(edges, count, row, width);
    findSharedPixels(row, width);
    if (m_shared.empty())
        return;
    orderBy(m_byRight, &Piece::pastColumn, width);
    orderBy(m_byLeft, &Piece::firstColumn, width);
    m_leftCount = 0;
    m_startedCount = 0;
    m_open.clear();
    m_leftWholeRow = 0;
    m_leftPartial.clear();
    for (int column : m_shared) {
        if (column < x0 || column >= x1)
            continue;
        const double area = std::clamp(pixelArea(column, row, evenOdd), 0.0, 1.0);
        coverage[column - x0] = std::uint8_t(std::lround(area * 255));
    }
}

void CrossingCoverage::collectPieces(const rasterkernels::Edge* edges, std::size_t count, int row, int width)
{
    m_pieces.clear();
    for (std::size_t i = 0; i < count; ++i) {
        const rasterkernels::Edge& e = edges[i];
        const double ya = std::max(e.y0, double(row));
        const double yb = std::min(e.y1, double(row + 1));
        if (!(yb > ya))
            continue;
        const double xa = e.x0 + (ya - e.y0) * e.dxdy;
        const double xb = e.x0 + (yb - e.y0) * e.dxdy;
        const double xmin = std::min(xa, xb), xmax = std::max(xa, xb);
        const int firstColumn = int(std::clamp(std::floor(xmin), 0.0, double(width)));
        const int pastColumn = int(std::clamp(std::ceil(xmax), 0.0, double(width)));
        m_pieces.push_back({ ya, yb, xa, e.dxdy, xmin, xmax, int(e.winding), firstColumn, pastColumn });
    }
}

void CrossingCoverage::orderBy(std::vector<std::size_t>& order, int Piece::*key, int width)
{
    int low = width, high = 0;
    for (const Piece& p : m_pieces) {
        low = std::min(low, p.*key);
        high = std::max(high, p.*key);
    }
    m_bucketStart.assign(std::size_t(high - low) + 2, 0);
    for (const Piece& p : m_pieces)
        ++m_bucketStart[std::size_t(p.*key - low) + 1];
    for (std::size_t k = 1; k < m_bucketStart.size(); ++k)
        m_bucketStart[k] += m_bucketStart[k - 1];
    order.resize(m_pieces.size());
    for (std::size_t i = 0; i < m_pieces.size(); ++i)
        order[m_bucketStart[std::size_t(m_pieces[i].*key - low)]++] = i;
}

// A piece reaches the columns its x range passes through; one lying exactly on a column's left
// side only bounds that column and reaches none.
void CrossingCoverage::findSharedPixels(int row, int width)
{
    m_reach.resize(std::size_t(width));
    m_shared.clear();
    int from = width, to = 0;
    auto reach = [&](int first, int past) {
        if (first >= past)
            return;
        from = std::min(from, first);
        to = std::max(to, past);
        for (int c = first; c < past; ++c)
            ++m_reach[std::size_t(c)];
    };
    for (const Piece& p : m_pieces)
        reach(p.firstColumn, p.pastColumn);
    auto flat = std::upper_bound(
        m_flats.begin(), m_flats.end(), double(row), [](double y, const Flat& f) { return y < f.y; });
    for (; flat != m_flats.end() && flat->y < row + 1; ++flat) {
        reach(int(std::clamp(std::floor(flat->xmin), 0.0, double(width))),
            int(std::clamp(std::ceil(flat->xmax), 0.0, double(width))));
    }
    for (int c = from; c < to; ++c) {
        if (m_reach[std::size_t(c)] >= 2)
            m_shared.push_back(c);
        m_reach[std::size_t(c)] = 0;
    }
}

void CrossingCoverage::addSlabEvents(const Piece& piece, int column, int row)
{
    auto add = [&](double y) {
        if (y > row && y < row + 1)
            m_events.push_back(y);
    };
    add(piece.ya);
    add(piece.yb);
    if (piece.dxdy == 0)
        return;
    for (double side : { double(column), double(column + 1) }) {
        const double y = piece.ya + (side - piece.xa) / piece.dxdy;
        if (y > piece.ya && y < piece.yb)
            add(y);
    }
}

// Columns come in increasing order, so the pieces wholly left of the pixel only ever grow: those
// spanning the row add a constant winding, the others a winding over part of it.
double CrossingCoverage::pixelArea(int column, int row, bool evenOdd)
{
    const double left = column, right = column + 1;
    while (m_leftCount < m_byRight.size() && m_pieces[m_byRight[m_leftCount]].pastColumn <= column) {
        const Piece& p = m_pieces[m_byRight[m_leftCount++]];
        if (p.ya <= row && p.yb >= row + 1)
            m_leftWholeRow += p.winding;
        else
            m_leftPartial.push_back(&p);
    }
    while (m_startedCount < m_byLeft.size() && m_pieces[m_byLeft[m_startedCount]].firstColumn <= column)
        m_open.push_back(&m_pieces[m_byLeft[m_startedCount++]]);
    std::erase_if(m_open, [&](const Piece* p) { return p->pastColumn <= column; });
    m_events.assign({ double(row), double(row + 1) });
    for (const Piece* p : m_open)
        addSlabEvents(*p, column, row);
    for (const Piece* p : m_leftPartial) {
        m_events.push_back(std::max(p->ya, double(row)));
        m_events.push_back(std::min(p->yb, double(row + 1)));
    }
    for (std::size_t i = 0; i < m_open.size(); ++i) {
        for (std::size_t j = i + 1; j < m_open.size(); ++j) {
            const Piece& a = *m_open[i];
            const Piece& b = *m_open[j];
            if (a.dxdy == b.dxdy)
                continue;
            const double y = (b.xa - a.xa + a.ya * a.dxdy - b.ya * b.dxdy) / (a.dxdy - b.dxdy);
            if (y > std::max(a.ya, b.ya) && y < std::min(a.yb, b.yb))
                m_events.push_back(y);
        }
    }
    std::sort(m_events.begin(), m_events.end());

    double area = 0;
    for (std::size_t k = 0; k + 1 < m_events.size(); ++k) {
        const double top = m_events[k], bottom = m_events[k + 1];
        if (!(bottom > top))
            continue;
        const double mid = (top + bottom) / 2;
        int winding = m_leftWholeRow;
        for (const Piece* p : m_leftPartial) {
            if (p->ya < mid && p->yb > mid)
                winding += p->winding;
        }
        m_boundaries.clear();
        for (const Piece* p : m_open) {
            if (!(p->ya < mid && p->yb > mid))
                continue;
            const double x = p->xAt(mid);
            if (x <= left)
                winding += p->winding;
            else if (x < right)
                m_boundaries.push_back(
                    { x, std::clamp(p->xAt(top), left, right), std::clamp(p->xAt(bottom), left, right), p->winding });
        }
        std::sort(m_boundaries.begin(), m_boundaries.end(),
            [](const Boundary& a, const Boundary& b) { return a.xMid < b.xMid; });
        // Between two neighbouring boundaries the slab is a trapezoid of one winding.
        double fromTop = left, fromBottom = left;
        auto counts = [&] { return evenOdd ? (winding & 1) != 0 : winding != 0; };
        for (const Boundary& b : m_boundaries) {
            if (counts())
                area += (bottom - top) * ((b.xTop - fromTop) + (b.xBottom - fromBottom)) / 2;
            winding += b.winding;
            fromTop = b.xTop;
            fromBottom = b.xBottom;
        }
        if (counts())
            area += (bottom - top) * ((right - fromTop) + (right - fromBottom)) / 2;
    }
    return area;
}

} // namespace kit
