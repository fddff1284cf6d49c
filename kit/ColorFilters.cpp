// ColorFilters: the filters that map each pixel's colour: adjustments, effects and tones.
#include "kit/ColorMapRecipe.h"
#include "kit/FilterOutputs.h"
#include "kit/LinearLight.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace kit::filteroutputs {

namespace {

RefPtr<CIImage> mapped(const CIFilter& filter, ColorMapRecipe::RowMap map, bool channelsAlone = false)
{
    return CIImage::imageWithRecipe(
        adoptRef(new ColorMapRecipe(filter.imageForKey("inputImage"), std::move(map), channelsAlone)));
}

float number(const CIFilter& filter, const char* key) { return float(filter.numberForKey(key)); }

RefPtr<CIImage> matrixMapped(const CIFilter& filter, const std::array<float, 9>& m)
{
    return CIImage::imageWithRecipe(adoptRef(new ColorMapRecipe(filter.imageForKey("inputImage"), m)));
}

constexpr float kLuma[3] = { 0.2125f, 0.7154f, 0.0721f };

float luminance(const float* rgb) { return kLuma[0] * rgb[0] + kLuma[1] * rgb[1] + kLuma[2] * rgb[2]; }

float unit(float x) { return std::max(0.0f, std::min(x, 1.0f)); }

// A colour function of sRGB-encoded values baked into a 33 x 33 x 33 cube and read back
// trilinearly.
class ColorCube {
public:
    static constexpr int kSize = 33;
    using Function = std::function<void(const double in[3], double out[3])>;

    explicit ColorCube(const Function& f) : m_values(std::size_t(kSize * kSize * kSize * 3))
    {
        double in[3], out[3];
        for (int b = 0; b < kSize; ++b)
            for (int g = 0; g < kSize; ++g)
                for (int r = 0; r < kSize; ++r) {
                    in[0] = r / double(kSize - 1), in[1] = g / double(kSize - 1), in[2] = b / double(kSize - 1);
                    f(in, out);
                    for (int c = 0; c < 3; ++c)
                        m_values[index(r, g, b) + std::size_t(c)] = float(out[c]);
                }
    }

    void apply(float* rgb) const
    {
        int base[3];
        float t[3];
        for (int c = 0; c < 3; ++c) {
            const float x = unit(rgb[c]) * (kSize - 1);
            base[c] = std::min(int(x), kSize - 2);
            t[c] = x - float(base[c]);
        }
        float out[3] = { 0, 0, 0 };
        for (int corner = 0; corner < 8; ++corner) {
            const int dr = corner & 1, dg = (corner >> 1) & 1, db = corner >> 2;
            const float w = (dr ? t[0] : 1 - t[0]) * (dg ? t[1] : 1 - t[1]) * (db ? t[2] : 1 - t[2]);
            const float* v = &m_values[index(base[0] + dr, base[1] + dg, base[2] + db)];
            for (int c = 0; c < 3; ++c)
                out[c] += w * v[c];
        }
        std::copy_n(out, 3, rgb);
    }

private:
    static std::size_t index(int r, int g, int b) { return std::size_t(((b * kSize + g) * kSize + r) * 3); }

    std::vector<float> m_values;
};

// S(x, k) = (1 - k) x + k x^2 (3 - 2x), the effects' S-curve.
double sCurve(double x, double k) { return (1 - k) * x + k * x * x * (3 - 2 * x); }

// The effects' luminance, on sRGB-encoded values.
double effectLuminance(const double* c) { return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]; }

// Saturation s, a lift and gain per channel, then the S-curve of strength k.
ColorCube::Function graded(double s, std::array<double, 6> lift, double k)
{
    return [s, lift, k](const double in[3], double out[3]) {
        const double y = effectLuminance(in);
        for (int c = 0; c < 3; ++c) {
            const double lo = lift[std::size_t(2 * c)], hi = lift[std::size_t(2 * c + 1)];
            out[c] = sCurve(lo + (hi - lo) * (y + s * (in[c] - y)), k);
        }
    };
}

// An effect on sRGB-encoded, un-premultiplied colour held to 0 .. 1, through its cube.
RefPtr<CIImage> effect(const CIFilter& filter, const ColorCube& cube)
{
    return mapped(filter, ColorMapRecipe::unpremultiplied([&cube](float* rgb) {
        for (int c = 0; c < 3; ++c)
            rgb[c] = linearlight::toSRGB(rgb[c]);
        cube.apply(rgb);
        for (int c = 0; c < 3; ++c)
            rgb[c] = linearlight::toLinear(rgb[c]);
    }));
}

} // namespace

RefPtr<CIImage> colorControls(const CIFilter& filter)
{
    const float s = number(filter, "inputSaturation"), b = number(filter, "inputBrightness");
    const float k = number(filter, "inputContrast");
    return mapped(filter, ColorMapRecipe::unpremultiplied([s, b, k](float* rgb) {
        const float y = luminance(rgb);
        for (int c = 0; c < 3; ++c)
            rgb[c] = ((y + s * (rgb[c] - y)) + b - 0.5f) * k + 0.5f;
    }));
}

RefPtr<CIImage> exposureAdjust(const CIFilter& filter)
{
    const float gain = std::exp2(number(filter, "inputEV"));
    return mapped(
        filter,
        [gain](float* rgba, std::size_t count, long long, long long) {
            for (std::size_t i = 0; i < count; ++i)
                for (int c = 0; c < 3; ++c)
                    rgba[4 * i + std::size_t(c)] *= gain;
        },
        true);
}

RefPtr<CIImage> gammaAdjust(const CIFilter& filter)
{
    const float power = number(filter, "inputPower");
    return mapped(filter, ColorMapRecipe::unpremultiplied([power](float* rgb) {
        for (int c = 0; c < 3; ++c)
            rgb[c] = std::copysign(std::pow(std::fabs(rgb[c]), power), rgb[c]);
    }),
        true);
}

RefPtr<CIImage> hueAdjust(const CIFilter& filter)
{
    // The rotation about the grey axis: cos I + (1 - cos)/3 J + sin/sqrt(3) K.
    const double angle = filter.numberForKey("inputAngle");
    const double cosine = std::cos(angle), j = (1 - cosine) / 3, k = std::sin(angle) / std::numbers::sqrt3;
    const auto d = float(cosine + j), plus = float(j + k), minus = float(j - k);
    return matrixMapped(filter, { d, minus, plus, plus, d, minus, minus, plus, d });
}

RefPtr<CIImage> vibrance(const CIFilter& filter)
{
    const float a = number(filter, "inputAmount");
    if (!(a > 0)) {
        // Towards the luminance grey: linear, so it works on premultiplied colour.
        const float keep = 1 + a;
        std::array<float, 9> m {};
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column)
                m[std::size_t(row * 3 + column)] = (1 - keep) * kLuma[column] + (row == column ? keep : 0);
        return matrixMapped(filter, m);
    }
    const float v[4]
        = { 3 * a, -4.5f * a * a - 1.5f * a, 4.5f * a * a * a - 0.5f * a, -4.5f * a * a * a + 4.5f * a * a - a };
    return mapped(filter, ColorMapRecipe::unpremultiplied([v](float* c) {
        float q[3];
        for (int i = 0; i < 3; ++i)
            q[i] = std::clamp(c[i], 0.0001f, 0.9999f);
        const float m = (q[0] + q[1] + q[2]) / 3;
        float terms[3];
        for (int i = 0; i < 3; ++i)
            terms[i] = std::max((q[i] - m) / (1 - m), (m - q[i]) / m);
        const float saturation = std::max({ terms[0], terms[1], terms[2] });
        const float skinTone = std::min(q[0] - q[1], 2 * q[1] - q[2]) * (1 - terms[0]) / m;
        const float skin = 0.15f + 0.7f * std::clamp(4 * skinTone, 0.0f, 1.0f);
        const float boost = (v[0] + saturation * (v[1] + saturation * (v[2] + saturation * v[3]))) * (1 - skin);
        for (int i = 0; i < 3; ++i)
            c[i] = unit(q[i] + (q[i] - m) * boost) + (c[i] - q[i]);
    }));
}

RefPtr<CIImage> colorInvert(const CIFilter& filter)
{
    return mapped(filter, ColorMapRecipe::unpremultiplied([](float* rgb) {
        for (int c = 0; c < 3; ++c)
            rgb[c] = 1 - rgb[c];
    }),
        true);
}

RefPtr<CIImage> colorPosterize(const CIFilter& filter)
{
    // Fewer than one level means nothing; held there so no value divides by zero.
    const float levels = std::max(1.0f, number(filter, "inputLevels"));
    return mapped(filter, ColorMapRecipe::unpremultiplied([levels](float* rgb) {
        for (int c = 0; c < 3; ++c)
            rgb[c] = linearlight::toLinear(std::floor(linearlight::toSRGB(rgb[c]) * levels + 0.5f) / levels);
    }),
        true);
}

RefPtr<CIImage> photoEffectChrome(const CIFilter& filter)
{
    static const ColorCube cube(graded(1.25, { 0, 1, 0, 1, 0, 1 }, 0.35));
    return effect(filter, cube);
}

RefPtr<CIImage> photoEffectFade(const CIFilter& filter)
{
    static const ColorCube cube(graded(0.65, { 0.08, 0.92, 0.08, 0.92, 0.08, 0.92 }, 0));
    return effect(filter, cube);
}

RefPtr<CIImage> photoEffectInstant(const CIFilter& filter)
{
    static const ColorCube cube(graded(0.85, { 0.06, 0.98, 0.04, 0.95, 0.10, 0.82 }, 0.10));
    return effect(filter, cube);
}

RefPtr<CIImage> photoEffectMono(const CIFilter& filter)
{
    static const ColorCube cube(
        [](const double in[3], double out[3]) { out[0] = out[1] = out[2] = 0.06 + 0.88 * effectLuminance(in); });
    return effect(filter, cube);
}

RefPtr<CIImage> photoEffectProcess(const CIFilter& filter)
{
    static const ColorCube cube(graded(0.90, { 0.02, 0.90, 0, 0.97, 0.10, 1.00 }, 0.25));
    return effect(filter, cube);
}

RefPtr<CIImage> photoEffectTransfer(const CIFilter& filter)
{
    static const ColorCube cube(graded(1.05, { 0.04, 1.00, 0.02, 0.96, 0, 0.84 }, 0.20));
    return effect(filter, cube);
}

RefPtr<CIImage> sepiaTone(const CIFilter& filter)
{
    // mix(c, Y601 (1.2, 1.0, 0.8), intensity): linear in the colour.
    const float i = number(filter, "inputIntensity");
    const float y[3] = { 0.299f, 0.587f, 0.114f }, tint[3] = { 1.2f, 1.0f, 0.8f };
    std::array<float, 9> m {};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            m[std::size_t(row * 3 + column)] = i * tint[row] * y[column] + (row == column ? 1 - i : 0);
    return matrixMapped(filter, m);
}

} // namespace kit::filteroutputs
