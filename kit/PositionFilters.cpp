// PositionFilters: the filters that depend on where a pixel lies: vignettes and the bump.
#include "kit/ColorMapRecipe.h"
#include "kit/FilterOutputs.h"
#include "kit/RenderedArea.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kit::filteroutputs {

namespace {

// 0 below `low`, 1 from `high` on, the cubic 3t^2 - 2t^3 between; a step at `low` when the two meet.
double smoothstep(double low, double high, double x)
{
    if (!(high > low))
        return x < low ? 0 : 1;
    const double t = std::clamp((x - low) / (high - low), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// Premultiplied colour times 1 - intensity x t(distance from the centre); alpha kept.
template <typename Falloff>
RefPtr<CIImage> darkened(const CIFilter& filter, Point centre, double intensity, Falloff falloff)
{
    auto map = [centre, intensity, falloff](float* rgba, std::size_t count, long long x, long long y) {
        const double dy = double(y) + 0.5 - centre.y;
        for (std::size_t i = 0; i < count; ++i) {
            const double dx = double(x) + double(i) + 0.5 - centre.x;
            const auto keep = float(1 - intensity * falloff(std::hypot(dx, dy)));
            for (int c = 0; c < 3; ++c)
                rgba[4 * i + std::size_t(c)] *= keep;
        }
    };
    return CIImage::imageWithRecipe(adoptRef(new ColorMapRecipe(filter.imageForKey("inputImage"), map)));
}

// Each pixel inside the circle samples nearer the centre (outside it for a negative scale).
class BumpRecipe final : public ImageRecipe {
public:
    BumpRecipe(RefPtr<CIImage> input, Point centre, double radius, double scale)
        : m_input(std::move(input)), m_centre(centre), m_radius(radius), m_scale(scale)
    {
        // How far from the centre a sample can land: the largest d (1 - s (1 - d / R))^2.
        for (int step = 0; step <= 256; ++step) {
            const double d = radius * step / 256;
            m_reach = std::max(m_reach, d * factor(d));
        }
        m_reach += 2;
    }

    Rect extent() const override { return m_input->extent(); }
    Rect placementExtent() const override { return m_input->placementExtent(); }

    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        const Rect circle(
            float(m_centre.x - m_reach), float(m_centre.y - m_reach), float(2 * m_reach), float(2 * m_reach));
        const PixelArea needed
            = area.united(PixelArea::enclosing(circle)).intersected(PixelArea::enclosing(m_input->extent()));
        RenderedArea source;
        if (!source.render(*m_input, needed))
            return false;
        for (long long r = 0; r < area.height; ++r) {
            float* target = out.row(r);
            const long long y = area.maxY() - 1 - r;
            const double dy = double(y) + 0.5 - m_centre.y;
            for (long long i = 0; i < area.width; ++i) {
                const double dx = double(area.x + i) + 0.5 - m_centre.x;
                const double d = std::hypot(dx, dy);
                if (d < m_radius) {
                    const double f = factor(d);
                    source.sample(m_centre.x + dx * f, m_centre.y + dy * f, target + 4 * i);
                } else {
                    std::memcpy(target + 4 * i, source.pixel(area.x + i, y), 16);
                }
            }
        }
        return true;
    }

private:
    double factor(double d) const
    {
        const double f = 1 - m_scale * (1 - d / m_radius);
        return f * f;
    }

    RefPtr<CIImage> m_input;
    Point m_centre;
    double m_radius, m_scale, m_reach = 0;
};

bool finite(Point p) { return std::isfinite(p.x) && std::isfinite(p.y); }

} // namespace

RefPtr<CIImage> vignette(const CIFilter& filter)
{
    auto input = filter.imageForKey("inputImage");
    const Rect frame = input->placementExtent();
    const Point centre { frame.minX() + frame.width() / 2, frame.minY() + frame.height() / 2 };
    const double reach = filter.numberForKey("inputRadius") * std::hypot(frame.width(), frame.height()) / 2;
    return darkened(filter, centre, filter.numberForKey("inputIntensity"),
        [reach](double d) { return smoothstep(0.5, 1.5, reach > 0 ? d / reach : INFINITY); });
}

RefPtr<CIImage> vignetteEffect(const CIFilter& filter)
{
    const Point centre = filter.pointForKey("inputCenter");
    const double radius = filter.numberForKey("inputRadius"), falloff = filter.numberForKey("inputFalloff");
    return darkened(filter, centre, filter.numberForKey("inputIntensity"),
        [radius, falloff](double d) { return smoothstep(radius * (1 - falloff), radius * (1 + falloff), d); });
}

RefPtr<CIImage> bumpDistortion(const CIFilter& filter)
{
    auto input = filter.imageForKey("inputImage");
    const Point centre = filter.pointForKey("inputCenter");
    const double radius = filter.numberForKey("inputRadius"), scale = filter.numberForKey("inputScale");
    // No circle, or no bulge: every pixel keeps its place.
    if (!(radius > 0) || scale == 0 || !std::isfinite(scale) || !finite(centre) || radius > 1e6
        || std::fabs(scale) > 1e3)
        return input;
    return CIImage::imageWithRecipe(adoptRef(new BumpRecipe(input, centre, radius, scale)));
}

} // namespace kit::filteroutputs
