// LinearLight: tables for the sRGB curve, and the row conversions at either end of the filter chain.
#include "kit/LinearLight.h"

#include "kit/LinearLightKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace kit::linearlight {

namespace {

constexpr int kSteps = 4096;

// x held to lo .. hi, NaN to lo.
float held(float x, float lo, float hi) { return std::max(lo, std::min(x, hi)); }

double exactToLinear(double u) { return u <= 0.04045 ? u / 12.92 : std::pow((u + 0.055) / 1.055, 2.4); }
double exactToSRGB(double v) { return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055; }

struct Curve {
    std::array<float, kSteps + 2> values {};
    explicit Curve(double (*f)(double))
    {
        for (int i = 0; i <= kSteps; ++i)
            values[std::size_t(i)] = float(f(double(i) / kSteps));
        values[kSteps + 1] = values[kSteps];
    }
    float operator()(float x) const
    {
        const float t = held(x, 0, 1) * kSteps;
        const int i = int(t);
        const float f = t - float(i);
        return values[std::size_t(i)] + (values[std::size_t(i) + 1] - values[std::size_t(i)]) * f;
    }
};

const Curve& linearCurve()
{
    static const Curve curve(exactToLinear);
    return curve;
}

const Curve& srgbCurve()
{
    static const Curve curve(exactToSRGB);
    return curve;
}

// toSRGB at 65536 steps, read without interpolation where bytes are written: within 0.03 of an
// 8-bit step, and one load instead of two and a blend.
constexpr int kFineSteps = 65535;

const std::vector<float>& fineSRGB()
{
    static const std::vector<float> table = [] {
        std::vector<float> t(kFineSteps + 1);
        for (int i = 0; i <= kFineSteps; ++i)
            t[std::size_t(i)] = float(exactToSRGB(double(i) / kFineSteps));
        return t;
    }();
    return table;
}

// Premultiplied 8-bit sRGB colour c under alpha a, as a premultiplied linear float: a 256 x 256
// table, exact to float.
const std::vector<float>& decodedTable()
{
    static const std::vector<float> table = [] {
        std::vector<float> t(256 * 256, 0.0f);
        for (int a = 1; a < 256; ++a)
            for (int c = 0; c < 256; ++c)
                t[std::size_t(a * 256 + c)] = float(a / 255.0 * exactToLinear(std::min(c, a) / double(a)));
        return t;
    }();
    return table;
}

} // namespace

float toLinear(float encoded) { return linearCurve()(encoded); }

float toSRGB(float linear) { return srgbCurve()(linear); }

void decodeRow(const std::uint8_t* pixels, bool argb, bool srgb, std::size_t count, float* out)
{
    const int first = argb ? 1 : 0, alpha = argb ? 0 : 3;
    if (!srgb) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t* p = pixels + 4 * i;
            for (int c = 0; c < 3; ++c)
                out[4 * i + std::size_t(c)] = p[first + c] * (1.0f / 255);
            out[4 * i + 3] = p[alpha] * (1.0f / 255);
        }
        return;
    }
    const float* table = decodedTable().data();
    for (std::size_t i = argb ? 0 : linearlightkernels::decode(pixels, count, table, out); i < count; ++i) {
        const std::uint8_t* p = pixels + 4 * i;
        const float* row = table + std::size_t(p[alpha]) * 256;
        for (int c = 0; c < 3; ++c)
            out[4 * i + std::size_t(c)] = row[p[first + c]];
        out[4 * i + 3] = p[alpha] * (1.0f / 255);
    }
}

void decodeUnitsRow(const std::uint8_t* pixels, std::size_t count, std::uint16_t* out)
{
    // Alpha a under itself decodes to a / 255, so one table row serves all four channels.
    static const std::vector<std::uint16_t> table = [] {
        std::vector<std::uint16_t> t(256 * 256);
        const std::vector<float>& decoded = decodedTable();
        for (std::size_t i = 0; i < t.size(); ++i)
            t[i] = std::uint16_t(decoded[i] * 65535 + 0.5f);
        for (std::size_t a = 0; a < 256; ++a)
            t[a * 256 + a] = std::uint16_t(a * 257);
        return t;
    }();
    for (std::size_t i = linearlightkernels::decodeUnits(pixels, count, table.data(), out); i < count; ++i) {
        const std::uint8_t* p = pixels + 4 * i;
        const std::uint16_t* row = table.data() + std::size_t(p[3]) * 256;
        out[4 * i] = row[p[0]], out[4 * i + 1] = row[p[1]], out[4 * i + 2] = row[p[2]], out[4 * i + 3] = row[p[3]];
    }
}

namespace {

// One pixel of encodeRow. Values are held at 0 or above first, so adding a half and truncating
// rounds them.
void encodePixel(const float* p, bool srgb, const float* curve, std::uint8_t* q)
{
    const float a = held(p[3], 0, 1);
    const auto a8 = float(int(a * 255 + 0.5f));
    q[3] = std::uint8_t(a8);
    if (a8 == 0) {
        q[0] = q[1] = q[2] = 0;
        return;
    }
    if (srgb) {
        const float scale = kFineSteps / a;
        for (int c = 0; c < 3; ++c)
            q[c] = std::uint8_t(int(a8 * curve[int(held(p[c], 0, a) * scale + 0.5f)] + 0.5f));
    } else {
        for (int c = 0; c < 3; ++c)
            q[c] = std::uint8_t(int(std::min(held(p[c], 0, a) * 255, a8) + 0.5f));
    }
}

} // namespace

void encodeRow(const float* pixels, bool srgb, std::size_t count, std::uint8_t* out)
{
    const float* curve = fineSRGB().data();
    const std::size_t done = srgb ? linearlightkernels::encode(pixels, count, out) : 0;
    for (std::size_t i = done; i < count; ++i)
        encodePixel(pixels + 4 * i, srgb, curve, out + 4 * i);
}

void mapMatrixRow(const float m[9], const std::uint8_t* in, std::uint8_t* out, std::size_t count)
{
    const float* curve = fineSRGB().data();
    for (std::size_t i = linearlightkernels::mapMatrixBytes(m, decodedTable().data(), in, out, count); i < count; ++i) {
        float p[4];
        decodeRow(in + 4 * i, false, true, 1, p);
        const float r = p[0], g = p[1], b = p[2];
        for (int c = 0; c < 3; ++c)
            p[c] = m[3 * c] * r + m[3 * c + 1] * g + m[3 * c + 2] * b;
        encodePixel(p, true, curve, out + 4 * i);
    }
}

void encodeWindowSumsRow(
    const std::uint32_t* columns, std::size_t window, float scale, std::size_t count, std::uint8_t* out)
{
    const float* curve = fineSRGB().data();
    const std::size_t done = linearlightkernels::encodeWindowSums(columns, window, scale, count, out);
    std::uint32_t sums[4] = { 0, 0, 0, 0 };
    for (std::size_t t = 0; t < window; ++t)
        for (std::size_t c = 0; c < 4; ++c)
            sums[c] += columns[4 * (done + t) + c];
    for (std::size_t i = done; i < count; ++i) {
        float p[4];
        for (std::size_t c = 0; c < 4; ++c) {
            p[c] = float(sums[c]) * scale;
            if (i + 1 < count)
                sums[c] += columns[4 * (i + window) + c] - columns[4 * i + c];
        }
        encodePixel(p, true, curve, out + 4 * i);
    }
}

} // namespace kit::linearlight
