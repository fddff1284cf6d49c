// The shape-to-mask rasteriser: buffer geometry, pixels, feathering, and refused input.
#include "Classes/Selection/GraphicsToBuffer.h"
#include "Classes/Selection/GraphicsToBufferInternals.h"
#include "kit/MemoryRecycler.h"
#include "tests/support/ChildPeak.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace {

constexpr COLOR_STRUCT kWhite { 255, 255, 255, 255 };
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// A buffer that frees itself; starts with values a refusal must leave alone.
struct Mask {
    IMAGE_BUFFER buffer { -7, -7, nullptr };
    kit::Point origin { -7, -7 };
    ~Mask() { DestroyImageBuffer(buffer); }
    const unsigned char* pixel(int column, int row) const { return buffer.pData + (row * buffer.nWidth + column) * 4; }
    bool untouched() const
    {
        return buffer.nWidth == -7 && buffer.nHeight == -7 && !buffer.pData && origin == kit::Point { -7, -7 };
    }
};

int rect(Mask& m, kit::Rect r, float feather)
{
    return CreateImageBufferFromRect(m.buffer, m.origin, r, kWhite, true, kWhite, feather);
}
int ellipse(Mask& m, kit::Rect r, float feather)
{
    return CreateImageBufferFromEllipse(m.buffer, m.origin, r, kWhite, true, kWhite, feather);
}
int polygon(Mask& m, const std::vector<kit::Point>& v, float feather)
{
    return CreateImageBufferFromPolygon(m.buffer, m.origin, v.data(), int(v.size()), kWhite, true, kWhite, feather);
}

TEST(RectangleMask, SharpRectangleIsExactByteForByte)
{
    Mask m;
    ASSERT_EQ(rect(m, kit::Rect(10, 20, 30, 40), 0), 0);
    EXPECT_EQ(m.origin, (kit::Point { 9, 19 }));
    ASSERT_EQ(m.buffer.nWidth, 33);
    ASSERT_EQ(m.buffer.nHeight, 43);
    // Memory row j is layer row 19 + j: columns 1 .. 30 of memory rows 1 .. 40 are opaque white,
    // the layer pixels x 10 .. 39, y 20 .. 59, exactly the rectangle. One empty row and column
    // before it, two after it.
    for (int row = 0; row < 43; ++row)
        for (int column = 0; column < 33; ++column) {
            const unsigned char expected = column >= 1 && column <= 30 && row >= 1 && row <= 40 ? 255 : 0;
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(m.pixel(column, row)[c], expected) << column << "," << row << " byte " << c;
        }
}

TEST(RectangleMask, FeatherMovesTheOriginAndWidensTheBufferAndBlursTheEdges)
{
    Mask sharp, soft;
    ASSERT_EQ(rect(sharp, kit::Rect(10, 20, 30, 40), 0), 0);
    ASSERT_EQ(rect(soft, kit::Rect(10, 20, 30, 40), 2.5f), 0);
    EXPECT_EQ(soft.origin, (kit::Point { 6.5f, 16.5f }));
    EXPECT_EQ(soft.buffer.nWidth, 38);
    EXPECT_EQ(soft.buffer.nHeight, 48);
    // The shape sits 2.5 pixels further in; its middle stays opaque, its edges soften, and the
    // blur of a white mask stays white premultiplied.
    EXPECT_EQ(soft.pixel(19, 24)[3], 255);
    const int edgeAlpha = soft.pixel(4, 24)[3]; // x 10.5 in layer space: just inside the left edge
    EXPECT_GT(edgeAlpha, 100);
    EXPECT_LT(edgeAlpha, 200);
    EXPECT_GT(soft.pixel(0, 24)[3], 0);
    for (int i = 0; i < 38 * 48; ++i)
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(soft.buffer.pData[4 * i + c], soft.buffer.pData[4 * i + 3]);
}

TEST(RectangleMask, BoundsAreTruncatedTowardZero)
{
    Mask m;
    ASSERT_EQ(rect(m, kit::Rect(10.6f, 20, 30, 40), 0), 0);
    EXPECT_EQ(m.origin.x, 9); // bounds 10 and 40
    EXPECT_EQ(m.buffer.nWidth, 33);
    // Toward zero, not down: x = -2.5 counts as -2.
    Mask n;
    ASSERT_EQ(polygon(n, { { -2.5f, 0 }, { 10, 0 }, { 10, 5 } }, 0), 0);
    EXPECT_EQ(n.origin.x, -3);
    EXPECT_EQ(n.buffer.nWidth, 10 + 3 + 2);
}

// The same rectangle as a polygon with a fifth vertex in the middle of its lower side: the same
// bounds and the same shape, but not four corners, so it goes the general way (fill, then the
// feather step's blur).
std::vector<kit::Point> withMiddleVertex(kit::Rect r)
{
    const float x = r.x(), y = r.y(), w = r.width(), h = r.height();
    return { { x, y }, { x, y + h }, { x + w, y + h }, { x + w, y }, { x + w / 2, y } };
}

const std::vector<kit::Rect> kRectangles = {
    kit::Rect(10, 20, 30, 40), kit::Rect(10.3f, 20.75f, 29.5f, 17.25f), kit::Rect(-12.6f, -3.2f, 21.1f, 8.7f),
    kit::Rect(4.2f, 5.5f, 0.5f, 0.25f), // within one pixel
};

TEST(RectangleMask, ThePassOverEachPixelOnceMatchesFillingAndFeatheringWithinAStep)
{
    for (const kit::Rect& r : kRectangles) {
        for (float feather : { 0.0f, 0.5f, 2.5f, 10.0f, 100.0f }) {
            Mask once, general;
            ASSERT_EQ(rect(once, r, feather), 0);
            ASSERT_EQ(polygon(general, withMiddleVertex(r), feather), 0);
            EXPECT_EQ(once.origin, general.origin);
            ASSERT_EQ(once.buffer.nWidth, general.buffer.nWidth);
            ASSERT_EQ(once.buffer.nHeight, general.buffer.nHeight);
            const int bytes = once.buffer.nWidth * once.buffer.nHeight * 4;
            for (int i = 0; i < bytes; ++i)
                ASSERT_NEAR(once.buffer.pData[i], general.buffer.pData[i], 1)
                    << "byte " << i << " of " << r.x() << " " << r.y() << " " << r.width() << " " << r.height()
                    << " feather " << feather;
        }
    }
}

// The exact blur of the coverage of [from, to) along a line of `length` pixels, zero outside,
// summed in double precision from the definition.
std::vector<double> exactLine(int length, double from, double to, double sigma)
{
    std::vector<double> sharp(static_cast<std::size_t>(length));
    for (int p = 0; p < length; ++p)
        sharp[std::size_t(p)] = std::max(0.0, std::min(to, p + 1.0) - std::max(from, double(p)));
    if (sigma < 0.16)
        return sharp;
    const int reach = int(std::ceil(12 * sigma)) + 2;
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += std::exp(-double(n) * n / (2 * sigma * sigma));
    std::vector<double> out(std::size_t(length), 0);
    for (int x = 0; x < length; ++x)
        for (int p = std::max(0, x - reach); p <= std::min(length - 1, x + reach); ++p)
            out[std::size_t(x)]
                += std::exp(-double(p - x) * (p - x) / (2 * sigma * sigma)) / sum * sharp[std::size_t(p)];
    return out;
}

TEST(RectangleMask, FeatheredRectanglesAreTheExactGaussianRoundedOnce)
{
    // A rectangle's mask is the product of its blurred coverage along x and along y: every
    // pixel must be that product rounded to 8 bits (half a step, and float rounding).
    for (const kit::Rect& r : kRectangles) {
        for (float feather : { 0.0f, 0.5f, 2.5f, 10.0f, 100.0f }) {
            Mask m;
            ASSERT_EQ(rect(m, r, feather), 0);
            const int w = m.buffer.nWidth, h = m.buffer.nHeight;
            const double sigma = feather;
            const auto across = exactLine(w, double(r.minX()) - m.origin.x, double(r.maxX()) - m.origin.x, sigma);
            const auto down = exactLine(h, double(r.minY()) - m.origin.y, double(r.maxY()) - m.origin.y, sigma);
            for (int row = 0; row < h; ++row)
                for (int column = 0; column < w; ++column) {
                    const double exact = 255 * across[std::size_t(column)] * down[std::size_t(row)];
                    ASSERT_NEAR(m.pixel(column, row)[3], exact, 0.501)
                        << column << "," << row << " feather " << feather;
                }
        }
    }
}

TEST(PolygonMask, ARectangleClickedOutAsALassoIsTheRectangleFromAnyCornerEitherWay)
{
    const kit::Rect r(10.3f, 20.75f, 29.5f, 17.25f);
    const kit::Point a { r.minX(), r.minY() }, b { r.minX(), r.maxY() }, c { r.maxX(), r.maxY() },
        d { r.maxX(), r.minY() };
    Mask reference;
    ASSERT_EQ(rect(reference, r, 2.5f), 0);
    const std::size_t bytes = std::size_t(reference.buffer.nWidth * reference.buffer.nHeight * 4);
    for (const auto& corners :
        std::vector<std::vector<kit::Point>> { { c, d, a, b }, { d, c, b, a }, { a, b, c, d, a } }) {
        Mask m;
        ASSERT_EQ(polygon(m, corners, 2.5f), 0);
        ASSERT_EQ(m.buffer.nWidth, reference.buffer.nWidth);
        EXPECT_EQ(0, std::memcmp(m.buffer.pData, reference.buffer.pData, bytes));
    }
    // The same corners crossed are an hourglass: two triangles on the upper and lower sides
    // meeting in the middle, with the middle of the left and right sides left open.
    Mask hourglass;
    ASSERT_EQ(polygon(hourglass, { a, c, b, d }, 0), 0);
    EXPECT_EQ(hourglass.pixel(20, 2)[3], 255);
    EXPECT_EQ(hourglass.pixel(2, 10)[3], 0);
    EXPECT_EQ(hourglass.pixel(28, 10)[3], 0);
}

TEST(RectangleMask, TheFillColourIsPremultipliedInThePassOverEachPixelOnceToo)
{
    const COLOR_STRUCT colour { 255, 128, 0, 128 }; // premultiplied 128, 64, 0, 128
    for (float feather : { 0.0f, 2.5f }) {
        Mask once, general;
        const kit::Rect r(10.3f, 20.75f, 29.5f, 17.25f);
        ASSERT_EQ(CreateImageBufferFromRect(once.buffer, once.origin, r, kWhite, true, colour, feather), 0);
        const auto corners = withMiddleVertex(r);
        ASSERT_EQ(CreateImageBufferFromPolygon(
                      general.buffer, general.origin, corners.data(), 5, kWhite, true, colour, feather),
            0);
        if (feather == 0) {
            EXPECT_EQ(once.pixel(15, 10)[0], 128);
            EXPECT_EQ(once.pixel(15, 10)[1], 64);
            EXPECT_EQ(once.pixel(15, 10)[2], 0);
            EXPECT_EQ(once.pixel(15, 10)[3], 128);
        }
        for (int i = 0; i < once.buffer.nWidth * once.buffer.nHeight * 4; ++i)
            ASSERT_NEAR(once.buffer.pData[i], general.buffer.pData[i], 1) << "byte " << i << " feather " << feather;
    }
}

TEST(EllipseMask, OriginAndSizeAreNotTruncatedAndTheEllipseIsInscribed)
{
    Mask m;
    ASSERT_EQ(ellipse(m, kit::Rect(10, 20, 30, 40), 0), 0);
    EXPECT_EQ(m.origin, (kit::Point { 9, 19 }));
    EXPECT_EQ(m.buffer.nWidth, 33);
    EXPECT_EQ(m.buffer.nHeight, 43);
    // Inscribed in (1, 1, 30, 40): the ink reaches columns 1 .. 30 and memory rows 1 .. 40, is
    // opaque at the centre and symmetric about it.
    int minColumn = 99, maxColumn = -1, minRow = 99, maxRow = -1;
    for (int row = 0; row < 43; ++row)
        for (int column = 0; column < 33; ++column)
            if (m.pixel(column, row)[3]) {
                minColumn = std::min(minColumn, column);
                maxColumn = std::max(maxColumn, column);
                minRow = std::min(minRow, row);
                maxRow = std::max(maxRow, row);
            }
    EXPECT_EQ(minColumn, 1);
    EXPECT_EQ(maxColumn, 30);
    EXPECT_EQ(minRow, 1);
    EXPECT_EQ(maxRow, 40);
    EXPECT_EQ(m.pixel(16, 21)[3], 255);
    for (int row = 1; row <= 40; ++row)
        for (int column = 1; column <= 30; ++column)
            ASSERT_NEAR(m.pixel(column, row)[3], m.pixel(31 - column, 41 - row)[3], 1) << column << "," << row;

    Mask soft;
    ASSERT_EQ(ellipse(soft, kit::Rect(10, 20, 30, 40), 2.5f), 0);
    EXPECT_EQ(soft.origin, (kit::Point { 6.5f, 16.5f }));
    EXPECT_EQ(soft.buffer.nWidth, 38);
    EXPECT_EQ(soft.buffer.nHeight, 48);
    EXPECT_EQ(soft.pixel(19, 24)[3], 255); // centre of (3.5, 3.5, 30, 40)
}

TEST(FeatherStep, TheThresholdIsAboveOneTenThousandthInDoublePrecision)
{
    // 0.0001f is a little below 0.0001 in double: no blur, and no margin beyond the sharp one.
    const float atThreshold = 0.0001f;
    Mask sharp, tiny;
    ASSERT_EQ(rect(sharp, kit::Rect(10, 20, 30, 40), 0), 0);
    ASSERT_EQ(rect(tiny, kit::Rect(10, 20, 30, 40), atThreshold), 0);
    ASSERT_EQ(tiny.buffer.nWidth, sharp.buffer.nWidth);
    EXPECT_EQ(0, std::memcmp(tiny.buffer.pData, sharp.buffer.pData, std::size_t(33 * 43 * 4)));
}

TEST(PolygonMask, FewerThanThreeVerticesLeaveEverythingAlone)
{
    Mask m;
    EXPECT_EQ(polygon(m, { { 1, 1 }, { 5, 5 } }, 0), -1);
    EXPECT_TRUE(m.untouched());
    EXPECT_EQ(CreateImageBufferFromPolygon(m.buffer, m.origin, nullptr, 0, kWhite, true, kWhite, 0), -1);
    EXPECT_TRUE(m.untouched());
}

TEST(PolygonMask, MemoryRowsRunDownTheLayerSoAShapeKeepsItsWayUp)
{
    // A right triangle with its right angle at the top left of the layer: the first memory rows
    // hold the whole top side, the last ones only the apex at the left.
    Mask m;
    ASSERT_EQ(polygon(m, { { 10, 10 }, { 20, 10 }, { 10, 30 } }, 0), 0);
    EXPECT_EQ(m.origin, (kit::Point { 9, 9 }));
    ASSERT_EQ(m.buffer.nHeight, 23);
    // Memory row 1 is layer y 10 .. 11: nearly the whole top side.
    EXPECT_EQ(m.pixel(5, 1)[3], 255);
    EXPECT_GT(m.pixel(10, 1)[3], 0);
    EXPECT_EQ(m.pixel(5, 0)[3], 0);
    // Memory row 20 is layer y 29 .. 30: only the column at x 10 .. 11 is touched.
    EXPECT_GT(m.pixel(1, 20)[3], 0);
    EXPECT_EQ(m.pixel(5, 20)[3], 0);
    EXPECT_EQ(m.pixel(1, 21)[3], 0);
}

TEST(DestroyImageBuffer, GivesTheBlockBackForTheNextMaskAndIgnoresANullOne)
{
    kit::MemoryRecycler& recycler = kit::MemoryRecycler::shared();
    recycler.trim();
    DestroyImageBuffer({ 3, 3, nullptr });
    EXPECT_EQ(recycler.keptBytes(), 0u);
    {
        Mask m;
        // Blocks from 2 MB up are kept for the next mask.
        ASSERT_EQ(rect(m, { 0, 0, 1000, 1000 }, 0), 0);
    }
    EXPECT_GE(recycler.keptBytes(), 1001u * 1001 * 4);
}

TEST(MyCreateBitmapContext, NullMemoryStopsTheProgramNamingTheInvariant)
{
    EXPECT_DEATH(MyCreateBitmapContext(4, 4, nullptr, 0),
        "assertion failed: \\(false\\), function MyCreateBitmapContext, file "
        "Classes/Selection/GraphicsToBuffer, line [0-9]+");
    std::vector<unsigned char> memory(16 * 4);
    EXPECT_TRUE(MyCreateBitmapContext(4, 4, memory.data(), 0));
}

// Everything a record or a panel could hand over that the rasteriser must refuse, without an
// assertion, without touching the buffer and without allocating.
TEST(BadInput, IsRefusedWithMinusThreeAndLeavesEverythingAlone)
{
    const std::vector<std::pair<kit::Rect, float>> shapes = {
        { kit::Rect(kNaN, 0, 10, 10), 0 },
        { kit::Rect(0, kInf, 10, 10), 0 },
        { kit::Rect(0, 0, kNaN, 10), 0 },
        { kit::Rect(0, 0, 10, kInf), 0 },
        { kit::Rect(0, 0, 10, 10), kNaN },
        { kit::Rect(0, 0, 10, 10), 1000.5f },
        { kit::Rect(0, 0, 10, 10), -1000.5f },
        { kit::Rect(0, 0, 10, 10), -6.5f }, // margins of 3 - 13 leave no pixel
        { kit::Rect(0, 0, 10, 10), kInf },
        { kit::Rect(0, 0, 20000, 20000), 0 }, // 4e8 pixels
        { kit::Rect(0, 0, 16000, 16000), 500 }, // within 2^28 sharp, not once feathered
        { kit::Rect(0, 0, 2000000, 10), 1 }, // a feathered side above 2^20
        { kit::Rect(3e9f, 0, 10, 10), 0 }, // origin beyond a 32-bit int
        { kit::Rect(0, -2147483000.0f, 10, 10), 1000 },
    };
    for (const auto& [r, feather] : shapes) {
        Mask a, b;
        EXPECT_EQ(rect(a, r, feather), kGraphicsToBufferRefused)
            << r.x() << " " << r.y() << " " << r.width() << " " << r.height() << " " << feather;
        EXPECT_TRUE(a.untouched());
        EXPECT_EQ(ellipse(b, r, feather), kGraphicsToBufferRefused)
            << r.x() << " " << r.y() << " " << r.width() << " " << r.height() << " " << feather;
        EXPECT_TRUE(b.untouched());
    }
    Mask p;
    EXPECT_EQ(polygon(p, { { 0, 0 }, { kNaN, 5 }, { 5, 5 } }, 0), kGraphicsToBufferRefused);
    EXPECT_EQ(polygon(p, { { 0, 0 }, { 5, -kInf }, { 5, 5 } }, 0), kGraphicsToBufferRefused);
    EXPECT_EQ(polygon(p, { { 0, 0 }, { 5, 5 }, { 5, 5 } }, -4), kGraphicsToBufferRefused);
    EXPECT_EQ(CreateImageBufferFromPolygon(p.buffer, p.origin, nullptr, 3, kWhite, true, kWhite, 0),
        kGraphicsToBufferRefused);
    std::vector<kit::Point> many(kGraphicsToBufferMaxVertices + 1, kit::Point { 1, 1 });
    EXPECT_EQ(polygon(p, many, 0), kGraphicsToBufferRefused);
    EXPECT_TRUE(p.untouched());
    // The largest vertex count is still taken.
    many.pop_back();
    many[1] = { 4, 1 };
    many[2] = { 4, 4 };
    Mask q;
    EXPECT_EQ(polygon(q, many, 0), 0);
}

// What the placement rules give a buffer for is drawn: a negative side is the rectangle's
// mirror, and a small negative feather narrows the margins without blurring.
TEST(Rules, NegativeSidesAndSmallNegativeFeathersStillGiveTheirShape)
{
    Mask m;
    ASSERT_EQ(rect(m, kit::Rect(300, 20, -50, 10), 0), 0);
    EXPECT_EQ(m.origin, kit::Point(249, 19));
    for (int col = 0; col < m.buffer.nWidth; ++col)
        EXPECT_EQ(m.pixel(col, 5)[3], col >= 1 && col <= 50 ? 255 : 0) << "layer x " << 249 + col;
    EXPECT_EQ(m.pixel(10, 0)[3], 0);
    EXPECT_EQ(m.pixel(10, 10)[3], 255);
    EXPECT_EQ(m.pixel(10, 11)[3], 0);

    Mask narrow;
    ASSERT_EQ(rect(narrow, kit::Rect(10, 20, 30, 40), -0.5f), 0);
    EXPECT_EQ(narrow.origin, kit::Point(9.5f, 19.5f));
    EXPECT_EQ(narrow.buffer.nWidth, 32);
    EXPECT_EQ(narrow.buffer.nHeight, 42);
    EXPECT_EQ(narrow.pixel(15, 20)[3], 255);
    Mask thin, none;
    ASSERT_EQ(ellipse(thin, kit::Rect(10, 20, -2, 40), 0), 0);
    EXPECT_EQ(thin.buffer.nWidth, 1);
    EXPECT_EQ(ellipse(none, kit::Rect(10, 20, -4, 40), 0), kGraphicsToBufferRefused); // -1 wide
    EXPECT_TRUE(none.untouched());
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMeasuresMemory = false; // the sanitizer's shadow and quarantine are not the mask's
#else
constexpr bool kMeasuresMemory = true;
#endif

TEST(Memory, AFeatheredMaskCostsItsBufferAndAQuarterAtMost)
{
    std::vector<kit::Point> star;
    for (int i = 0; i < 96; ++i) {
        const double r = i % 2 ? 1500 : 3000, t = i * M_PI / 48;
        star.push_back({ float(3000 + r * std::cos(t)), float(3000 + r * std::sin(t)) });
    }
    struct Row {
        const char* name;
        long long width, height;
        std::function<bool(Mask&)> make;
    };
    // The decimated blur and the full-size one, each with its working memory in the buffer.
    const std::vector<Row> rows = {
        { "ellipse 16000 feather 100", 16203, 16203,
            [](Mask& m) { return ellipse(m, kit::Rect(0, 0, 16000, 16000), 100) == 0; } },
        { "star 6000 feather 2.5", 6008, 6008, [&](Mask& m) { return polygon(m, star, 2.5f) == 0; } },
    };
    for (const Row& row : rows) {
        const auto peak = peakOfChild([&] {
            Mask m;
            return row.make(m) && m.buffer.nWidth == row.width && m.buffer.nHeight == row.height
                && m.pixel(int(row.width / 2), int(row.height / 2))[3] == 255 && m.pixel(0, 0)[3] == 0;
        });
        ASSERT_TRUE(peak) << row.name << ": the mask was not made as expected";
        const long long buffer = row.width * row.height * 4;
        if (kMeasuresMemory) {
            EXPECT_LE(*peak, buffer + buffer / 4)
                << row.name << ": peak " << *peak << " bytes for a buffer of " << buffer;
        }
    }
}

} // namespace
