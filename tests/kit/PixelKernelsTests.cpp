// Pixel kernels: the vectorised coverage painters and writers against plain per-byte arithmetic.
#include "kit/PixelKernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

unsigned divideBy255(unsigned v) { return unsigned(std::lround(v / 255.0)); }

// Source over of colour x coverage, one byte at a time, as a painter would write it by hand.
std::vector<std::uint8_t> paintedByHand(const std::vector<std::uint8_t>& coverage, const std::uint8_t colour[4],
    bool clear, std::vector<std::uint8_t> pixels)
{
    for (std::size_t i = 0; i < coverage.size(); ++i) {
        const unsigned cover = coverage[i];
        std::uint8_t* p = &pixels[4 * i];
        if (cover == 0)
            continue;
        unsigned s[4];
        for (int c = 0; c < 4; ++c)
            s[c] = divideBy255(colour[c] * cover);
        for (int c = 0; c < 4; ++c)
            p[c] = std::uint8_t(
                clear ? divideBy255(p[c] * (255 - cover)) : std::min(255u, s[c] + divideBy255(p[c] * (255 - s[3]))));
    }
    return pixels;
}

// Runs of empty, full and partial coverage over runs of clear and old pixels, with lengths that
// straddle every vector width and leave a tail.
struct Scene {
    std::vector<std::uint8_t> coverage, pixels;
    explicit Scene(unsigned seed)
    {
        std::mt19937 random(seed);
        const std::size_t count = 301;
        coverage.resize(count);
        pixels.assign(count * 4, 0);
        for (std::size_t i = 0; i < count;) {
            const std::size_t run = 1 + random() % 40;
            const int kind = int(random() % 3);
            for (std::size_t j = i; j < std::min(count, i + run); ++j)
                coverage[j] = std::uint8_t(kind == 0 ? 0 : kind == 1 ? 255 : random() % 256);
            i += run;
        }
        for (std::size_t i = 0; i < count;) {
            const std::size_t run = 1 + random() % 50;
            const bool old = random() % 2;
            for (std::size_t j = i; j < std::min(count, i + run); ++j) {
                const auto alpha = std::uint8_t(old ? random() % 256 : 0);
                for (int c = 0; c < 3; ++c)
                    pixels[4 * j + std::size_t(c)] = std::uint8_t(old ? random() % (alpha + 1) : 0);
                pixels[4 * j + 3] = alpha;
            }
            i += run;
        }
    }
};

const std::uint8_t kColours[][4]
    = { { 255, 255, 255, 255 }, { 128, 128, 128, 128 }, { 200, 40, 0, 255 }, { 90, 10, 60, 120 } };

TEST(PixelKernels, PaintingCoverageIsSourceOverByteForByte)
{
    for (unsigned seed = 0; seed < 6; ++seed) {
        for (const auto& colour : kColours) {
            for (bool clear : { false, true }) {
                Scene scene(seed);
                const auto expected = paintedByHand(scene.coverage, colour, clear, scene.pixels);
                kit::pixelkernels::paintCoverage(
                    scene.coverage.data(), colour, clear, scene.pixels.data(), scene.coverage.size());
                ASSERT_EQ(scene.pixels, expected)
                    << "seed " << seed << " colour " << int(colour[0]) << " clear " << clear;
            }
        }
    }
}

TEST(PixelKernels, WritingCoverageIsPaintingOverTransparentBlackWithoutReading)
{
    for (unsigned seed = 0; seed < 6; ++seed) {
        for (const auto& colour : kColours) {
            Scene scene(seed);
            const auto expected
                = paintedByHand(scene.coverage, colour, false, std::vector<std::uint8_t>(scene.pixels.size(), 0));
            kit::pixelkernels::writeCoverage(scene.coverage.data(), colour, scene.pixels.data(), scene.coverage.size());
            ASSERT_EQ(scene.pixels, expected) << "seed " << seed << " colour " << int(colour[0]);
        }
    }
}

TEST(PixelKernels, WritingValuesIsCompositingThemOverTransparentBlack)
{
    for (bool grey : { true, false }) {
        Scene scene(9);
        std::vector<std::uint8_t> expected(scene.pixels.size(), 0);
        kit::pixelkernels::compositeValuesOver(scene.coverage.data(), grey, expected.data(), scene.coverage.size());
        kit::pixelkernels::writeValues(scene.coverage.data(), grey, scene.pixels.data(), scene.coverage.size());
        ASSERT_EQ(scene.pixels, expected) << grey;
        for (std::size_t i = 0; i < scene.coverage.size(); ++i)
            ASSERT_EQ(scene.pixels[4 * i + 3], scene.coverage[i]);
    }
}

TEST(PixelKernels, ScaledColourIsEachByteTimesBothFactorsRoundedToNearest)
{
    std::mt19937 random(5);
    std::vector<float> columns(157);
    for (float& c : columns)
        c = std::uniform_real_distribution<float>(0, 1)(random);
    columns[3] = 0;
    columns[4] = 1;
    for (const auto& colour : kColours) {
        for (float row : { 0.0f, 0.37f, 1.0f }) {
            std::vector<std::uint8_t> pixels(columns.size() * 4, 77);
            kit::pixelkernels::writeScaledColour(columns.data(), row, colour, pixels.data(), columns.size());
            for (std::size_t i = 0; i < columns.size(); ++i)
                for (int c = 0; c < 4; ++c) {
                    const double exact = colour[c] * double(columns[i]) * row;
                    // Nearest, except that a product within float rounding of a half may go either way.
                    ASSERT_LE(std::fabs(pixels[4 * i + std::size_t(c)] - exact), 0.5 + 1e-4)
                        << i << " byte " << c << " row " << row;
                }
        }
    }
}

} // namespace
