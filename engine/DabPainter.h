// DabPainter: lays one round soft dab into a layer, painting a colour or erasing.
#pragma once

#include "engine/Brush.h"
#include "engine/Layer.h"
#include "engine/PixelRect.h"

#include <array>
#include <cstdint>
#include <functional>

namespace engine {

/// Paint composites the colour over the pixel by the dab's coverage d (so alpha becomes
/// a + d(1 - a)); erase scales all four premultiplied channels by 1 - d. Only canvas pixels
/// inside the clip are touched, and every cell is announced to beforeChange before its first
/// write, so the caller can keep its before-state.
class DabPainter {
public:
    using BeforeChange = std::function<void(CellKey)>;

    DabPainter(Layer& layer, const PixelRect& clip, const BeforeChange& beforeChange);

    /// Lays a dab of the brush centred on canvas point (x, y); colour is 0xRRGGBB.
    void lay(const Brush& brush, double x, double y, std::uint32_t colour);

private:
    struct Dab {
        const Brush* brush;
        double x;
        double y;
        std::array<double, 4> source;
        bool erase;
    };

    void layInCell(const Dab& dab, CellKey key, const PixelRect& canvasArea);
    static bool reaches(const Dab& dab, const PixelRect& area);
    static void blend(std::uint8_t* pixel, const Dab& dab, double coverage);

    Layer& m_layer;
    PixelRect m_clip;
    BeforeChange m_beforeChange;
};

} // namespace engine
