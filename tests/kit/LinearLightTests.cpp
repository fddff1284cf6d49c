// Linear light: the computed decoding and encoding against the sRGB curve in double, over every input.
#include "kit/LinearLight.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

double toLinear(double u) { return u <= 0.04045 ? u / 12.92 : std::pow((u + 0.055) / 1.055, 2.4); }
double toSRGB(double v) { return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055; }

TEST(LinearLight, EveryByteDecodesToTheCurveUnderAnyAlpha)
{
    // Every colour byte in runs of opaque pixels, with a translucent pixel in some vectors, and
    // one transparent: opaque runs are computed, the others read.
    std::vector<std::uint8_t> rgba;
    for (int v = 0; v < 256; ++v) {
        const int a = v % 9 == 4 ? 128 : v % 23 == 3 ? 0 : 255;
        const auto c = [&](int x) { return std::uint8_t(x * a / 255); };
        rgba.insert(rgba.end(), { c(v), c(255 - v), c(v * 7 % 256), std::uint8_t(a) });
    }
    const std::size_t count = rgba.size() / 4;
    std::vector<float> floats(4 * count);
    std::vector<std::uint16_t> units(4 * count);
    kit::linearlight::decodeRow(rgba.data(), false, true, count, floats.data());
    kit::linearlight::decodeUnitsRow(rgba.data(), count, units.data());
    for (std::size_t i = 0; i < rgba.size(); ++i) {
        const double a = rgba[i | 3] / 255.0;
        const double exact = i % 4 == 3 ? a : a == 0 ? 0 : a * toLinear(rgba[i] / 255.0 / a);
        ASSERT_NEAR(floats[i], exact, 3e-6) << "pixel " << i / 4 << " channel " << i % 4;
        ASSERT_NEAR(units[i], exact * 65535, 0.7) << "pixel " << i / 4 << " channel " << i % 4;
    }
}

TEST(LinearLight, EveryUnitOfLinearLightEncodesToTheNearestByteUnderAnyAlpha)
{
    // All 65536 values of colour over alpha, opaque (no division) and under two alphas.
    for (double alpha : { 1.0, 0.5, 20 / 255.0 }) {
        const auto a8 = double(std::lround(alpha * 255));
        std::vector<float> floats;
        std::vector<std::uint32_t> sums;
        for (std::uint32_t v = 0; v <= 65535; ++v) {
            const auto value = float(v / 65535.0 * alpha);
            floats.insert(floats.end(), { value, value, value, float(alpha) });
            const auto sum = std::uint32_t(std::lround(v * alpha));
            sums.insert(sums.end(), { sum, sum, sum, std::uint32_t(std::lround(alpha * 65535)) });
        }
        const std::size_t count = floats.size() / 4;
        std::vector<std::uint8_t> encoded(4 * count), encodedSums(4 * count);
        kit::linearlight::encodeRow(floats.data(), true, count, encoded.data());
        kit::linearlight::encodeWindowSumsRow(sums.data(), 1, float(1 / 65535.0), count, encodedSums.data());
        for (std::size_t i = 0; i < count; ++i) {
            // Within 0.04 of a step of the curve before rounding, so the nearest byte but for
            // values that close to a half.
            const double exact = a8 * toSRGB(floats[4 * i] / alpha);
            ASSERT_NEAR(encoded[4 * i], exact, 0.54) << "alpha " << alpha << " value " << i;
            ASSERT_EQ(encoded[4 * i + 3], a8) << "alpha " << alpha << " value " << i;
            const double exactSum = a8 * toSRGB(std::min(1.0, sums[4 * i] / double(sums[4 * i + 3])));
            ASSERT_NEAR(encodedSums[4 * i], exactSum, 0.54) << "alpha " << alpha << " sum " << sums[4 * i];
        }
    }
}

TEST(LinearLight, SumsOverAWindowEncodeAsTheirMean)
{
    // Premultiplied columns in units, opaque runs among translucent pixels; every window from a
    // pixel to three vectors wide, over rows whose ends fall anywhere in a vector.
    std::mt19937 random(5);
    std::vector<std::uint32_t> columns;
    for (int i = 0; i < 400; ++i) {
        const std::uint32_t a = (i / 16) % 3 ? 65535 : std::uint32_t(random() % 65536);
        for (int c = 0; c < 3; ++c)
            columns.push_back(std::uint32_t(random() % (a + 1)));
        columns.push_back(a);
    }
    for (std::size_t window : { 1, 2, 5, 12 }) {
        const std::size_t count = columns.size() / 4 - window + 1 - window % 4;
        const float scale = float(1 / (65535.0 * double(window)));
        std::vector<std::uint8_t> out(4 * count);
        kit::linearlight::encodeWindowSumsRow(columns.data(), window, scale, count, out.data());
        for (std::size_t i = 0; i < count; ++i) {
            double sums[4] = { 0, 0, 0, 0 };
            for (std::size_t t = 0; t < window; ++t)
                for (std::size_t c = 0; c < 4; ++c)
                    sums[c] += columns[4 * (i + t) + c];
            const double a8 = out[4 * i + 3];
            ASSERT_NEAR(a8, sums[3] / (65535.0 * double(window)) * 255, 0.5) << "window " << window << " pixel " << i;
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_NEAR(out[4 * i + c], a8 * toSRGB(sums[c] / sums[3]), 0.54)
                    << "window " << window << " pixel " << i << " channel " << c;
        }
    }
}

} // namespace
