// GaussianBlur: Deriche's fourth-order recursive Gaussian, set up for a sigma and run in two passes.
#include "kit/GaussianBlur.h"

#include "kit/GaussianBlurKernels.h"
#include "kit/ScratchBlock.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

namespace kit {

namespace {

// exp(-t^2 / 2) for t >= 0 as the sum of two damped cosine-sine pairs
// Re(alpha_k e^(-lambda_k t)); Deriche's fourth-order fit.
constexpr double kAlpha[2][2]
    = { { 1.6797292232361107, -3.7348298269103580 }, { -0.6802783501806897, 0.2598300478959625 } };
constexpr double kLambda[2][2]
    = { { 1.7831906544515104, -0.6318113174569493 }, { 1.7228297663338028, -1.9969276832487770 } };

GaussianBlur::Coefficients coefficientsFor(double sigma)
{
    using Complex = std::complex<double>;
    double n0[2], n1[2], m1[2], m2[2], d1[2], d2[2];
    double sum = 0;
    for (int k = 0; k < 2; ++k) {
        const Complex alpha(kAlpha[k][0], kAlpha[k][1]);
        const Complex pole = std::exp(-Complex(kLambda[k][0], kLambda[k][1]) / sigma);
        // Each section is one conjugate pair: sum over n >= 0 of Re(alpha pole^n) z^-n forward,
        // and over n >= 1 backward, so the centre tap is counted once.
        n0[k] = alpha.real();
        n1[k] = -(alpha * std::conj(pole)).real();
        m1[k] = (alpha * pole).real();
        m2[k] = -std::norm(pole) * alpha.real();
        d1[k] = -2 * pole.real();
        d2[k] = std::norm(pole);
        sum += (n0[k] + n1[k] + m1[k] + m2[k]) / (1 + d1[k] + d2[k]);
    }
    GaussianBlur::Coefficients c;
    for (int k = 0; k < 2; ++k) {
        c.n0[k] = float(n0[k] / sum);
        c.n1[k] = float(n1[k] / sum);
        c.m1[k] = float(m1[k] / sum);
        c.m2[k] = float(m2[k] / sum);
        c.d1[k] = float(d1[k]);
        c.d2[k] = float(d2[k]);
    }
    return c;
}

GaussianBlur::Coefficients scaled(GaussianBlur::Coefficients c, float factor)
{
    for (int k = 0; k < 2; ++k) {
        c.n0[k] *= factor;
        c.n1[k] *= factor;
        c.m1[k] *= factor;
        c.m2[k] *= factor;
    }
    return c;
}

// The sum of exp(-n^2 / 2 sigma^2) over all integers n. From sigma 4 on it equals
// sigma sqrt(2 pi) to double precision (the next term of its Poisson sum is below 1e-130).
double kernelSum(double sigma, int reach)
{
    if (sigma >= 4)
        return sigma * std::sqrt(2 * std::numbers::pi);
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += std::exp(-double(n) * n / (2 * sigma * sigma));
    return sum;
}

// Which pixels of a line the span [a, b) (already within the line) covers: whole pixels
// first .. end-1, and at most one partly covered pixel on either side.
struct SpanPixels {
    long long first = 0, end = 0;
    long long left = -1, right = -1;
    double leftCover = 0, rightCover = 0;

    SpanPixels(double a, double b)
    {
        first = (long long)std::ceil(a);
        end = std::max(first, (long long)std::floor(b));
        const double leftPixel = std::floor(a), rightPixel = std::floor(b);
        if (a > leftPixel) {
            left = (long long)leftPixel;
            leftCover = std::min(b, leftPixel + 1) - a;
        }
        if (b > rightPixel && (long long)rightPixel >= first) {
            right = (long long)rightPixel;
            rightCover = b - rightPixel;
        }
    }
    double coverage(long long p) const
    {
        return p == left ? leftCover : p == right ? rightCover : p >= first && p < end ? 1.0 : 0.0;
    }
};

std::size_t roundUp(std::size_t value, std::size_t step) { return (value + step - 1) / step * step; }

} // namespace

GaussianBlur::GaussianBlur(double sigma) : m_sigma(sigma)
{
    if (!isIdentity())
        m_coefficients = coefficientsFor(sigma);
}

void GaussianBlur::blurSpan(double from, double to, int length, float* out) const
{
    if (length <= 0)
        return;
    const double a = std::clamp(from, 0.0, double(length)), b = std::clamp(to, 0.0, double(length));
    if (!(b > a)) {
        std::fill(out, out + length, 0.0f);
        return;
    }
    const SpanPixels span(a, b);
    if (isIdentity()) {
        for (long long p = 0; p < length; ++p)
            out[p] = float(span.coverage(p));
        return;
    }
    // Weights beyond 12 sigma are below 1e-31 of the centre; none beyond the line matters.
    const double fullReach = std::ceil(12 * m_sigma) + 2;
    const int reach = int(std::min(fullReach, double(length)));
    const double sum = kernelSum(m_sigma, int(std::min(fullReach, 1e6)));
    std::vector<double> weight(std::size_t(2 * reach + 1)), below(std::size_t(2 * reach + 2), 0.0);
    for (int n = -reach; n <= reach; ++n) {
        weight[std::size_t(n + reach)] = std::exp(-double(n) * n / (2 * m_sigma * m_sigma)) / sum;
        below[std::size_t(n + reach + 1)] = below[std::size_t(n + reach)] + weight[std::size_t(n + reach)];
    }
    // The weights from n = -reach up to k: a whole run of covered pixels costs two look-ups.
    auto upTo
        = [&](long long k) { return below[std::size_t(std::clamp(k, -1LL - reach, (long long)reach) + reach + 1)]; };
    auto at = [&](long long n) { return n < -reach || n > reach ? 0.0 : weight[std::size_t(n + reach)]; };
    for (long long i = 0; i < length; ++i) {
        double value = span.end > span.first ? upTo(span.end - 1 - i) - upTo(span.first - 1 - i) : 0.0;
        if (span.left >= 0)
            value += span.leftCover * at(span.left - i);
        if (span.right >= 0)
            value += span.rightCover * at(span.right - i);
        out[i] = float(value);
    }
}

std::size_t GaussianBlur::planeStride(int width) { return roundUp(std::size_t(width), blurkernels::lanes()); }

std::size_t GaussianBlur::stripBytes(int width, int height)
{
    return planeStride(width) * roundUp(std::size_t(height), blurkernels::lanes()) * sizeof(std::uint16_t);
}

std::size_t GaussianBlur::planeBytes(int width, int height) { return planeStride(width) * std::size_t(height); }

bool GaussianBlur::blurChannel(const BlurSource& source, int width, int height, const RowSink& sink,
    BlurSourceFacts* facts, const BlurWorkspace* workspace) const
{
    if (width <= 0 || height <= 0)
        return false;
    const std::size_t lanes = blurkernels::lanes();
    const std::size_t paddedWidth = roundUp(std::size_t(width), lanes);
    const std::size_t paddedHeight = roundUp(std::size_t(height), lanes);
    const std::size_t longest = std::max(paddedWidth, paddedHeight);
    if (paddedWidth > std::numeric_limits<std::size_t>::max() / 2 / paddedHeight)
        return false;
    const bool lent = workspace != nullptr;
    ScratchBlock strips(lent ? 0 : paddedWidth * paddedHeight * sizeof(std::uint16_t));
    ScratchBlock steps(2 * longest * lanes * sizeof(float));
    ScratchBlock plane(lent ? 0 : paddedWidth * std::size_t(height));
    if ((!lent && (!strips || !plane)) || !steps)
        return false;
    auto* stripMemory = lent ? workspace->strips : strips.as<std::uint16_t>();
    auto* planeMemory = lent ? workspace->plane : plane.as<std::uint8_t>();

    std::uint32_t mismatch[2] = { 0, 0 };
    const BlurTiles* tiles = lent ? workspace->tiles : nullptr;
    blurkernels::blurHorizontally(
        m_coefficients, source, paddedWidth, paddedHeight, stripMemory, steps.as<float>(), mismatch, tiles);
    if (facts) {
        facts->othersEqualChannel = mismatch[0] == 0;
        facts->othersZero = mismatch[1] == 0;
    }
    blurkernels::blurVertically(scaled(m_coefficients, 1.0f / 256), stripMemory, paddedWidth, paddedHeight,
        std::size_t(height), steps.as<float>(), planeMemory, paddedWidth, tiles);
    sink(0, height, planeMemory, std::ptrdiff_t(paddedWidth));
    return true;
}

int GaussianBlur::reach() const
{
    if (isIdentity())
        return 0;
    // The causal and anticausal impulse responses of both sections, in absolute value: an input
    // n pixels back moves the output by at most response[n] of its size.
    const Coefficients& c = m_coefficients;
    const std::size_t length = std::size_t(std::ceil(40 * m_sigma)) + 64;
    std::vector<double> response(length, 0.0);
    for (int k = 0; k < 2; ++k) {
        double y1 = 0, y2 = 0, z1 = 0, z2 = 0;
        for (std::size_t n = 0; n < length; ++n) {
            const double y = (n == 0 ? c.n0[k] : n == 1 ? c.n1[k] : 0.0) - c.d1[k] * y1 - c.d2[k] * y2;
            const double z = (n == 0 ? c.m1[k] : n == 1 ? c.m2[k] : 0.0) - c.d1[k] * z1 - c.d2[k] * z2;
            y2 = std::exchange(y1, y);
            z2 = std::exchange(z1, z);
            response[n] += std::fabs(y) + std::fabs(z);
        }
    }
    // Everything from `reach` pixels away on, at full scale, stays under a twentieth of a step.
    double tail = 0;
    std::size_t reach = length;
    while (reach > 0 && (tail + response[reach - 1]) * 255 < 0.05)
        tail += response[--reach];
    return int(reach);
}

bool GaussianBlur::blurChannelWide(const BlurSource& source, int width, int height, std::uint16_t* strips,
    std::uint16_t* plane, const BlurTiles* tiles) const
{
    if (width <= 0 || height <= 0)
        return false;
    const std::size_t lanes = blurkernels::lanes();
    const std::size_t paddedWidth = roundUp(std::size_t(width), lanes);
    const std::size_t paddedHeight = roundUp(std::size_t(height), lanes);
    ScratchBlock steps(2 * std::max(paddedWidth, paddedHeight) * lanes * sizeof(float));
    if (!steps)
        return false;
    std::uint32_t mismatch[2] = { 0, 0 };
    blurkernels::blurHorizontally(
        m_coefficients, source, paddedWidth, paddedHeight, strips, steps.as<float>(), mismatch, tiles);
    blurkernels::blurVerticallyWide(m_coefficients, strips, paddedWidth, paddedHeight, std::size_t(height),
        steps.as<float>(), plane, paddedWidth, tiles);
    return true;
}

} // namespace kit
