// RenderedArea: rendering into recycled memory, and bilinear reads.
#include "kit/RenderedArea.h"

#include <cmath>

namespace kit {

namespace {

constexpr long long kMaxPixels = 1LL << 28;

} // namespace

bool RenderedArea::render(const CIImage& image, const PixelArea& area)
{
    if (area.isEmpty() || area.count() > kMaxPixels)
        return false;
    if (!m_block.allocate(std::size_t(area.count()) * 4 * sizeof(float)))
        return false;
    m_area = area;
    m_pixels = { m_block.as<float>(), std::ptrdiff_t(area.width * 4) };
    return image.renderArea(area, m_pixels);
}

void RenderedArea::sample(double x, double y, float* rgba) const
{
    const double u = x - 0.5, v = y - 0.5;
    for (int c = 0; c < 4; ++c)
        rgba[c] = 0;
    if (!(std::fabs(u) < 1e15 && std::fabs(v) < 1e15))
        return;
    const double fu = std::floor(u), fv = std::floor(v);
    const auto ix = (long long)fu, iy = (long long)fv;
    const auto tx = float(u - fu), ty = float(v - fv);
    const float weights[4] = { (1 - tx) * (1 - ty), tx * (1 - ty), (1 - tx) * ty, tx * ty };
    for (int corner = 0; corner < 4; ++corner) {
        const long long px = ix + (corner & 1), py = iy + (corner >> 1);
        if (px < m_area.x || px >= m_area.maxX() || py < m_area.y || py >= m_area.maxY())
            continue;
        const float* p = pixel(px, py);
        for (int c = 0; c < 4; ++c)
            rgba[c] += weights[corner] * p[c];
    }
}

} // namespace kit
