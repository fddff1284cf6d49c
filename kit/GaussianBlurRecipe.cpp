// GaussianBlurRecipe: Deriche's recursive Gaussian over float RGBA, rows then column strips.
#include "kit/GaussianBlurRecipe.h"

#include "kit/BandBlur.h"
#include "kit/FloatBlurKernels.h"
#include "kit/LinearLight.h"
#include "kit/ScratchBlock.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kit {

namespace {

constexpr long long kMaxPixels = 1LL << 28;

} // namespace

GaussianBlurRecipe::GaussianBlurRecipe(RefPtr<CIImage> input, double sigma) : m_input(std::move(input)), m_blur(sigma)
{
    const float grow = float(std::ceil(3 * sigma));
    const Rect in = m_input->extent();
    m_extent
        = isInfinite(in) ? in : Rect(in.minX() - grow, in.minY() - grow, in.width() + 2 * grow, in.height() + 2 * grow);
    if (m_blur.isIdentity() || sigma > kMaxDirectSigma)
        return;
    // Beyond 4.5 sigma each side holds less than 4e-6 of the weight.
    const auto reach = (long long)std::ceil(4.5 * sigma);
    double sum = 0;
    std::vector<double> g;
    for (long long n = -reach; n <= reach; ++n)
        sum += g.emplace_back(std::exp(-double(n * n) / (2 * sigma * sigma)));
    for (double w : g)
        m_weights.push_back(float(w / sum));
}

bool GaussianBlurRecipe::drawBytes(const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride, bool srgb) const
{
    if (m_blur.isIdentity())
        return false;
    if (!m_weights.empty())
        return srgb && m_input->isBitmapEncoded(true)
            && BandBlur::drawWeighted(*m_input, m_weights, area, rgba, stride);
    // The recursion's own rows are encoded where they lie, with no copy of the area in floats.
    return blurred(area, [&](const FloatPixels& pixels, long long top, long long left) {
        for (long long r = 0; r < area.height; ++r)
            linearlight::encodeRow(pixels.row(top + r) + left, srgb, std::size_t(area.width), rgba + r * stride);
    });
}

bool GaussianBlurRecipe::render(const PixelArea& area, const FloatPixels& out) const
{
    if (m_blur.isIdentity())
        return m_input->renderArea(area, out);
    return blurred(area, [&](const FloatPixels& pixels, long long top, long long left) {
        for (long long r = 0; r < area.height; ++r)
            std::memcpy(out.row(r), pixels.row(top + r) + left, std::size_t(area.width) * 4 * sizeof(float));
    });
}

bool GaussianBlurRecipe::blurred(
    const PixelArea& area, const std::function<void(const FloatPixels&, long long, long long)>& take) const
{
    // The input over the area and its reach, and only where the input has pixels; the blur
    // runs over that and the area, reading transparent black beyond the input.
    const auto reach = (long long)std::ceil(4 * m_blur.sigma()) + 2;
    const PixelArea inputArea = area.grown(reach, reach).intersected(PixelArea::enclosing(m_input->extent()));
    const PixelArea domain = inputArea.isEmpty() ? area : area.united(inputArea);
    if (domain.count() > kMaxPixels)
        return false;
    ScratchBlock block(std::size_t(domain.count()) * 4 * sizeof(float));
    const long long scratchFloats = std::max(domain.width * 4, domain.height * floatblurkernels::kStrip);
    ScratchBlock scratch(std::size_t(scratchFloats) * sizeof(float));
    const FloatPixels pixels { block.as<float>(), std::ptrdiff_t(domain.width * 4) };
    if (!block || !scratch || !m_input->renderArea(domain, pixels))
        return false;
    const GaussianBlur::Coefficients& c = m_blur.coefficients();
    floatblurkernels::blurRows(c, pixels, domain.width, domain.height, scratch.as<float>());
    floatblurkernels::blurColumns(c, pixels, domain.width, domain.height, scratch.as<float>());
    take(pixels, domain.maxY() - area.maxY(), (area.x - domain.x) * 4);
    return true;
}

} // namespace kit
