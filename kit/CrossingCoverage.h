// CrossingCoverage: exact fill-rule coverage of the pixels of a row where edges meet or cross.
#pragma once

#include "kit/ScanlineRasterizerKernels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kit {

/// Summing signed edge areas along a row and clamping gives a pixel's exact coverage only while
/// the winding inside the pixel takes at most two neighbouring values, one of them outside. Where
/// a path crosses itself, or two boundaries of a doubly wound region pass through one pixel, the
/// sum counts areas of winding 2 twice and lets +1 and -1 cancel. This class recomputes such
/// pixels exactly: it cuts the pixel into horizontal slabs at every vertex, crossing and side
/// crossing, so that within a slab the edges are straight, disjoint and ordered, and adds up the
/// trapezoids between them whose winding the fill rule counts.
class CrossingCoverage {
public:
    /// Forgets the horizontal edges.
    void reset();
    /// A horizontal edge. It changes no winding along a row, so the edge list leaves it out, but
    /// it is a boundary inside the pixels it passes through: one more edge where it meets another.
    void addFlat(double y, double x0, double x1);
    /// Recomputes, in row `row` of a clip `width` pixels wide, every pixel from x0 to x1 - 1 that
    /// two or more of `edges` reach, writing its coverage byte to coverage[x - x0].
    void correctRow(const rasterkernels::Edge* edges, std::size_t count, int row, int width, bool evenOdd,
        std::uint8_t* coverage, int x0, int x1);

private:
    /// An edge's part within the row: from (xa, ya) to yb, x moving dxdy per unit of y.
    struct Piece {
        double ya, yb, xa, dxdy, xmin, xmax;
        int winding;
        int firstColumn; // the first column it may reach: floor(xmin), clamped to 0 .. width
        int pastColumn; // the first column it lies wholly left of: ceil(xmax), clamped likewise
        double xAt(double y) const { return xa + (y - ya) * dxdy; }
    };
    struct Boundary {
        double xMid, xTop, xBottom;
        int winding;
    };

    void collectPieces(const rasterkernels::Edge* edges, std::size_t count, int row, int width);
    /// Orders the pieces by a column key in linear time (a sort per row cost more than the rest).
    void orderBy(std::vector<std::size_t>& order, int Piece::*key, int width);
    void findSharedPixels(int row, int width);
    double pixelArea(int column, int row, bool evenOdd);
    void addSlabEvents(const Piece& piece, int column, int row);

    struct Flat {
        double y, xmin, xmax;
    };
    std::vector<Flat> m_flats; // sorted by y before the first row
    bool m_flatsSorted = true;
    std::vector<Piece> m_pieces;
    std::vector<std::uint16_t> m_reach; // pieces reaching each column, reset after each row
    std::vector<int> m_shared; // columns two or more pieces reach
    std::vector<std::size_t> m_byRight; // pieces ordered by their right end
    std::size_t m_leftCount = 0; // how many of m_byRight lie wholly left of the pixel
    std::vector<std::size_t> m_byLeft; // pieces ordered by their left end
    std::vector<std::size_t> m_bucketStart;
    std::size_t m_startedCount = 0; // how many of m_byLeft start left of the pixel's right side
    int m_leftWholeRow = 0; // winding of those that span the whole row
    std::vector<const Piece*> m_leftPartial;
    std::vector<const Piece*> m_open; // started and not wholly left: the pieces that reach the pixel
    std::vector<double> m_events;
    std::vector<Boundary> m_boundaries;
};

} // namespace kit
