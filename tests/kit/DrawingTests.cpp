// Drawing into bitmap memory: exact-area coverage, the y-up flip, fill rules, paint modes and boxes.
#include "kit/BitmapContext.h"
#include "kit/CIContext.h"
#include "kit/CIImage.h"
#include "kit/GaussianBlur.h"
#include "kit/MutablePath.h"
#include "kit/ScanlineRasterizer.h"
#include "tests/support/CoverageReference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace {

using Polygon = std::vector<std::pair<double, double>>;

// Coverage comes rounded to 8 bits: the exact area to within half a step (and float rounding).
constexpr double kHalfStep = 0.5 / 255 + 1e-6;

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
    rasterizer.rasterize(rule, antialias, [&](int y, int x0, int x1, const std::uint8_t* c, std::uint8_t rest) {
        ASSERT_GE(x0, 0);
        ASSERT_LE(x0, x1);
        ASSERT_LE(x1, width);
        ASSERT_GE(y, 0);
        ASSERT_LT(y, height);
        for (int x = 0; x < width; ++x)
            out[std::size_t(y * width + x)] += x < x0 ? 0 : x < x1 ? c[x - x0] / 255.0f : rest / 255.0f;
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
        rasterizer.rasterize(rule, true, [&](int y, int x0, int x1, const std::uint8_t* c, std::uint8_t rest) {
            for (int x = x0; x < 10; ++x)
                out[std::size_t(y * 10 + x)] = (x < x1 ? c[x - x0] : rest) / 255.0f;
        });
        EXPECT_FLOAT_EQ(out[2 * 10 + 2], 1); // between the squares
        EXPECT_FLOAT_EQ(out[5 * 10 + 5], rule == kit::FillRule::NonZero ? 1 : 0) << "inside both";
        EXPECT_FLOAT_EQ(out[0], 0);
    }
}

// Lasso paths cross themselves: where they do, windings of 2, or of +1 beside -1, share pixels,
// and each such pixel must still be the area its fill rule counts. Random polygons over a clip
// they overflow, both rules, both directions, against sub-scanline measurement.
TEST(ScanlineRasterizer, SelfCrossingPolygonsCoverTheAreaTheirRuleCounts)
{
    std::mt19937 random(16);
    std::uniform_real_distribution<double> coordinate(-3, 27);
    std::uniform_int_distribution<int> corners(3, 32);
    double worst = 0;
    for (int shape = 0; shape < 150; ++shape) {
        Polygon polygon(std::size_t(corners(random)));
        for (auto& [x, y] : polygon)
            x = coordinate(random), y = coordinate(random);
        // Some vertices on the pixel grid, where pieces start and end on cell sides.
        if (shape % 4 == 0)
            for (auto& [x, y] : polygon)
                x = std::round(x), y = std::round(y);
        for (auto rule : { kit::FillRule::NonZero, kit::FillRule::EvenOdd }) {
            const auto got = coverage(polygon, 24, 24, rule, true);
            const auto want = coverage_reference::measure(polygon, 24, 24, rule == kit::FillRule::EvenOdd);
            for (std::size_t i = 0; i < got.size(); ++i) {
                worst = std::max(worst, std::fabs(got[i] - want[i]) * 255);
                ASSERT_NEAR(got[i], want[i], 2.0 / 255) << "shape " << shape << " pixel " << i % 24 << "," << i / 24
                                                        << (rule == kit::FillRule::EvenOdd ? " even-odd" : "");
            }
        }
    }
    RecordProperty("worstSteps", std::to_string(worst));
}

TEST(ScanlineRasterizer, WithoutAntialiasingAPixelIsInByItsCentre)
{
    // Edges at x = 2.4 and 5.6: centres 2.5 .. 5.5 are inside; rows by their centres likewise.
    const Polygon polygon = { { 2.4, 1.6 }, { 5.6, 1.6 }, { 5.6, 3.4 }, { 2.4, 3.4 } };
    const auto got = coverage(polygon, 8, 5, kit::FillRule::NonZero, false);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(got[std::size_t(y * 8 + x)], (x >= 2 && x <= 5 && y >= 2 && y <= 2) ? 1.0f : 0.0f)
                << x << "," << y;
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

TEST(ScanlineRasterizer, LongShallowEdgesHolesAndTheClipKeepExactAreas)
{
    // A star whose points reach past the left and right sides, with edges from nearly flat to
    // nearly vertical, and a square ring wider than the stretches the sweep skips: rows whose
    // middle no edge touches must keep the running value there (empty inside the ring).
    Polygon star;
    for (int i = 0; i < 22; ++i) {
        const double angle = 2 * M_PI * i / 22 + 0.05, radius = i % 2 ? 30 : 130;
        star.emplace_back(100.3 + radius * std::cos(angle), 40.6 + 0.35 * radius * std::sin(angle));
    }
    const auto got = coverage(star, 200, 80, kit::FillRule::NonZero, true);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 200; ++x)
            ASSERT_NEAR(got[std::size_t(y * 200 + x)], pixelArea(star, x, y), kHalfStep) << x << "," << y;

    // A sliver whose edges cross whole stretches of cells within one row.
    const Polygon sliver = { { 5.5, 10.2 }, { 190.25, 11.7 }, { 3.75, 11.9 } };
    const auto thin = coverage(sliver, 200, 16, kit::FillRule::NonZero, true);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 200; ++x)
            ASSERT_NEAR(thin[std::size_t(y * 200 + x)], pixelArea(sliver, x, y), kHalfStep) << x << "," << y;

    const Polygon outer = { { 2.5, 1.25 }, { 197.75, 1.25 }, { 197.75, 30.5 }, { 2.5, 30.5 } };
    const Polygon inner = { { 6.25, 4.5 }, { 6.25, 27.75 }, { 193.5, 27.75 }, { 193.5, 4.5 } }; // the other way round
    std::vector<double> xy;
    for (const Polygon* polygon : { &outer, &inner }) {
        for (auto [x, y] : *polygon) {
            xy.push_back(x);
            xy.push_back(y);
        }
    }
    kit::ScanlineRasterizer rasterizer;
    rasterizer.reset(200, 32);
    rasterizer.addPolygon(xy.data(), 4);
    rasterizer.addPolygon(xy.data() + 8, 4);
    std::vector<float> ring(200 * 32, 0);
    rasterizer.rasterize(
        kit::FillRule::NonZero, true, [&](int y, int x0, int x1, const std::uint8_t* c, std::uint8_t rest) {
            for (int x = x0; x < 200; ++x)
                ring[std::size_t(y * 200 + x)] = (x < x1 ? c[x - x0] : rest) / 255.0f;
        });
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 200; ++x)
            ASSERT_NEAR(ring[std::size_t(y * 200 + x)], pixelArea(outer, x, y) - pixelArea(inner, x, y), kHalfStep)
                << x << "," << y;
}

TEST(MutablePath, FindsAnAxisAlignedRectangleFromAnyCornerEitherWay)
{
    const kit::Point a { 1.5f, 2 }, b { 1.5f, 7.25f }, c { 9, 7.25f }, d { 9, 2 };
    const std::vector<std::vector<kit::Point>> rectangles = {
        { a, b, c, d }, { c, d, a, b }, { d, c, b, a }, { b, a, d, c },
        { a, b, c, d, a }, // closed by repeating the first corner
        { a, a, b, c, c, d }, // corners clicked twice
    };
    for (const auto& points : rectangles) {
        auto path = kit::MutablePath::create();
        path->addLines(nullptr, points.data(), int(points.size()));
        kit::Point low, high;
        ASSERT_TRUE(path->isAxisAlignedRectangle(low, high)) << points.size();
        EXPECT_EQ(low, a);
        EXPECT_EQ(high, c);
    }
    const kit::Point m { 5, 2 }, nan { NAN, 2 };
    const std::vector<std::vector<kit::Point>> others = {
        { a, c, b, d }, // the same corners crossed: a bow tie
        { a, b, c }, // a triangle
        { a, b, c, d, m }, // a fifth corner on a side
        { a, b, a, b }, // back and forth along a side
        { a, b, c, b }, // back along a side
        { a, { 1.5f, 2 }, { 9, 2 }, d }, // no height
        { a, b, c, nan },
        { a, { 1.5f, 7.25f }, { 9.5f, 7.25f }, d }, // a side off the axis
        { a, b, c, d, a, b },
    };
    for (const auto& points : others) {
        auto path = kit::MutablePath::create();
        path->addLines(nullptr, points.data(), int(points.size()));
        kit::Point low, high;
        EXPECT_FALSE(path->isAxisAlignedRectangle(low, high)) << points.size();
    }
    // Two subpaths are never one rectangle.
    auto two = kit::MutablePath::create();
    two->addLines(nullptr, rectangles[0].data(), 4);
    two->addLines(nullptr, rectangles[0].data(), 4);
    kit::Point low, high;
    EXPECT_FALSE(two->isAxisAlignedRectangle(low, high));
}

struct Canvas {
    explicit Canvas(int w, int h) : width(w), height(h), pixels(std::size_t(w * h * 4), 0)
    {
        auto space = kit::ColorSpace::createDeviceRGB();
        context = kit::BitmapContext::create(
            pixels.data(), w, h, 8, std::size_t(w) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    }
    const std::uint8_t* at(int column, int memoryRow) const
    {
        return &pixels[std::size_t((memoryRow * width + column) * 4)];
    }
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
    EXPECT_FALSE(
        kit::BitmapContext::create(memory.data(), 4, 4, 16, 16, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(kit::BitmapContext::create(memory.data(), 4, 4, 8, 12, space.get(), kit::ImageAlphaPremultipliedLast));
    EXPECT_FALSE(
        kit::BitmapContext::create(memory.data(), 4, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedFirst));
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

// Fills the pixels with a pattern that a fill over them must either keep or replace.
void scribble(Canvas& canvas, unsigned seed)
{
    std::mt19937 random(seed);
    for (std::size_t i = 0; i < canvas.pixels.size(); i += 4) {
        const auto alpha = std::uint8_t(random() % 256);
        for (int c = 0; c < 3; ++c)
            canvas.pixels[i + std::size_t(c)] = std::uint8_t(random() % (alpha + 1));
        canvas.pixels[i + 3] = alpha;
    }
}

TEST(BitmapContext, ClearAndFillPathIsClearRectThenFillPathInOnePass)
{
    // A concave shape reaching past three sides, in a colour and in white, over old pixels.
    const kit::Point shape[6] = { { -4, 3 }, { 30.5f, -2.25f }, { 12, 9.5f }, { 41, 17.75f }, { 6.5f, 21 }, { 9, 11 } };
    for (bool white : { false, true }) {
        Canvas a(37, 19), b(37, 19);
        scribble(a, 3);
        scribble(b, 3);
        for (Canvas* canvas : { &a, &b }) {
            canvas->context->setRGBFillColor(white ? 1 : 0.8f, white ? 1 : 0.3f, white ? 1 : 0.1f, white ? 1 : 0.7f);
            canvas->context->beginPath();
            canvas->context->moveToPoint(shape[0].x, shape[0].y);
            for (int i = 1; i < 6; ++i)
                canvas->context->addLineToPoint(shape[i].x, shape[i].y);
        }
        a.context->clearAndFillPath();
        auto path = kit::MutablePath::create();
        path->addLines(nullptr, shape, 6);
        b.context->clearRect(kit::Rect(0, 0, 37, 19));
        b.context->beginPath();
        b.context->addPath(*path);
        b.context->fillPath();
        EXPECT_TRUE(a.context->isPathEmpty());
        EXPECT_EQ(a.pixels, b.pixels) << (white ? "white" : "colour");
    }
}

// The exact blur of a box's coverage in double precision, straight from the definition: the
// area of each pixel inside the box, convolved in two dimensions with the sampled Gaussian,
// zero outside the bitmap. Memory rows top first.
std::vector<double> exactBlurredBox(int w, int h, double x0, double y0, double x1, double y1, double sigma)
{
    auto overlap = [](double from, double to, int p) {
        return std::max(0.0, std::min(to, p + 1.0) - std::max(from, double(p)));
    };
    std::vector<double> sharp(std::size_t(w * h));
    for (int row = 0; row < h; ++row)
        for (int x = 0; x < w; ++x)
            sharp[std::size_t(row * w + x)] = overlap(x0, x1, x) * overlap(y0, y1, h - 1 - row);
    if (sigma < kit::GaussianBlur::kIdentityBelow)
        return sharp;
    const int reach = int(std::ceil(12 * sigma)) + 2;
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += std::exp(-n * n / (2 * sigma * sigma));
    std::vector<double> out(sharp.size(), 0);
    for (int row = 0; row < h; ++row)
        for (int x = 0; x < w; ++x)
            for (int r = std::max(0, row - reach); r <= std::min(h - 1, row + reach); ++r)
                for (int c = std::max(0, x - reach); c <= std::min(w - 1, x + reach); ++c)
                    out[std::size_t(row * w + x)] += sharp[std::size_t(r * w + c)]
                        * std::exp(-((r - row) * (r - row) + (c - x) * (c - x)) / (2 * sigma * sigma)) / (sum * sum);
    return out;
}

TEST(BitmapContext, ABlurredBoxIsTheExactBlurOfItsCoverageRoundedOnce)
{
    struct Case {
        kit::Rect box;
        double sigma;
    };
    // Boxes inside, within one pixel, and cut by every side of the 23 x 17 bitmap; sigmas from
    // none through below the identity limit to wider than the bitmap.
    const std::vector<Case> cases = {
        { kit::Rect(3.25f, 2.5f, 11.5f, 9.75f), 0 },
        { kit::Rect(3.25f, 2.5f, 11.5f, 9.75f), 0.1 },
        { kit::Rect(3.25f, 2.5f, 11.5f, 9.75f), 0.5 },
        { kit::Rect(3.25f, 2.5f, 11.5f, 9.75f), 2.5 },
        { kit::Rect(7.2f, 8.1f, 0.5f, 0.25f), 1.5 },
        { kit::Rect(-4.5f, -3.25f, 14, 30), 3 },
        { kit::Rect(15.75f, 10.5f, 20, 20), 10 },
        { kit::Rect(0.5f, 0.5f, 22, 16), 100 },
    };
    for (const Case& c : cases) {
        Canvas canvas(23, 17);
        scribble(canvas, 11);
        canvas.context->setRGBFillColor(1, 1, 1, 1);
        ASSERT_TRUE(canvas.context->replaceWithBlurredBox(
            { c.box.minX(), c.box.minY() }, { c.box.maxX(), c.box.maxY() }, c.sigma));
        const auto exact = exactBlurredBox(23, 17, c.box.minX(), c.box.minY(), c.box.maxX(), c.box.maxY(), c.sigma);
        for (int row = 0; row < 17; ++row)
            for (int x = 0; x < 23; ++x) {
                const std::uint8_t* p = canvas.at(x, row);
                ASSERT_NEAR(p[3], 255 * exact[std::size_t(row * 23 + x)], 0.501)
                    << x << "," << row << " sigma " << c.sigma;
                ASSERT_TRUE(p[0] == p[3] && p[1] == p[3] && p[2] == p[3]) << "white stays grey";
            }
    }
}

TEST(BitmapContext, ABlurredBoxKeepsTheFillColourPremultipliedAndTheAntialiasingSwitch)
{
    // A colour: each byte is that byte of the premultiplied colour times the coverage.
    Canvas colour(12, 6);
    colour.context->setRGBFillColor(1, 0.5f, 0.25f, 0.5f); // premultiplied 128, 64, 32, 128
    ASSERT_TRUE(colour.context->replaceWithBlurredBox({ 2, 1 }, { 9.5f, 5 }, 0));
    const std::uint8_t expected[4] = { 64, 32, 16, 64 }; // half of pixel 9
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(colour.at(5, 2)[c], expected[c] * 2) << c;
        EXPECT_EQ(colour.at(9, 2)[c], expected[c]) << c;
        EXPECT_EQ(colour.at(11, 2)[c], 0) << c;
    }
    // Without antialiasing the box snaps to the pixels whose centres it holds, as fills do.
    Canvas box(12, 6), fill(12, 6);
    for (Canvas* canvas : { &box, &fill }) {
        canvas->context->setShouldAntialias(false);
        canvas->context->setRGBFillColor(1, 1, 1, 1);
    }
    ASSERT_TRUE(box.context->replaceWithBlurredBox({ 1.4f, 0.6f }, { 9.5f, 4.5f }, 0));
    fill.context->fillRect(kit::Rect(1.4f, 0.6f, 8.1f, 3.9f));
    EXPECT_EQ(box.pixels, fill.pixels);
}

TEST(BitmapContext, ABlurredBoxMatchesFillingAndBlurringThroughTheFilterWithinAStep)
{
    // The one-pass box against the general pipeline: fill, then the recursive blur through a
    // filter image, with the box cut by the bitmap's sides.
    for (double sigma : { 0.7, 2.5, 10.0 }) {
        Canvas box(41, 29), general(41, 29);
        const kit::Rect rect(-2.75f, 3.5f, 30.25f, 40);
        box.context->setRGBFillColor(1, 1, 1, 1);
        ASSERT_TRUE(box.context->replaceWithBlurredBox(rect.origin, { rect.maxX(), rect.maxY() }, sigma));
        general.context->setRGBFillColor(1, 1, 1, 1);
        general.context->fillRect(rect);
        auto space = kit::ColorSpace::createDeviceRGB();
        auto sharp
            = kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytes(general.pixels.data(), general.pixels.size()),
                41 * 4, { 41, 29 }, kit::CIFormatRGBA8, space.get());
        std::fill(general.pixels.begin(), general.pixels.end(), 0);
        auto ciContext = kit::CIContext::contextWithCGContextOptions(general.context.get(), nullptr);
        ASSERT_TRUE(ciContext->drawImageInRectFromRect(
            kit::CIImage::gaussianBlur(sharp, sigma).get(), kit::Rect(0, 0, 41, 29), kit::Rect(0, 0, 41, 29)));
        for (std::size_t i = 0; i < box.pixels.size(); ++i)
            ASSERT_NEAR(box.pixels[i], general.pixels[i], 1) << "byte " << i << " sigma " << sigma;
    }
}

// The separable blur of a plane in double precision with the sampled Gaussian normalised over
// all integers, zero outside the plane.
std::vector<double> exactBlurredPlane(const std::vector<double>& plane, int w, int h, double sigma)
{
    const int reach = int(std::ceil(12 * sigma)) + 2;
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += std::exp(-n * n / (2 * sigma * sigma));
    std::vector<double> weight(std::size_t(2 * reach + 1));
    for (int n = -reach; n <= reach; ++n)
        weight[std::size_t(n + reach)] = std::exp(-n * n / (2 * sigma * sigma)) / sum;
    auto pass = [&](const std::vector<double>& in, int along, int across, std::size_t step, std::size_t lineStep) {
        std::vector<double> out(in.size(), 0);
        for (int line = 0; line < across; ++line)
            for (int i = 0; i < along; ++i) {
                double value = 0;
                for (int k = std::max(0, i - reach); k <= std::min(along - 1, i + reach); ++k)
                    value += in[line * lineStep + std::size_t(k) * step] * weight[std::size_t(k - i + reach)];
                out[line * lineStep + std::size_t(i) * step] = value;
            }
        return out;
    };
    return pass(pass(plane, w, h, 1, std::size_t(w)), h, w, std::size_t(w), 1);
}

TEST(BitmapContext, AFeatheredFillIsTheExactBlurOfTheSharpFillWithinAStep)
{
    struct Shape {
        const char* name;
        int width, height; // the canvas, with the margins added unless `fixed`
        bool fixed;
        double largestSigma;
        std::function<void(kit::BitmapContext&, float)> add; // with the margin to leave
    };
    auto star = [](kit::BitmapContext& c, float cx, float cy, float outer, float inner) {
        for (int i = 0; i < 96; ++i) {
            const double angle = i * M_PI / 48;
            const float r = i % 2 ? inner : outer;
            const float x = cx + r * float(std::cos(angle)), y = cy + r * float(std::sin(angle));
            i == 0 ? c.moveToPoint(x, y) : c.addLineToPoint(x, y);
        }
        c.closePath();
    };
    // Sigmas from the identity through the full-size blur to every decimation step; the small
    // bitmaps are too small to hold the blur's working memory in their own pixels. The large
    // ellipse leaves tiles that the blur skips inside and outside it, down to the decimated
    // samples at sigma 10, so that the recursion restarts at their edges.
    const std::vector<double> sigmas = { 0.1, 2.5, 5, 10, 20, 40, 100 };
    const std::vector<Shape> shapes = {
        { "ellipse", 161, 161, false, 100,
            [](kit::BitmapContext& c, float m) { c.addEllipseInRect(kit::Rect(m, m + 0.5f, 150.5f, 111.25f)); } },
        { "large ellipse", 421, 401, false, 10,
            [](kit::BitmapContext& c, float m) { c.addEllipseInRect(kit::Rect(m + 0.25f, m, 420, 400.5f)); } },
        { "star", 161, 161, false, 100,
            [&](kit::BitmapContext& c, float m) { star(c, m + 80.25f, m + 80.5f, 80, 30); } },
        { "small ellipse", 9, 7, true, 100,
            [](kit::BitmapContext& c, float) { c.addEllipseInRect(kit::Rect(1.5f, 1.25f, 6, 4.5f)); } },
    };
    for (const Shape& shape : shapes)
        for (double sigma : sigmas) {
            if (sigma > shape.largestSigma)
                continue;
            // The rasteriser's margins: the shape starts 1 + sigma in and ends 2 + sigma before the end.
            const int margin = int(sigma) + 3;
            const int w = shape.width + (shape.fixed ? 0 : 2 * margin),
                      h = shape.height + (shape.fixed ? 0 : 2 * margin);
            Canvas sharp(w, h), soft(w, h);
            for (Canvas* canvas : { &sharp, &soft }) {
                canvas->context->setRGBFillColor(1, 1, 1, 1);
                shape.add(*canvas->context, float(margin));
            }
            sharp.context->clearAndFillPath();
            ASSERT_TRUE(soft.context->clearAndFillPathBlurred(sigma));
            std::vector<double> coverage(std::size_t(w * h));
            for (std::size_t i = 0; i < coverage.size(); ++i)
                coverage[i] = sharp.pixels[4 * i + 3];
            const auto exact
                = sigma < kit::GaussianBlur::kIdentityBelow ? coverage : exactBlurredPlane(coverage, w, h, sigma);
            double worst = 0;
            for (std::size_t i = 0; i < exact.size(); ++i) {
                const std::uint8_t* p = &soft.pixels[4 * i];
                ASSERT_TRUE(p[0] == p[3] && p[1] == p[3] && p[2] == p[3]) << "white stays grey";
                worst = std::max(worst, std::fabs(p[3] - exact[i]));
            }
            EXPECT_LE(worst, 1.0) << shape.name << " sigma " << sigma;
        }
}

TEST(BitmapContext, AFeatheredFillKeepsTheFillColourPremultiplied)
{
    for (double sigma : { 2.5, 20.0 }) {
        Canvas grey(90, 70), colour(90, 70);
        grey.context->setRGBFillColor(1, 1, 1, 1);
        colour.context->setRGBFillColor(1, 0.5f, 0.25f, 0.5f); // premultiplied 128, 64, 32, 128
        for (Canvas* canvas : { &grey, &colour }) {
            canvas->context->addEllipseInRect(kit::Rect(20, 15, 50, 40));
            ASSERT_TRUE(canvas->context->clearAndFillPathBlurred(sigma));
        }
        const double premultiplied[4] = { 128, 64, 32, 128 };
        for (std::size_t i = 0; i < grey.pixels.size(); ++i)
            ASSERT_NEAR(colour.pixels[i], premultiplied[i % 4] * grey.pixels[i - i % 4 + 3] / 255, 1) << i;
    }
}

} // namespace
