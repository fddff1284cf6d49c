// ColorMapRecipe: the input rendered, then mapped row by row.
#include "kit/ColorMapRecipe.h"

namespace kit {

bool ColorMapRecipe::render(const PixelArea& area, const FloatPixels& out) const
{
    if (!m_input->renderArea(area, out))
        return false;
    for (long long r = 0; r < area.height; ++r)
        m_map(out.row(r), std::size_t(area.width), area.x, area.maxY() - 1 - r);
    return true;
}

} // namespace kit
