// CIContext: placing rendered image areas in bitmap memory, one for one or resampled.
#include "kit/CIContext.h"

#include "kit/Flip.h"
#include "kit/PixelKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace kit {

namespace {

bool whole(float v) { return std::isfinite(v) && v == std::floor(v) && std::fabs(v) < float(1 << 30); }

} // namespace

RefPtr<CIContext> CIContext::contextWithCGContextOptions(BitmapContext* context, const void*)
{
    if (!context)
        return nullptr;
    return adoptRef(new CIContext(context));
}

CIContext::CIContext(BitmapContext* context)
    : m_context(context), m_space(context->isSRGB() ? ColorSpace::createSRGB() : ColorSpace::createDeviceRGB())
{
}

bool CIContext::drawImageInRectFromRect(const CIImage* image, const Rect& inRect, const Rect& fromRect)
{
    return draw(image, inRect, fromRect, false);
}

bool CIContext::clearAndDrawImageInRectFromRect(const CIImage* image, const Rect& inRect, const Rect& fromRect)
{
    return draw(image, inRect, fromRect, true);
}

bool CIContext::draw(const CIImage* image, const Rect& inRect, const Rect& fromRect, bool replace)
{
    const long long W = m_context->width(), H = m_context->height();
    auto clearAll = [&] {
        for (long long row = 0; row < H; ++row)
            std::memset(m_context->data() + std::size_t(row) * m_context->bytesPerRow(), 0, std::size_t(W) * 4);
    };
    if (!image || inRect.isEmpty() || fromRect.isEmpty()) {
        if (replace)
            clearAll();
        return true;
    }
    const bool oneForOne = inRect.size == fromRect.size && whole(inRect.x()) && whole(inRect.y()) && whole(fromRect.x())
        && whole(fromRect.y()) && whole(inRect.width()) && whole(inRect.height());
    if (!oneForOne) {
        if (replace)
            clearAll();
        return drawScaled(image, inRect, fromRect);
    }
    // The destination's pixels inside the bitmap, and the image pixels that land on them.
    const long long x0 = std::max(0LL, (long long)inRect.minX()), y0 = std::max(0LL, (long long)inRect.minY());
    const long long x1 = std::min(W, (long long)inRect.maxX()), y1 = std::min(H, (long long)inRect.maxY());
    // Only a copy over the whole bitmap writes every pixel itself.
    const bool writesAll = x0 == 0 && y0 == 0 && x1 == W && y1 == H;
    if (replace && !writesAll)
        clearAll();
    if (x1 <= x0 || y1 <= y0)
        return true;
    const long long dx = (long long)fromRect.minX() - (long long)inRect.minX();
    const long long dy = (long long)fromRect.minY() - (long long)inRect.minY();
    const auto topRow = (long long)flippedY(double(y1), double(H));
    std::uint8_t* first = m_context->data() + std::size_t(topRow) * m_context->bytesPerRow() + std::size_t(x0) * 4;
    return image->drawArea(int(x0 + dx), int(y0 + dy), int(x1 - x0), int(y1 - y0), first,
        std::ptrdiff_t(m_context->bytesPerRow()), replace && writesAll, m_space.get());
}

bool CIContext::drawScaled(const CIImage* image, const Rect& inRect, const Rect& fromRect)
{
    const long long W = m_context->width(), H = m_context->height();
    const double sx = double(fromRect.width()) / inRect.width(), sy = double(fromRect.height()) / inRect.height();
    const long long x0 = std::max(0LL, (long long)std::floor(inRect.minX())),
                    y0 = std::max(0LL, (long long)std::floor(inRect.minY()));
    const long long x1 = std::min(W, (long long)std::ceil(inRect.maxX())),
                    y1 = std::min(H, (long long)std::ceil(inRect.maxY()));
    if (x1 <= x0 || y1 <= y0)
        return true;
    // The source pixels bilinear sampling can reach, plus one on each side.
    const long long fx = (long long)std::floor(fromRect.minX()) - 1, fy = (long long)std::floor(fromRect.minY()) - 1;
    const long long fw = (long long)std::ceil(fromRect.maxX()) + 1 - fx,
                    fh = (long long)std::ceil(fromRect.maxY()) + 1 - fy;
    if (fw * fh > (1LL << 28))
        return false;
    std::vector<std::uint8_t> source(std::size_t(fw * fh * 4), 0);
    if (!image->drawArea(
            int(fx), int(fy), int(fw), int(fh), source.data(), std::ptrdiff_t(fw * 4), false, m_space.get()))
        return false;
    auto texel = [&](long long x, long long y, int c) -> double {
        if (x < 0 || y < 0 || x >= fw || y >= fh)
            return 0;
        const auto row = (long long)flippedY(double(y + 1), double(fh));
        return source[std::size_t((row * fw + x) * 4 + c)];
    };
    std::vector<std::uint8_t> line(std::size_t(x1 - x0) * 4);
    for (long long y = y0; y < y1; ++y) {
        // Only pixels whose centres fall in the destination rectangle are drawn.
        const double cy = y + 0.5;
        if (cy < inRect.minY() || cy >= inRect.maxY())
            continue;
        const double v = fromRect.minY() + (cy - inRect.minY()) * sy - 0.5 - double(fy);
        const long long vy = (long long)std::floor(v);
        const double ty = v - double(vy);
        std::fill(line.begin(), line.end(), 0);
        for (long long x = x0; x < x1; ++x) {
            const double cx = x + 0.5;
            if (cx < inRect.minX() || cx >= inRect.maxX())
                continue;
            const double u = fromRect.minX() + (cx - inRect.minX()) * sx - 0.5 - double(fx);
            const long long ux = (long long)std::floor(u);
            const double tx = u - double(ux);
            for (int c = 0; c < 4; ++c) {
                const double top = texel(ux, vy, c) * (1 - tx) + texel(ux + 1, vy, c) * tx;
                const double bottom = texel(ux, vy + 1, c) * (1 - tx) + texel(ux + 1, vy + 1, c) * tx;
                line[std::size_t((x - x0) * 4 + c)] = std::uint8_t(std::lround(top * (1 - ty) + bottom * ty));
            }
        }
        const auto row = (long long)flippedY(double(y + 1), double(H));
        pixelkernels::compositeOver(line.data(),
            m_context->data() + std::size_t(row) * m_context->bytesPerRow() + std::size_t(x0) * 4, line.size() / 4);
    }
    return true;
}

} // namespace kit
