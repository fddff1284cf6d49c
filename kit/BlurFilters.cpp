// BlurFilters: the filters that average neighbourhoods: Gaussian, box, disc, motion and zoom.
#include "kit/BandBlur.h"
#include "kit/FilterOutputs.h"
#include "kit/RenderedArea.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <vector>

namespace kit::filteroutputs {

namespace {

Rect grownRect(const Rect& r, float dx, float dy)
{
    return isInfinite(r) ? r : Rect(r.minX() - dx, r.minY() - dy, r.width() + 2 * dx, r.height() + 2 * dy);
}

// A blur over its input: the extent grows, the placement stays the input's when unbounded.
class BlurRecipe : public ImageRecipe {
public:
    BlurRecipe(RefPtr<CIImage> input, Rect extent) : m_input(std::move(input)), m_extent(extent) {}
    Rect extent() const override { return m_extent; }
    Rect placementExtent() const override { return isInfinite(m_extent) ? m_input->placementExtent() : m_extent; }

protected:
    RefPtr<CIImage> m_input;
    Rect m_extent;
};

// out += weight x in over `count` floats.
void addScaled(float* __restrict out, const float* __restrict in, float weight, long long count)
{
    for (long long i = 0; i < count; ++i)
        out[i] += weight * in[i];
}

// Sliding sums of width 2r + 1: rows across in place, then down the rows into `out`.
class BoxBlurRecipe final : public BlurRecipe {
public:
    BoxBlurRecipe(RefPtr<CIImage> input, long long r)
        : BlurRecipe(input, grownRect(input->extent(), float(r), float(r))), m_r(r)
    {
    }

    // sRGB bitmaps take integer sums of 16-bit linear values a band of rows at a time.
    bool drawBytes(const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride, bool srgb) const override
    {
        return srgb && m_input->isBitmapEncoded(true) && BandBlur::drawBox(*m_input, m_r, area, rgba, stride);
    }

    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        RenderedArea source;
        if (!source.render(*m_input, area.grown(m_r, m_r)))
            return false;
        const FloatPixels& in = source.pixels();
        const long long window = 2 * m_r + 1, width = area.width * 4;
        for (long long r = 0; r < source.area().height; ++r) {
            float* row = in.row(r);
            float sum[4] = { 0, 0, 0, 0 };
            for (long long i = 0; i < window; ++i)
                for (int c = 0; c < 4; ++c)
                    sum[c] += row[4 * i + c];
            // Output column i replaces input column i once the window has moved past it.
            for (long long i = 0; i < area.width; ++i) {
                for (int c = 0; c < 4; ++c) {
                    const float value = sum[c];
                    sum[c] += (i + window < source.area().width ? row[4 * (i + window) + c] : 0) - row[4 * i + c];
                    row[4 * i + c] = value;
                }
            }
        }
        std::vector<float> sums(std::size_t(width), 0.0f);
        for (long long r = 0; r < window; ++r)
            addScaled(sums.data(), in.row(r), 1, width);
        const float scale = 1.0f / float(window * window);
        for (long long r = 0; r < area.height; ++r) {
            float* target = out.row(r);
            const float* leaving = in.row(r);
            for (long long i = 0; i < width; ++i)
                target[i] = sums[std::size_t(i)] * scale;
            if (r + 1 == area.height)
                break;
            const float* entering = in.row(r + window);
            for (long long i = 0; i < width; ++i)
                sums[std::size_t(i)] += entering[i] - leaving[i];
        }
        return true;
    }

private:
    long long m_r;
};

// Each row's running sums, then for every row offset of the disc the run that the disc covers.
class DiscBlurRecipe final : public BlurRecipe {
public:
    DiscBlurRecipe(RefPtr<CIImage> input, double radius)
        : BlurRecipe(input, grownRect(input->extent(), float(std::ceil(radius)), float(std::ceil(radius))))
        , m_reach((long long)std::floor(radius))
    {
        for (long long dy = -m_reach; dy <= m_reach; ++dy) {
            const auto half = (long long)std::floor(std::sqrt(radius * radius - double(dy * dy)) + 1e-9);
            m_halfWidths.push_back(half);
            m_count += 2 * half + 1;
        }
    }

    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        RenderedArea source;
        if (!source.render(*m_input, area.grown(m_reach, m_reach)))
            return false;
        const FloatPixels& in = source.pixels();
        // Running sums in place: column i holds the sum of columns 0 .. i.
        for (long long r = 0; r < source.area().height; ++r) {
            float* row = in.row(r);
            for (long long i = 1; i < source.area().width; ++i)
                for (int c = 0; c < 4; ++c)
                    row[4 * i + c] += row[4 * (i - 1) + c];
        }
        const long long width = area.width * 4;
        const float scale = 1.0f / float(m_count);
        for (long long r = 0; r < area.height; ++r) {
            float* target = out.row(r);
            std::fill(target, target + width, 0.0f);
            for (long long dy = -m_reach; dy <= m_reach; ++dy) {
                const float* row = in.row(r + m_reach + dy);
                const long long half = m_halfWidths[std::size_t(dy + m_reach)];
                // Output column i sums source columns i + reach - half .. i + reach + half.
                const float* upper = row + 4 * (m_reach + half);
                const long long below = m_reach - half - 1;
                for (long long i = 0; i < width; ++i)
                    target[i] += upper[i];
                if (below >= 0) {
                    for (long long i = 0; i < width; ++i)
                        target[i] -= row[4 * below + i];
                } else {
                    // The run starts at the source's first column for output column 0 only when
                    // half equals the reach: nothing lies before it to take away there.
                    for (long long i = 4; i < width; ++i)
                        target[i] -= row[i - 4];
                }
            }
            for (long long i = 0; i < width; ++i)
                target[i] *= scale;
        }
        return true;
    }

private:
    long long m_reach;
    std::vector<long long> m_halfWidths;
    long long m_count = 0;
};

// The bilinear taps of the line's samples gathered into one sparse kernel of whole-pixel offsets.
class MotionBlurRecipe final : public BlurRecipe {
public:
    MotionBlurRecipe(RefPtr<CIImage> input, double radius, double angle)
        : BlurRecipe(input,
            grownRect(input->extent(), float(radius * std::fabs(std::cos(angle))),
                float(radius * std::fabs(std::sin(angle)))))
    {
        const auto taps = 2 * (long long)std::ceil(radius) + 1;
        std::map<std::pair<long long, long long>, double> weights;
        for (long long k = 0; k < taps; ++k) {
            const double t = -radius + 2 * radius * double(k) / double(taps - 1);
            const double ox = t * std::cos(angle), oy = t * std::sin(angle);
            const double fx = std::floor(ox), fy = std::floor(oy);
            const double tx = ox - fx, ty = oy - fy;
            const auto ix = (long long)fx, iy = (long long)fy;
            weights[{ ix, iy }] += (1 - tx) * (1 - ty) / double(taps);
            weights[{ ix + 1, iy }] += tx * (1 - ty) / double(taps);
            weights[{ ix, iy + 1 }] += (1 - tx) * ty / double(taps);
            weights[{ ix + 1, iy + 1 }] += tx * ty / double(taps);
        }
        for (const auto& [offset, weight] : weights) {
            if (weight == 0)
                continue;
            m_taps.push_back({ offset.first, offset.second, float(weight) });
            m_reachX = std::max(m_reachX, std::abs(offset.first));
            m_reachY = std::max(m_reachY, std::abs(offset.second));
        }
    }

    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        RenderedArea source;
        if (!source.render(*m_input, area.grown(m_reachX, m_reachY)))
            return false;
        const long long width = area.width * 4;
        for (long long r = 0; r < area.height; ++r) {
            float* target = out.row(r);
            std::fill(target, target + width, 0.0f);
            const long long y = area.maxY() - 1 - r;
            for (const Tap& tap : m_taps)
                addScaled(target, source.pixel(area.x + tap.dx, y + tap.dy), tap.weight, width);
        }
        return true;
    }

private:
    struct Tap {
        long long dx, dy;
        float weight;
    };
    std::vector<Tap> m_taps;
    long long m_reachX = 0, m_reachY = 0;
};

// Samples on the line from each pixel towards the centre (outward for a negative amount).
class ZoomBlurRecipe final : public BlurRecipe {
public:
    ZoomBlurRecipe(RefPtr<CIImage> input, double amount, Point centre)
        : BlurRecipe(input, input->extent()), m_centre(centre)
    {
        const Rect frame = m_input->placementExtent();
        double farthest = 0;
        for (double x : { frame.minX(), frame.maxX() })
            for (double y : { frame.minY(), frame.maxY() })
                farthest = std::max(farthest, std::hypot(x - centre.x, y - centre.y));
        const auto count = std::max(8.0, std::ceil(std::fabs(amount)));
        for (double k = 0; k < count; ++k)
            m_scales.push_back(farthest > 0 ? 1 - k * amount / (count * farthest) : 1);
    }

    bool render(const PixelArea& area, const FloatPixels& out) const override
    {
        // The samples of the area's pixels lie between the centre and the area scaled by the
        // largest factor about it.
        const auto [low, high] = std::minmax_element(m_scales.begin(), m_scales.end());
        double x0 = area.x, x1 = double(area.maxX()), y0 = area.y, y1 = double(area.maxY());
        for (double scale : { *low, *high }) {
            for (double x : { double(area.x), double(area.maxX()) }) {
                x0 = std::min(x0, m_centre.x + (x - m_centre.x) * scale);
                x1 = std::max(x1, m_centre.x + (x - m_centre.x) * scale);
            }
            for (double y : { double(area.y), double(area.maxY()) }) {
                y0 = std::min(y0, m_centre.y + (y - m_centre.y) * scale);
                y1 = std::max(y1, m_centre.y + (y - m_centre.y) * scale);
            }
        }
        const PixelArea reach
            = PixelArea::enclosing(Rect(float(x0), float(y0), float(x1 - x0), float(y1 - y0))).grown(1, 1);
        const PixelArea needed = reach.intersected(PixelArea::enclosing(m_input->extent()));
        RenderedArea source;
        if (!needed.isEmpty() && !source.render(*m_input, needed))
            return false;
        const float share = 1.0f / float(m_scales.size());
        for (long long r = 0; r < area.height; ++r) {
            float* target = out.row(r);
            const double py = double(area.maxY() - r) - 0.5;
            for (long long i = 0; i < area.width; ++i) {
                const double px = double(area.x + i) + 0.5;
                float sum[4] = { 0, 0, 0, 0 }, sample[4];
                for (double scale : m_scales) {
                    if (needed.isEmpty())
                        break;
                    source.sample(
                        m_centre.x + (px - m_centre.x) * scale, m_centre.y + (py - m_centre.y) * scale, sample);
                    for (int c = 0; c < 4; ++c)
                        sum[c] += sample[c];
                }
                for (int c = 0; c < 4; ++c)
                    target[4 * i + c] = sum[c] * share;
            }
        }
        return true;
    }

private:
    Point m_centre;
    std::vector<double> m_scales;
};

RefPtr<CIImage> made(ImageRecipe* recipe) { return CIImage::imageWithRecipe(adoptRef(recipe)); }

} // namespace

RefPtr<CIImage> gaussianBlur(const CIFilter& filter)
{
    const double radius = filter.numberForKey("inputRadius");
    // The radius has no meaning below 0: such a blur, and a NaN one, blurs nothing.
    return CIImage::gaussianBlur(filter.imageForKey("inputImage"), radius >= 0 ? radius : 0);
}

RefPtr<CIImage> boxBlur(const CIFilter& filter)
{
    const double radius = std::round(filter.numberForKey("inputRadius"));
    auto input = filter.imageForKey("inputImage");
    // Half-widths below one pixel, and NaN, average nothing.
    if (!(radius >= 1))
        return input;
    return made(new BoxBlurRecipe(input, (long long)std::min(radius, 1e6)));
}

RefPtr<CIImage> discBlur(const CIFilter& filter)
{
    const double radius = filter.numberForKey("inputRadius");
    auto input = filter.imageForKey("inputImage");
    if (!(radius > 0))
        return input;
    return made(new DiscBlurRecipe(input, std::min(radius, 1e5)));
}

RefPtr<CIImage> motionBlur(const CIFilter& filter)
{
    const double radius = filter.numberForKey("inputRadius"), angle = filter.numberForKey("inputAngle");
    auto input = filter.imageForKey("inputImage");
    if (!(radius > 0) || !std::isfinite(angle))
        return input;
    return made(new MotionBlurRecipe(input, std::min(radius, 1e5), angle));
}

RefPtr<CIImage> zoomBlur(const CIFilter& filter)
{
    const double amount = filter.numberForKey("inputAmount");
    const Point centre = filter.pointForKey("inputCenter");
    auto input = filter.imageForKey("inputImage");
    if (amount == 0 || !std::isfinite(amount) || !std::isfinite(centre.x) || !std::isfinite(centre.y))
        return input;
    return made(new ZoomBlurRecipe(input, std::clamp(amount, -1e5, 1e5), centre));
}

} // namespace kit::filteroutputs
