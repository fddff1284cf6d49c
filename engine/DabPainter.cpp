// DabPainter: one stroke's dabs, combined by their largest coverage over the pre-stroke pixels.
#include "engine/DabPainter.h"

#include <algorithm>
#include <cmath>

namespace engine {

namespace {

// value + (target - value) * c / 255, rounded; target and value are 0 to 255.
inline std::uint8_t mix(int value, int target, int c)
{
    const int delta = (target - value) * c;
    return static_cast<std::uint8_t>(value + (delta >= 0 ? (delta + 127) / 255 : -((-delta + 127) / 255)));
}

} // namespace

void DabPainter::Profile::build(double newRadius, double newCore)
{
    radius = newRadius;
    core = newCore;
    core2 = core * core;
    radius2 = radius * radius;
    stepsPerUnit = kSteps / (radius2 - core2);
    table.resize(kSteps + 1);
    for (int i = 0; i <= kSteps; ++i) {
        // Each entry stands for the squared distances of its step; it takes the middle one's.
        const double d = std::sqrt(core2 + (i + 0.5) / stepsPerUnit);
        const double u = std::min(1.0, (d - core) / (radius - core));
        table[std::size_t(i)] = static_cast<std::uint8_t>(std::lround(255 * (1 - u * u * (3 - 2 * u))));
    }
}

void DabPainter::reset()
{
    for (auto& [key, cell] : m_cells) {
        if (m_spare.size() >= Layer::kMaxSpareCells)
            break;
        m_spare.push_back(std::move(cell));
    }
    m_cells.clear();
    m_layerId = 0;
    m_hasPrevious = false;
}

bool DabPainter::lay(Layer& layer, const PixelRect& clip, const Brush& brush, double x, double y, std::uint32_t colour,
    const BeforeChange& beforeChange)
{
    if (layer.id() != m_layerId) {
        reset();
        m_layerId = layer.id();
    }
    const double radius = brush.pixelRadius();
    if (radius != m_profile.radius || brush.coreRadius() != m_profile.core) {
        m_profile.build(radius, brush.coreRadius());
        m_hasPrevious = false;
    }
    if (m_hasPrevious && x == m_previousX && y == m_previousY)
        return false; // the same dab again adds nothing
    const Dab dab { x, y, { int((colour >> 16) & 0xff), int((colour >> 8) & 0xff), int(colour & 0xff), 255 },
        brush.mode() == BrushMode::erase, m_hasPrevious, m_previousX, m_previousY };
    m_hasPrevious = true;
    m_previousX = x;
    m_previousY = y;
    PixelRect box { static_cast<std::int64_t>(std::floor(x - radius)),
        static_cast<std::int64_t>(std::floor(y - radius)), static_cast<std::int64_t>(std::ceil(x + radius)) + 1,
        static_cast<std::int64_t>(std::ceil(y + radius)) + 1 };
    box = box.intersected(clip);
    if (box.isEmpty())
        return false;
    bool changed = false;
    const PixelRect cells = layer.cellRangeFor(box);
    for (std::int64_t row = cells.top; row < cells.bottom; ++row) {
        for (std::int64_t column = cells.left; column < cells.right; ++column)
            changed |= layInCell(layer, { column, row }, box, dab, beforeChange);
    }
    return changed;
}

DabPainter::StrokeCell* DabPainter::strokeCell(
    Layer& layer, CellKey key, const Dab& dab, const BeforeChange& beforeChange)
{
    auto found = m_cells.find(key);
    if (found != m_cells.end())
        return found->second.get();
    const CellPixels* existing = layer.find(key);
    if (dab.erase && !existing)
        return nullptr; // nothing there to take away
    beforeChange(key);
    std::unique_ptr<StrokeCell> cell;
    if (m_spare.empty()) {
        cell = std::make_unique<StrokeCell>();
    } else {
        cell = std::move(m_spare.back());
        m_spare.pop_back();
        cell->coverage.fill(0);
    }
    if (existing) {
        if (!cell->before)
            cell->before = CellPool::shared().take();
        *cell->before = *existing;
    } else {
        cell->before.reset();
        layer.ensure(key);
    }
    return m_cells.emplace(key, std::move(cell)).first->second.get();
}

bool DabPainter::layInCell(
    Layer& layer, CellKey key, const PixelRect& canvasArea, const Dab& dab, const BeforeChange& beforeChange)
{
    const PixelRect cellRect = layer.canvasRectOf(key);
    const PixelRect area = cellRect.intersected(canvasArea);
    if (area.isEmpty() || !reaches(dab, area))
        return false;
    StrokeCell* stroke = strokeCell(layer, key, dab, beforeChange);
    if (!stroke)
        return false;
    std::uint8_t* pixels = layer.find(key)->data();
    const std::uint8_t* before = stroke->before ? stroke->before->data() : nullptr;
    const Profile& profile = m_profile;
    bool changed = false;
    // Painting white over a cell the stroke made sets every channel to the coverage.
    const bool plain = !before && !dab.erase && dab.target == std::array<int, 4> { 255, 255, 255, 255 };
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        const double dy = static_cast<double>(y) + 0.5 - dab.y;
        const double dy2 = dy * dy;
        const Span span = rowSpan(dab, y, dy2, area.left, area.right);
        const std::size_t rowStart = static_cast<std::size_t>(y - cellRect.top) * kCellSize;
        std::uint8_t* coverage = stroke->coverage.data() + rowStart;
        std::uint8_t* out = pixels + rowStart * 4;
        const std::uint8_t* old = before ? before + rowStart * 4 : nullptr;
        double dx = static_cast<double>(span.from) + 0.5 - dab.x;
        for (std::int64_t x = span.from; x < span.to; ++x, dx += 1) {
            const std::uint8_t c = profile.at(dx * dx + dy2);
            const auto i = static_cast<std::size_t>(x - cellRect.left);
            if (c <= coverage[i])
                continue;
            coverage[i] = c;
            std::uint8_t* pixel = out + i * 4;
            if (plain) {
                std::fill_n(pixel, 4, c);
            } else {
                for (std::size_t channel = 0; channel < 4; ++channel)
                    pixel[channel] = mix(old ? old[i * 4 + channel] : 0, dab.erase ? 0 : dab.target[channel], c);
            }
            changed = true;
        }
    }
    return changed;
}

DabPainter::Span DabPainter::rowSpan(
    const Dab& dab, std::int64_t y, double dy2, std::int64_t left, std::int64_t right) const
{
    const double rest = m_profile.radius2 - dy2;
    if (rest <= 0)
        return { left, left };
    // The pixels whose centres lie within the radius.
    const double half = std::sqrt(rest);
    Span span { std::max(left, static_cast<std::int64_t>(std::ceil(dab.x - half - 0.5))),
        std::min(right, static_cast<std::int64_t>(std::floor(dab.x + half - 0.5)) + 1) };
    if (!dab.follows)
        return span;
    // Of those, only the ones nearer this dab's centre than the previous one's: the others
    // have had at least this coverage from it. A pixel of slack each way keeps rounding safe.
    const double ux = dab.x - dab.previousX;
    const double uy = dab.y - dab.previousY;
    const double mx = (dab.x + dab.previousX) / 2;
    const double k = (static_cast<double>(y) + 0.5 - (dab.y + dab.previousY) / 2) * uy;
    if (ux == 0) {
        if (k <= 0)
            span.to = span.from;
        return span;
    }
    const double edge = mx - k / ux - 0.5;
    if (!std::isfinite(edge))
        return span;
    if (ux > 0)
        span.from = std::max(span.from, static_cast<std::int64_t>(std::clamp(std::floor(edge), -1e18, 1e18)));
    else
        span.to = std::min(span.to, static_cast<std::int64_t>(std::clamp(std::ceil(edge), -1e18, 1e18)) + 1);
    // The previous dab's core is fully covered already: trim it off the span's ends.
    const double py = static_cast<double>(y) + 0.5 - dab.previousY;
    const double coreRest = m_profile.core2 - py * py;
    if (coreRest <= 0 || span.from >= span.to)
        return span;
    const double coreHalf = std::sqrt(coreRest);
    const auto first = static_cast<std::int64_t>(std::ceil(dab.previousX - coreHalf - 0.5)) + 1;
    const auto last = static_cast<std::int64_t>(std::floor(dab.previousX + coreHalf - 0.5)) - 1;
    if (first <= span.from && last >= span.from)
        span.from = std::min(span.to, last + 1);
    else if (first < span.to && last >= span.to - 1)
        span.to = std::max(span.from, first);
    return span;
}

// The dab's square box overlaps cells its round footprint misses; those are left uncreated.
bool DabPainter::reaches(const Dab& dab, const PixelRect& area) const
{
    const double nearestX
        = std::clamp(dab.x, static_cast<double>(area.left) + 0.5, static_cast<double>(area.right) - 0.5);
    const double nearestY
        = std::clamp(dab.y, static_cast<double>(area.top) + 0.5, static_cast<double>(area.bottom) - 0.5);
    const double dx = nearestX - dab.x;
    const double dy = nearestY - dab.y;
    return m_profile.at(dx * dx + dy * dy) > 0;
}

} // namespace engine
