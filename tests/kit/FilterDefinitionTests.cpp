// The kit's filters against their definitions: each drawn through an sRGB context and compared
// with a reference computed in double from the definition, within one 8-bit step.
#include "kit/CIContext.h"
#include "kit/CIFilter.h"
#include "kit/CIImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kW = 23, kH = 17;

double toLinear(double u) { return u <= 0.04045 ? u / 12.92 : std::pow((u + 0.055) / 1.055, 2.4); }
double toSRGB(double v) { return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055; }

// Premultiplied linear RGBA in double, y up: pixel (x, y) of drawing space; transparent black
// outside.
struct Picture {
    std::vector<double> values = std::vector<double>(std::size_t(kW * kH * 4), 0.0);
    double at(long long x, long long y, int c) const
    {
        if (x < 0 || y < 0 || x >= kW || y >= kH)
            return 0;
        return values[std::size_t((y * kW + x) * 4 + c)];
    }
    double& operator()(int x, int y, int c) { return values[std::size_t((y * kW + x) * 4 + c)]; }
    // Bilinear between pixel centres at the point (px, py).
    double sample(double px, double py, int c) const
    {
        const double u = px - 0.5, v = py - 0.5, fu = std::floor(u), fv = std::floor(v);
        const double tx = u - fu, ty = v - fv;
        const auto x = (long long)fu, y = (long long)fv;
        return (1 - tx) * (1 - ty) * at(x, y, c) + tx * (1 - ty) * at(x + 1, y, c) + (1 - tx) * ty * at(x, y + 1, c)
            + tx * ty * at(x + 1, y + 1, c);
    }
};

// 8-bit premultiplied sRGB, memory top row first: opaque, transparent and partly covered
// pixels of every colour.
std::vector<std::uint8_t> testBytes()
{
    std::mt19937 random(7);
    std::vector<std::uint8_t> bytes(std::size_t(kW * kH * 4));
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const unsigned pick = random() % 6;
        const int a = pick == 0 ? 0 : pick < 4 ? 255 : int(random() % 256);
        for (int c = 0; c < 3; ++c)
            bytes[i + std::size_t(c)] = std::uint8_t(a == 0 ? 0 : random() % (a + 1));
        bytes[i + 3] = std::uint8_t(a);
    }
    return bytes;
}

Picture decoded(const std::vector<std::uint8_t>& bytes)
{
    Picture p;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const std::uint8_t* q = &bytes[std::size_t(((kH - 1 - y) * kW + x) * 4)];
            const double a = q[3] / 255.0;
            for (int c = 0; c < 3; ++c)
                p(x, y, c) = a == 0 ? 0 : a * toLinear(q[c] / double(q[3]));
            p(x, y, 3) = a;
        }
    return p;
}

// The bytes the picture should draw as, unrounded. Colour is encoded under the alpha that was
// actually drawn: a rounding of alpha the other way moves the colour bytes with it.
std::vector<double> encoded(const Picture& p, const std::vector<std::uint8_t>& drawn)
{
    std::vector<double> bytes(std::size_t(kW * kH * 4));
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const std::size_t i = std::size_t(((kH - 1 - y) * kW + x) * 4);
            const double a = std::clamp(p.at(x, y, 3), 0.0, 1.0), a8 = drawn[i + 3];
            for (int c = 0; c < 3; ++c)
                bytes[i + std::size_t(c)] = a8 == 0 || a == 0 ? 0 : a8 * toSRGB(std::clamp(p.at(x, y, c), 0.0, a) / a);
            bytes[i + 3] = a * 255;
        }
    return bytes;
}

using Rgb = std::array<double, 3>;
using ColorMap = std::function<Rgb(Rgb)>;

Picture mapUnpremultiplied(const Picture& in, const ColorMap& f)
{
    Picture out = in;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const double a = in.at(x, y, 3);
            if (a <= 0)
                continue;
            const Rgb rgb = f({ in.at(x, y, 0) / a, in.at(x, y, 1) / a, in.at(x, y, 2) / a });
            for (int c = 0; c < 3; ++c)
                out(x, y, c) = rgb[std::size_t(c)] * a;
        }
    return out;
}

// Weights at whole-pixel offsets: out(p) = sum of w(d) in(p + d).
Picture convolved(const Picture& in, const std::map<std::pair<int, int>, double>& weights)
{
    Picture out;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x)
            for (int c = 0; c < 4; ++c) {
                double sum = 0;
                for (const auto& [d, w] : weights)
                    sum += w * in.at(x + d.first, y + d.second, c);
                out(x, y, c) = sum;
            }
    return out;
}

// Each pixel the average of `f`'s sample points for its centre.
Picture resampled(const Picture& in, const std::function<std::vector<std::pair<double, double>>(double, double)>& f)
{
    Picture out;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const auto points = f(x + 0.5, y + 0.5);
            for (int c = 0; c < 4; ++c) {
                double sum = 0;
                for (const auto& [px, py] : points)
                    sum += in.sample(px, py, c);
                out(x, y, c) = sum / double(points.size());
            }
        }
    return out;
}

double luma(const Rgb& c) { return 0.2125 * c[0] + 0.7154 * c[1] + 0.0721 * c[2]; }
double luma709(const Rgb& c) { return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]; }
double smoothstep(double e0, double e1, double x)
{
    const double t = std::clamp((x - e0) / (e1 - e0), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// An effect on sRGB-encoded values: saturation, a lift and gain per channel, the S-curve.
ColorMap photoEffect(double s, std::array<double, 6> lift, double k)
{
    return [=](Rgb c) {
        Rgb e;
        for (int i = 0; i < 3; ++i)
            e[std::size_t(i)] = toSRGB(std::clamp(c[std::size_t(i)], 0.0, 1.0));
        const double y = luma709(e);
        for (int i = 0; i < 3; ++i) {
            double v = y + s * (e[std::size_t(i)] - y);
            v = lift[std::size_t(2 * i)] + (lift[std::size_t(2 * i + 1)] - lift[std::size_t(2 * i)]) * v;
            v = (1 - k) * v + k * v * v * (3 - 2 * v);
            e[std::size_t(i)] = toLinear(v);
        }
        return e;
    };
}

Picture darkened(const Picture& in, const std::function<double(double, double)>& t, double intensity)
{
    Picture out = in;
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x)
            for (int c = 0; c < 3; ++c)
                out(x, y, c) *= 1 - intensity * t(x + 0.5, y + 0.5);
    return out;
}

std::map<std::pair<int, int>, double> gaussianWeights(double sigma)
{
    const int reach = int(std::ceil(6 * sigma));
    std::vector<double> g(std::size_t(2 * reach + 1));
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += g[std::size_t(n + reach)] = std::exp(-n * n / (2 * sigma * sigma));
    std::map<std::pair<int, int>, double> weights;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            weights[{ dx, dy }] = g[std::size_t(dx + reach)] * g[std::size_t(dy + reach)] / (sum * sum);
    return weights;
}

std::map<std::pair<int, int>, double> uniformWeights(int reach, const std::function<bool(int, int)>& inside)
{
    std::map<std::pair<int, int>, double> weights;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (inside(dx, dy))
                weights[{ dx, dy }] = 1;
    for (auto& entry : weights)
        entry.second /= double(weights.size());
    return weights;
}

std::vector<std::pair<double, double>> alongLine(double px, double py, double r, double angle)
{
    const int n = 2 * int(std::ceil(r)) + 1;
    std::vector<std::pair<double, double>> points;
    for (int k = 0; k < n; ++k) {
        const double t = -r + 2 * r * k / (n - 1);
        points.push_back({ px + t * std::cos(angle), py + t * std::sin(angle) });
    }
    return points;
}

std::vector<std::pair<double, double>> towardsCentre(double px, double py, double amount, double cx, double cy)
{
    double farthest = 0;
    for (double x : { 0, kW })
        for (double y : { 0, kH })
            farthest = std::max(farthest, std::hypot(x - cx, y - cy));
    const double n = std::max(8.0, std::ceil(std::fabs(amount)));
    std::vector<std::pair<double, double>> points;
    for (int k = 0; k < n; ++k) {
        const double s = 1 - k * amount / (n * farthest);
        points.push_back({ cx + (px - cx) * s, cy + (py - cy) * s });
    }
    return points;
}

std::vector<std::pair<double, double>> bumped(double px, double py, double cx, double cy, double radius, double scale)
{
    const double d = std::hypot(px - cx, py - cy);
    if (d >= radius)
        return { { px, py } };
    const double f = std::pow(1 - scale * (1 - d / radius), 2);
    return { { cx + (px - cx) * f, cy + (py - cy) * f } };
}

struct Case {
    std::string name;
    std::map<std::string, double> numbers; // unset keys keep their defaults
    std::map<std::string, kit::Point> points;
    std::function<Picture(const Picture&)> reference;
    kit::Rect extent; // of the output over the kW x kH input
};

std::ostream& operator<<(std::ostream& os, const Case& c)
{
    os << c.name;
    for (const auto& [key, value] : c.numbers)
        os << " " << key << "=" << value;
    for (const auto& [key, value] : c.points)
        os << " " << key << "=" << value.x << "," << value.y;
    return os;
}

const kit::Rect kSame(0, 0, kW, kH);

kit::Rect grown(float dx, float dy) { return { -dx, -dy, kW + 2 * dx, kH + 2 * dy }; }

ColorMap matrix(std::array<double, 9> m)
{
    return [m](Rgb c) {
        return Rgb { m[0] * c[0] + m[1] * c[1] + m[2] * c[2], m[3] * c[0] + m[4] * c[1] + m[5] * c[2],
            m[6] * c[0] + m[7] * c[1] + m[8] * c[2] };
    };
}

ColorMap hueRotation(double angle)
{
    const double co = std::cos(angle), j = (1 - co) / 3, k = std::sin(angle) / std::sqrt(3.0);
    return matrix({ co + j, j - k, j + k, j + k, co + j, j - k, j - k, j + k, co + j });
}

ColorMap vibranceMap(double a)
{
    return [a](Rgb c) {
        if (a <= 0) {
            const double y = luma(c);
            return Rgb { y + (1 + a) * (c[0] - y), y + (1 + a) * (c[1] - y), y + (1 + a) * (c[2] - y) };
        }
        Rgb q;
        for (int i = 0; i < 3; ++i)
            q[std::size_t(i)] = std::clamp(c[std::size_t(i)], 0.0001, 0.9999);
        const double m = (q[0] + q[1] + q[2]) / 3;
        auto term = [&](int i) { return std::max((q[std::size_t(i)] - m) / (1 - m), (m - q[std::size_t(i)]) / m); };
        const double s = std::max({ term(0), term(1), term(2) });
        const double skin
            = 0.15 + 0.7 * std::clamp(4 * std::min(q[0] - q[1], 2 * q[1] - q[2]) * (1 - term(0)) / m, 0.0, 1.0);
        const double v[4]
            = { 3 * a, -4.5 * a * a - 1.5 * a, 4.5 * a * a * a - 0.5 * a, -4.5 * a * a * a + 4.5 * a * a - a };
        const double boost = (v[0] + v[1] * s + v[2] * s * s + v[3] * s * s * s) * (1 - skin);
        Rgb out;
        for (int i = 0; i < 3; ++i)
            out[std::size_t(i)] = std::clamp(q[std::size_t(i)] + (q[std::size_t(i)] - m) * boost, 0.0, 1.0)
                + (c[std::size_t(i)] - q[std::size_t(i)]);
        return out;
    };
}

ColorMap sepia(double intensity)
{
    return [intensity](Rgb c) {
        const double y = 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2];
        const double tint[3] = { 1.2, 1.0, 0.8 };
        Rgb out;
        for (int i = 0; i < 3; ++i)
            out[std::size_t(i)] = c[std::size_t(i)] + intensity * (y * tint[i] - c[std::size_t(i)]);
        return out;
    };
}

ColorMap controls(double s, double b, double k)
{
    return [=](Rgb c) {
        const double y = luma(c);
        Rgb out;
        for (int i = 0; i < 3; ++i)
            out[std::size_t(i)] = ((y + s * (c[std::size_t(i)] - y)) + b - 0.5) * k + 0.5;
        return out;
    };
}

std::function<Picture(const Picture&)> mapped(ColorMap f)
{
    return [f](const Picture& in) { return mapUnpremultiplied(in, f); };
}

std::vector<Case> cases()
{
    auto convolve
        = [](std::map<std::pair<int, int>, double> w) { return [w](const Picture& in) { return convolved(in, w); }; };
    auto resample = [](auto f) { return [f](const Picture& in) { return resampled(in, f); }; };
    return {
        { "CIGaussianBlur", {}, {}, convolve(gaussianWeights(10)), grown(30, 30) },
        { "CIGaussianBlur", { { "inputRadius", 1.5 } }, {}, convolve(gaussianWeights(1.5)), grown(5, 5) },
        { "CIBoxBlur", {}, {}, convolve(uniformWeights(10, [](int, int) { return true; })), grown(10, 10) },
        { "CIBoxBlur", { { "inputRadius", 2.4 } }, {}, convolve(uniformWeights(2, [](int, int) { return true; })),
            grown(2, 2) },
        // A window taller and wider than the picture.
        { "CIBoxBlur", { { "inputRadius", 15 } }, {}, convolve(uniformWeights(15, [](int, int) { return true; })),
            grown(15, 15) },
        { "CIDiscBlur", {}, {}, convolve(uniformWeights(8, [](int x, int y) { return x * x + y * y <= 64; })),
            grown(8, 8) },
        { "CIDiscBlur", { { "inputRadius", 3.5 } }, {},
            convolve(uniformWeights(3, [](int x, int y) { return x * x + y * y <= 12.25; })), grown(4, 4) },
        { "CIMotionBlur", {}, {}, resample([](double x, double y) { return alongLine(x, y, 20, 0); }), grown(20, 0) },
        { "CIMotionBlur", { { "inputRadius", 5 }, { "inputAngle", 0.7 } }, {},
            resample([](double x, double y) { return alongLine(x, y, 5, 0.7); }),
            grown(float(5 * std::cos(0.7)), float(5 * std::sin(0.7))) },
        { "CIZoomBlur", {}, {}, resample([](double x, double y) { return towardsCentre(x, y, 20, 150, 150); }), kSame },
        { "CIZoomBlur", { { "inputAmount", -5 } }, { { "inputCenter", { 10, 8 } } },
            resample([](double x, double y) { return towardsCentre(x, y, -5, 10, 8); }), kSame },
        { "CIColorControls", {}, {}, mapped(controls(1, 0, 1)), kSame },
        { "CIColorControls", { { "inputSaturation", 1.6 }, { "inputBrightness", -0.1 }, { "inputContrast", 1.3 } }, {},
            mapped(controls(1.6, -0.1, 1.3)), kSame },
        { "CIExposureAdjust", { { "inputEV", -0.75 } }, {}, mapped([](Rgb c) {
             return Rgb { c[0] * std::exp2(-0.75), c[1] * std::exp2(-0.75), c[2] * std::exp2(-0.75) };
         }),
            kSame },
        { "CIGammaAdjust", {}, {}, mapped(matrix({ 1, 0, 0, 0, 1, 0, 0, 0, 1 })), kSame },
        { "CIGammaAdjust", { { "inputPower", 0.45 } }, {}, mapped([](Rgb c) {
             return Rgb { std::pow(c[0], 0.45), std::pow(c[1], 0.45), std::pow(c[2], 0.45) };
         }),
            kSame },
        { "CIHueAdjust", { { "inputAngle", 2.1 } }, {}, mapped(hueRotation(2.1)), kSame },
        { "CIHueAdjust", {}, {}, mapped(hueRotation(0)), kSame },
        { "CIVibrance", { { "inputAmount", 0.8 } }, {}, mapped(vibranceMap(0.8)), kSame },
        { "CIVibrance", { { "inputAmount", -0.6 } }, {}, mapped(vibranceMap(-0.6)), kSame },
        { "CIColorInvert", {}, {}, mapped([](Rgb c) {
             return Rgb { 1 - c[0], 1 - c[1], 1 - c[2] };
         }),
            kSame },
        { "CIColorPosterize", { { "inputLevels", 4 } }, {}, mapped([](Rgb c) {
             for (double& v : c)
                 v = toLinear(std::floor(toSRGB(std::clamp(v, 0.0, 1.0)) * 4 + 0.5) / 4);
             return c;
         }),
            kSame },
        { "CIPhotoEffectChrome", {}, {}, mapped(photoEffect(1.25, { 0, 1, 0, 1, 0, 1 }, 0.35)), kSame },
        { "CIPhotoEffectFade", {}, {}, mapped(photoEffect(0.65, { 0.08, 0.92, 0.08, 0.92, 0.08, 0.92 }, 0)), kSame },
        { "CIPhotoEffectInstant", {}, {}, mapped(photoEffect(0.85, { 0.06, 0.98, 0.04, 0.95, 0.10, 0.82 }, 0.10)),
            kSame },
        { "CIPhotoEffectMono", {}, {}, mapped([](Rgb c) {
             const double y = 0.06 + 0.88 * luma709({ toSRGB(c[0]), toSRGB(c[1]), toSRGB(c[2]) });
             return Rgb { toLinear(y), toLinear(y), toLinear(y) };
         }),
            kSame },
        { "CIPhotoEffectProcess", {}, {}, mapped(photoEffect(0.90, { 0.02, 0.90, 0, 0.97, 0.10, 1.00 }, 0.25)), kSame },
        { "CIPhotoEffectTransfer", {}, {}, mapped(photoEffect(1.05, { 0.04, 1.00, 0.02, 0.96, 0, 0.84 }, 0.20)),
            kSame },
        { "CISepiaTone", {}, {}, mapped(sepia(1)), kSame },
        { "CISepiaTone", { { "inputIntensity", 0.4 } }, {}, mapped(sepia(0.4)), kSame },
        { "CIVignette", { { "inputIntensity", 0.9 }, { "inputRadius", 0.5 } }, {},
            [](const Picture& in) {
                const double reach = 0.5 * std::hypot(kW, kH) / 2;
                return darkened(
                    in,
                    [reach](double x, double y) {
                        return smoothstep(0.5, 1.5, std::hypot(x - kW / 2.0, y - kH / 2.0) / reach);
                    },
                    0.9);
            },
            kSame },
        { "CIVignette", {}, {}, [](const Picture& in) { return in; }, kSame },
        { "CIVignetteEffect", {}, {},
            [](const Picture& in) {
                return darkened(
                    in, [](double x, double y) { return smoothstep(75, 225, std::hypot(x - 150, y - 150)); }, 1);
            },
            kSame },
        { "CIVignetteEffect", { { "inputRadius", 9 }, { "inputIntensity", -0.5 }, { "inputFalloff", 0.3 } },
            { { "inputCenter", { 12, 7 } } },
            [](const Picture& in) {
                return darkened(
                    in, [](double x, double y) { return smoothstep(6.3, 11.7, std::hypot(x - 12, y - 7)); }, -0.5);
            },
            kSame },
        { "CIBumpDistortion", {}, {}, resample([](double x, double y) { return bumped(x, y, 150, 150, 300, 0.5); }),
            kSame },
        { "CIBumpDistortion", { { "inputRadius", 8 }, { "inputScale", -0.7 } }, { { "inputCenter", { 11, 9 } } },
            resample([](double x, double y) { return bumped(x, y, 11, 9, 8, -0.7); }), kSame },
    };
}

class FilterDefinition : public ::testing::TestWithParam<Case> {};

TEST_P(FilterDefinition, DrawsWithinOneStepOfTheDefinitionAndHasItsExtent)
{
    const Case& c = GetParam();
    const auto bytes = testBytes();
    auto space = kit::ColorSpace::createSRGB();
    auto image = kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytes(bytes.data(), bytes.size()),
        std::size_t(kW) * 4, { kW, kH }, kit::CIFormatRGBA8, space.get());
    auto filter = kit::CIFilter::filterWithName(c.name);
    ASSERT_TRUE(filter);
    filter->setValueForKey(image, "inputImage");
    for (const auto& [key, value] : c.numbers)
        filter->setValueForKey(value, key);
    for (const auto& [key, value] : c.points)
        filter->setValueForKey(value, key);
    auto output = filter->outputImage();
    ASSERT_TRUE(output);
    EXPECT_NEAR(output->extent().minX(), c.extent.minX(), 1e-4);
    EXPECT_NEAR(output->extent().minY(), c.extent.minY(), 1e-4);
    EXPECT_NEAR(output->extent().width(), c.extent.width(), 1e-4);
    EXPECT_NEAR(output->extent().height(), c.extent.height(), 1e-4);

    std::vector<std::uint8_t> drawn(bytes.size(), 99);
    auto context = kit::BitmapContext::create(
        drawn.data(), kW, kH, 8, std::size_t(kW) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    ASSERT_TRUE(kit::CIContext::contextWithCGContextOptions(context.get(), nullptr)
                    ->clearAndDrawImageInRectFromRect(output.get(), kSame, kSame));
    const auto expected = encoded(c.reference(decoded(bytes)), drawn);
    double worst = 0;
    std::size_t where = 0;
    for (std::size_t i = 0; i < drawn.size(); ++i) {
        if (std::fabs(drawn[i] - expected[i]) > worst)
            worst = std::fabs(drawn[i] - expected[i]), where = i;
    }
    EXPECT_LE(worst, 1.0) << "pixel " << where / 4 << " channel " << where % 4 << ": " << int(drawn[where])
                          << " against " << expected[where];
}

INSTANTIATE_TEST_SUITE_P(EveryFilter, FilterDefinition, ::testing::ValuesIn(cases()));

} // namespace
