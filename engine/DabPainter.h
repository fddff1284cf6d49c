// DabPainter: lays the round antialiased dabs of one stroke into a layer, painting or erasing.
#pragma once

#include "engine/Brush.h"
#include "engine/Layer.h"
#include "engine/PixelRect.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace engine {

/// Within one stroke a pixel takes the largest coverage any of the stroke's dabs gave it, laid
/// over the pixel as it was before the stroke: overlapping dabs never build up, so a band
/// drawn from closely spaced dabs has the dab's own edge profile along its whole length, with
/// no beads where the dabs fall. Paint moves each premultiplied channel towards the colour by
/// the coverage c (so alpha becomes a + c(255 - a)); erase scales all four channels by 1 - c.
/// Only canvas pixels inside the clip are touched, and every cell is announced to beforeChange
/// before the stroke first writes it, so the caller can keep its before-state.
class DabPainter {
public:
    using BeforeChange = std::function<void(CellKey)>;

    /// Forgets the stroke: the next dab starts a new one over the layer as it then is.
    void reset();
    /// Lays a dab of the brush centred on canvas point (x, y); colour is 0xRRGGBB. True when a
    /// pixel changed.
    bool lay(Layer& layer, const PixelRect& clip, const Brush& brush, double x, double y, std::uint32_t colour,
        const BeforeChange& beforeChange);

private:
    using Coverage = std::array<std::uint8_t, kCellSize * kCellSize>;
    /// What the stroke knows of one cell: the coverage so far and its pixels before the stroke,
    /// none for a cell the stroke made (all transparent before).
    struct StrokeCell {
        Coverage coverage {};
        CellPtr before;
    };
    /// The dab's coverage byte against the squared distance from its centre, sampled finely
    /// over the soft ring between the core and the radius, so a pixel costs a multiply and a
    /// look-up instead of a root and a polynomial. Rebuilt only when the radius changes.
    struct Profile {
        static constexpr int kSteps = 4096;
        double radius = -1;
        double core = -1;
        double core2 = 0;
        double radius2 = 0;
        double stepsPerUnit = 0;
        std::vector<std::uint8_t> table;

        void build(double radius, double core);
        std::uint8_t at(double distanceSquared) const
        {
            if (distanceSquared <= core2)
                return 255;
            if (!(distanceSquared < radius2))
                return 0;
            return table[static_cast<std::size_t>((distanceSquared - core2) * stepsPerUnit)];
        }
    };
    struct Dab {
        double x;
        double y;
        std::array<int, 4> target;
        bool erase;
        /// The stroke's previous dab of the same size, all of whose pixels were laid: a pixel
        /// nearer its centre than this dab's already has at least this dab's coverage.
        bool follows;
        double previousX;
        double previousY;
    };
    struct Span {
        std::int64_t from;
        std::int64_t to;
    };

    StrokeCell* strokeCell(Layer& layer, CellKey key, const Dab& dab, const BeforeChange& beforeChange);
    bool layInCell(Layer& layer, CellKey key, const PixelRect& area, const Dab& dab, const BeforeChange& beforeChange);
    bool reaches(const Dab& dab, const PixelRect& area) const;
    /// The pixels of row y within [left, right) that the dab can still raise.
    Span rowSpan(const Dab& dab, std::int64_t y, double dy2, std::int64_t left, std::int64_t right) const;

    int m_layerId = 0;
    Profile m_profile;
    // Stroke cells of earlier strokes, kept (up to as many as a layer keeps) for the next one.
    std::vector<std::unique_ptr<StrokeCell>> m_spare;
    bool m_hasPrevious = false;
    double m_previousX = 0;
    double m_previousY = 0;
    std::map<CellKey, std::unique_ptr<StrokeCell>> m_cells;
};

} // namespace engine
