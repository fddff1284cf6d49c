// Drawing into bitmap memory: exact-area coverage, the y-up flip, fill rules and paint modes.
#include "kit/BitmapContext.h"
#include "kit/MutablePath.h"
#include "kit/ScanlineRasterizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using Polygon = std::vector<std::pair<double, double>>;

// Coverage below half an 8-bit step is not handed on; anything else must be exact to this.
constexpr double kHalfStep = 0.5 / 255;

// Area of a polygon clipped to the unit square at (px, py): Sutherland-Hodgman, then the
// shoelace formula. Exact for the convex test shapes, independent of the rasteriser.
double pixelArea(const Polygon& polygon, int px, int py)
{
    Polygon shape = polygon;
    auto clip = [&](auto inside, auto cross) {
        Polygon out;
        for (std::size_t i = 0; i < shape.size(); ++i) {
            const auto a = shape[i], b = shape[(i + 1) % shape.size()];
            if (inside(b)) {
                if (!inside(a))
                    out.push_back(cross(a, b));
                out.push_back(b);
            } else if (inside(a)) {
                out.push_back(cross(a, b));
            }
        }
        shape = out;
    };
    auto atX = [](double x) {
        return [x](std::pair<double, double> a, std::pair<double, double> b) {
            const double t = (x - a.first) / (b.first - a.first);
            return std::make_pair(x, a.second + t * (b.second - a.second));
        };
    };
    auto atY = [](double y) {
        return [y](std::pair<double, double> a, std::pair<double, double> b) {
            const double t = (y - a.second) / (b.second - a.second);
            return std::make_pair(a.first + t * (b.first - a.first), y);
        };
    };
    clip([&](auto p) { return p.first >= px; }, atX(px));
    clip([&](auto p) { return p.first <= px + 1; }, atX(px + 1));
    clip([&](auto p) { return p.second >= py; }, atY(py));
    clip([&](auto p) { return p.second <= py + 1; }, atY(py + 1));
    double area = 0;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const auto a = shape[i], b = shape[(i + 1) % shape.size()];
        area += a.first * b.second - b.first * a.second;
    }
    return std::fabs(area) / 2;
}

std::vector<float> coverage(const Polygon& polygon, int width, int height, kit::FillRule rule, bool antialias)
{
    std::vector<double> xy;
    for (auto [x, y] : polygon) {
        xy.push_back(x);
        xy.push_back(y);
    }
    kit::ScanlineRasterizer rasterizer;
    rasterizer.reset(width, height);
    rasterizer.addPolygon(xy.data(), polygon.size());
    std::vector<float> out(std::size_t(width * height), 0);
    rasterizer.rasterize(rule, antialias, [&](int y, int x0, int x1, float c, const float* perPixel) {
        ASSERT_GE(x0, 0);
        ASSERT_LE(x1, width);
        ASSERT_GE(y, 0);
        ASSERT_LT(y, height);
        for (int x = x0; x < x1; ++x)
            out[std::size_t(y * width + x)] += perPixel ? perPixel[x - x0] : c;
    });
    return out;
}

TEST(ScanlineRasterizer, CoverageIsTheExactAreaOfConvexShapesInEveryPixel)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-3, 19);
    for (int shape = 0; shape < 40; ++shape) {
        // A triangle, or a quadrilateral made convex by taking points around a centre.
        Polygon polygon;
        const int corners = 3 + shape % 2;
        const double cx = coordinate(random), cy = coordinate(random);
        for (int i = 0; i < corners; ++i) {
            const double angle = 2 * M_PI * (i + 0.3 * std::uniform_real_distribution<double>(0, 1)(random)) / corners;
            const double radius = std::uniform_real_distribution<double>(0.3, 9)(random);
            polygon.emplace_back(cx + radius * std::cos(angle), cy + radius * std::sin(angle));
        }
        if (shape % 3 == 0)
            std::reverse(polygon.begin(), polygon.end()); // the other winding direction
        const auto got = coverage(polygon, 16, 16, kit::FillRule::NonZero, true);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                ASSERT_NEAR(got[std::size_t(y * 16 + x)], pixelArea(polygon, x, y), kHalfStep)
                    << "shape " << shape << " pixel " << x << "," << y;
    }
}

TEST(ScanlineRasterizer, FillRulesDifferOnlyWhereWindingsOverlap)
{
    // Two squares drawn the same way round, the second inside the first.
    std::vector<double> outer = { 1, 1, 9, 1, 9, 9, 1, 9 }, inner = { 3, 3, 7, 3, 7, 7, 3, 7 };
    for (auto rule : { kit::FillRule::NonZero, kit::FillRule::EvenOdd }) {
        kit::ScanlineRasterizer rasterizer;
        rasterizer.reset(10, 10);
        rasterizer.addPolygon(outer.data(), 4);
        rasterizer.addPolygon(inner.data(), 4);
        std::vector<float> out(100, 0);
        rasterizer.rasterize(rule, true, [&](int y, int x0, int x1, float c, const float* perPixel) {
            for (int x = x0; x < x1; ++x)
                out[std::size_t(y * 10 + x)] = perPixel ? perPixel[x - x0] : c;
        });
        EXPECT_FLOAT_EQ(out[2 * 10 + 2], 1); // between the squares
        EXPECT_FLOAT_EQ(out[5 * 10 + 5], rule == kit::FillRule::NonZero ? 1 : 0) << "inside both";
        EXPECT_FLOAT_EQ(out[0], 0);
    }
}

TEST(ScanlineRasterizer, WithoutAntialiasingAPixelIsInByItsCentre)
{
    // Edges at x = 2.4 and 5.6: centres 2.5 .. 5.5 are inside; rows by their centres likewise.
    const Polygon polygon = { { 2.4, 1.6 }, { 5.6, 1.6 }, { 5.6, 3.4 }, { 2.4, 3.4 } };
    const auto got = coverage(polygon, 8, 5, kit::FillRule::NonZero, false);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(got[std::size_t(y * 8 + x)], (x >= 2 && x <= 5 && y >= 2 && y <= 2) ? 1.0f : 0.0f) << x << "," << y;
}

TEST(ScanlineRasterizer, ShapesBeyondTheClipKeepTheAreaInsideIt)
{
    // A wide triangle mostly outside: the visible pixels still get their exact share.
    const Polygon polygon = { { -40, -3 }, { 30, 5 }, { -20, 12 } };
    const auto got = coverage(polygon, 10, 10, kit::FillRule::NonZero, true);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x)
            ASSERT_NEAR(got[std::size_t(y * 10 + x)], pixelArea(polygon, x, y), kHalfStep) << x << "," << y;
}

struct Canvas {
    explicit Canvas(int w, int h) : width(w), height(h), pixels(std::size_t(w * h * 4), 0)
    {
        auto space = kit::ColorSpace::createDeviceRGB();
        context = kit::BitmapContext::create(pixels.data(), w, h, 8, std::size_t(w) * 4, space.get(),
                                             kit::ImageAlphaPremultipliedLast);
    }
    const std::uint8_t* at(int column, int memoryRow) const { return &pixels[std::size_t((memoryRow * width + column) * 4)]; }
    int width, height;
    std::vector<std::uint8_t> pixels;
    kit::RefPtr<kit::BitmapContext> context;
};

TEST(BitmapContext, RefusesLayoutsOtherThanPremultipliedRGBA8)
{
    std::vector<std::uint8_t> memory(64);
    auto space = kit::ColorSpace::createDeviceRGB();
    EXPECT_TRUE(kit::BitmapContext::create(memory.data(), 4, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(kit::BitmapContext::create(nullptr, 4, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(kit::BitmapContext::create(memory.data(), 4, 4, 16, 16, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(kit::BitmapContext::create(memory.data(), 4, 4, 8, 12, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(kit::BitmapContext::create(memory.data(), 4, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedFirst));
    EXPECT_FALSE(kit::BitmapContext::create(memory.data(), 0, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_EQ(kit::ImageAlphaPremultipliedLast, 1u);
}

TEST(BitmapContext, DrawingSpaceHasYUpAndMemoryKeepsTheTopRowFirst)
{
    Canvas canvas(3, 4);
    canvas.context->setRGBFillColor(1, 0, 0, 1);
    canvas.context->fillRect(kit::Rect(0, 0, 1, 1)); // the bottom-left pixel
    canvas.context->setRGBFillColor(0, 0, 1, 1);
    canvas.context->fillRect(kit::Rect(2, 3, 1, 1)); // the top-right pixel
    EXPECT_EQ(canvas.at(0, 3)[0], 255);
    EXPECT_EQ(canvas.at(0, 3)[3], 255);
    EXPECT_EQ(canvas.at(2, 0)[2], 255);
    int painted = 0;
    for (std::size_t i = 3; i < canvas.pixels.size(); i += 4)
        painted += canvas.pixels[i] != 0;
    EXPECT_EQ(painted, 2);
}

TEST(BitmapContext, FillsArePremultipliedAndCompositedSourceOver)
{
    Canvas canvas(2, 1);
    canvas.context->setRGBFillColor(1, 0.5f, 0, 0.5f);
    canvas.context->fillRect(kit::Rect(0, 0, 2, 1));
    EXPECT_EQ(canvas.at(0, 0)[0], 128);
    EXPECT_EQ(canvas.at(0, 0)[1], 64);
    EXPECT_EQ(canvas.at(0, 0)[2], 0);
    EXPECT_EQ(canvas.at(0, 0)[3], 128);
    // Half-transparent white over that: each byte becomes s + d x (1 - 0.5).
    canvas.context->setRGBFillColor(1, 1, 1, 0.5f);
    canvas.context->fillRect(kit::Rect(1, 0, 1, 1));
    EXPECT_EQ(canvas.at(1, 0)[0], 192);
    EXPECT_EQ(canvas.at(1, 0)[1], 160);
    EXPECT_EQ(canvas.at(1, 0)[3], 192);
}

TEST(BitmapContext, AntialiasingNeedsBothSwitches)
{
    for (int mode = 0; mode < 4; ++mode) {
        Canvas canvas(4, 1);
        canvas.context->setAllowsAntialiasing(mode & 1);
        canvas.context->setShouldAntialias(mode & 2);
        canvas.context->setRGBFillColor(1, 1, 1, 1);
        canvas.context->fillRect(kit::Rect(0.5f, 0, 2.25f, 1)); // half of pixel 0, pixel 1, 3/4 of pixel 2
        if (mode == 3) {
            EXPECT_EQ(canvas.at(0, 0)[3], 128);
            EXPECT_EQ(canvas.at(1, 0)[3], 255);
            EXPECT_EQ(canvas.at(2, 0)[3], 191);
        } else {
            // By centres: 0.5, 1.5 and 2.5 lie in [0.5, 2.75), 3.5 does not.
            EXPECT_EQ(canvas.at(0, 0)[3], 255) << mode;
            EXPECT_EQ(canvas.at(1, 0)[3], 255) << mode;
            EXPECT_EQ(canvas.at(2, 0)[3], 255) << mode;
            EXPECT_EQ(canvas.at(3, 0)[3], 0) << mode;
        }
    }
}

TEST(BitmapContext, PathsBuiltWithATranslationFillWhereTheTranslationPutsThem)
{
    Canvas canvas(6, 6);
    const kit::Point square[4] = { { 10, 10 }, { 10, 12 }, { 12, 12 }, { 12, 10 } };
    auto path = kit::MutablePath::create();
    const auto move = kit::AffineTransformMakeTranslation(-8, -9);
    path->addLines(&move, square, 4); // not closed: the fill closes it
    canvas.context->beginPath();
    canvas.context->addPath(*path);
    canvas.context->setRGBFillColor(1, 1, 1, 1);
    canvas.context->fillPath();
    EXPECT_TRUE(canvas.context->isPathEmpty());
    // x 2..4, y 1..3 (y up) is memory rows 3 and 4, columns 2 and 3.
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 6; ++column)
            EXPECT_EQ(canvas.at(column, row)[3], (row == 3 || row == 4) && (column == 2 || column == 3) ? 255 : 0)
                << column << "," << row;
}

TEST(BitmapContext, EllipsesCoverWhatASupersampledEllipseCovers)
{
    Canvas canvas(24, 16);
    canvas.context->setRGBFillColor(1, 1, 1, 1);
    const kit::Rect box(2.5f, 1.25f, 19, 13.5f);
    canvas.context->fillEllipseInRect(box);
    const double cx = 2.5 + 9.5, cy = 1.25 + 6.75, rx = 9.5, ry = 6.75;
    constexpr int kSamples = 64;
    for (int row = 0; row < 16; ++row) {
        for (int column = 0; column < 24; ++column) {
            const double y0 = 16 - row - 1; // the flip, in the test's own terms
            int inside = 0;
            for (int i = 0; i < kSamples; ++i)
                for (int j = 0; j < kSamples; ++j) {
                    const double x = column + (i + 0.5) / kSamples, y = y0 + (j + 0.5) / kSamples;
                    inside += ((x - cx) * (x - cx)) / (rx * rx) + ((y - cy) * (y - cy)) / (ry * ry) <= 1;
                }
            // Supersampling itself is only good to about a sample row along the curve.
            EXPECT_NEAR(canvas.at(column, row)[3], 255.0 * inside / (kSamples * kSamples), 3.0) << column << "," << row;
        }
    }
}

TEST(BitmapContext, EvenOddLeavesTheInnerSquareOpen)
{
    Canvas canvas(10, 10);
    canvas.context->setRGBFillColor(1, 1, 1, 1);
    canvas.context->addRect(kit::Rect(1, 1, 8, 8));
    canvas.context->addRect(kit::Rect(3, 3, 4, 4));
    canvas.context->eoFillPath();
    EXPECT_EQ(canvas.at(5, 5)[3], 0);
    EXPECT_EQ(canvas.at(2, 2)[3], 255);
}

TEST(BitmapContext, ClearRectMakesPixelsTransparentEvenOnPartialEdges)
{
    Canvas canvas(4, 1);
    canvas.context->setRGBFillColor(1, 1, 1, 1);
    canvas.context->fillRect(kit::Rect(0, 0, 4, 1));
    canvas.context->clearRect(kit::Rect(1, 0, 1.5f, 1));
    EXPECT_EQ(canvas.at(0, 0)[3], 255);
    EXPECT_EQ(canvas.at(1, 0)[0], 0);
    EXPECT_EQ(canvas.at(1, 0)[3], 0);
    EXPECT_NEAR(canvas.at(2, 0)[3], 127.5, 0.5);
    EXPECT_EQ(canvas.at(3, 0)[3], 255);
}

} // namespace
