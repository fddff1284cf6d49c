// The shape-to-mask rasteriser: buffer geometry, pixels, feathering, and refused input.
#include "Classes/Selection/GraphicsToBuffer.h"
#include "Classes/Selection/GraphicsToBufferInternals.h"
#include "kit/MemoryRecycler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
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
    bool untouched() const { return buffer.nWidth == -7 && buffer.nHeight == -7 && !buffer.pData && origin == kit::Point { -7, -7 }; }
};

int rect(Mask& m, kit::Rect r, float feather) { return CreateImageBufferFromRect(m.buffer, m.origin, r, kWhite, true, kWhite, feather); }
int ellipse(Mask& m, kit::Rect r, float feather) { return CreateImageBufferFromEllipse(m.buffer, m.origin, r, kWhite, true, kWhite, feather); }
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
    // Columns 1 .. 30 of memory rows 2 .. 41 opaque white; one empty row below the shape, two
    // above it, one empty column on the left and two on the right.
    for (int row = 0; row < 43; ++row)
        for (int column = 0; column < 33; ++column) {
            const unsigned char expected = column >= 1 && column <= 30 && row >= 2 && row <= 41 ? 255 : 0;
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

TEST(EllipseMask, OriginAndSizeAreNotTruncatedAndTheEllipseIsInscribed)
{
    Mask m;
    ASSERT_EQ(ellipse(m, kit::Rect(10, 20, 30, 40), 0), 0);
    EXPECT_EQ(m.origin, (kit::Point { 9, 19 }));
    EXPECT_EQ(m.buffer.nWidth, 33);
    EXPECT_EQ(m.buffer.nHeight, 43);
    // Inscribed in (1, 1, 30, 40): the ink reaches columns 1 .. 30 and memory rows 2 .. 41, is
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
    EXPECT_EQ(minRow, 2);
    EXPECT_EQ(maxRow, 41);
    EXPECT_EQ(m.pixel(16, 21)[3], 255);
    for (int row = 2; row <= 41; ++row)
        for (int column = 1; column <= 30; ++column)
            ASSERT_NEAR(m.pixel(column, row)[3], m.pixel(31 - column, 43 - row)[3], 1) << column << "," << row;

    Mask soft;
    ASSERT_EQ(ellipse(soft, kit::Rect(10, 20, 30, 40), 2.5f), 0);
    EXPECT_EQ(soft.origin, (kit::Point { 6.5f, 16.5f }));
    EXPECT_EQ(soft.buffer.nWidth, 38);
    EXPECT_EQ(soft.buffer.nHeight, 48);
    EXPECT_EQ(soft.pixel(19, 24)[3], 255); // centre of (3.5, 3.5, 30, 40)
}

TEST(FeatherStep, TheThresholdIsAboveOneTenThousandthInDoublePrecision)
{
    // 0.0001f is a little below 0.0001 in double: no blur; the next float up blurs.
    const float atThreshold = 0.0001f;
    const float above = std::nextafter(atThreshold, 1.0f);
    std::vector<unsigned char> pixels(8 * 8 * 4, 255);
    auto [same, sameCopy] = CICreateCIImage(pixels.data(), 8, 8, atThreshold);
    auto [blurred, blurredCopy] = CICreateCIImage(pixels.data(), 8, 8, above);
    ASSERT_TRUE(same);
    ASSERT_TRUE(blurred);
    EXPECT_EQ(same->extent(), kit::Rect(0, 0, 8, 8));
    EXPECT_EQ(blurred->extent(), kit::Rect(-1, -1, 10, 10)); // a blur's extent grows by ceil(3 sigma)
    same.clear();
    blurred.clear();
    kit::MemoryRecycler::shared().release(sameCopy);
    kit::MemoryRecycler::shared().release(blurredCopy);

    // Through the rasteriser, a feather at the threshold leaves the sharp pixels.
    Mask sharp, tiny;
    ASSERT_EQ(rect(sharp, kit::Rect(10, 20, 30, 40), 0), 0);
    ASSERT_EQ(rect(tiny, kit::Rect(10, 20, 30, 40), atThreshold), 0);
    ASSERT_EQ(tiny.buffer.nWidth, sharp.buffer.nWidth);
    EXPECT_EQ(0, std::memcmp(tiny.buffer.pData, sharp.buffer.pData, std::size_t(33 * 43 * 4)));
}

TEST(CICreateCIImage, CopiesThePixelsAsAlphaFirstWords)
{
    const std::vector<unsigned char> rgba = { 1, 2, 3, 4, 5, 6, 7, 8 };
    auto [image, copy] = CICreateCIImage(rgba.data(), 2, 1, 0);
    ASSERT_TRUE(copy);
    EXPECT_EQ(std::vector<unsigned char>(copy, copy + 8), (std::vector<unsigned char> { 4, 1, 2, 3, 8, 5, 6, 7 }));
    image.clear();
    kit::MemoryRecycler::shared().release(copy);
}

TEST(PolygonMask, FewerThanThreeVerticesLeaveEverythingAlone)
{
    Mask m;
    EXPECT_EQ(polygon(m, { { 1, 1 }, { 5, 5 } }, 0), -1);
    EXPECT_TRUE(m.untouched());
    EXPECT_EQ(CreateImageBufferFromPolygon(m.buffer, m.origin, nullptr, 0, kWhite, true, kWhite, 0), -1);
    EXPECT_TRUE(m.untouched());
}

TEST(PolygonMask, MemoryRowZeroHoldsTheLargestY)
{
    // A right triangle with its apex up at the left: the top rows of memory hold only the
    // left-hand pixels, the bottom rows the whole base.
    Mask m;
    ASSERT_EQ(polygon(m, { { 10, 10 }, { 20, 10 }, { 10, 30 } }, 0), 0);
    EXPECT_EQ(m.origin, (kit::Point { 9, 9 }));
    ASSERT_EQ(m.buffer.nHeight, 23);
    // Memory row 2 is y 29 .. 30 (layer): only the column at x 10 .. 11 is touched.
    EXPECT_GT(m.pixel(1, 2)[3], 0);
    EXPECT_EQ(m.pixel(5, 2)[3], 0);
    // Memory row 21 is y 10 .. 11: nearly the whole base.
    EXPECT_EQ(m.pixel(5, 21)[3], 255);
    EXPECT_GT(m.pixel(10, 21)[3], 0);
}

TEST(DestroyImageBuffer, ANullBlockIsFine)
{
    DestroyImageBuffer({ 3, 3, nullptr });
    SUCCEED();
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
        { kit::Rect(0, 0, -1, 10), 0 },
        { kit::Rect(0, 0, 10, -0.5f), 0 },
        { kit::Rect(0, 0, 10, 10), -0.5f },
        { kit::Rect(0, 0, 10, 10), kNaN },
        { kit::Rect(0, 0, 10, 10), 1000.5f },
        { kit::Rect(0, 0, 10, 10), kInf },
        { kit::Rect(0, 0, 20000, 20000), 0 }, // 4e8 pixels
        { kit::Rect(0, 0, 16000, 16000), 500 }, // within 2^28 sharp, not once feathered
        { kit::Rect(0, 0, 2000000, 10), 1 }, // a feathered side above 2^20
        { kit::Rect(3e9f, 0, 10, 10), 0 }, // origin beyond a 32-bit int
        { kit::Rect(0, -2147483000.0f, 10, 10), 1000 },
    };
    for (const auto& [r, feather] : shapes) {
        Mask a, b;
        EXPECT_EQ(rect(a, r, feather), kGraphicsToBufferRefused) << r.x() << " " << r.y() << " " << r.width() << " " << r.height() << " " << feather;
        EXPECT_TRUE(a.untouched());
        EXPECT_EQ(ellipse(b, r, feather), kGraphicsToBufferRefused) << r.x() << " " << r.y() << " " << r.width() << " " << r.height() << " " << feather;
        EXPECT_TRUE(b.untouched());
    }
    Mask p;
    EXPECT_EQ(polygon(p, { { 0, 0 }, { kNaN, 5 }, { 5, 5 } }, 0), kGraphicsToBufferRefused);
    EXPECT_EQ(polygon(p, { { 0, 0 }, { 5, -kInf }, { 5, 5 } }, 0), kGraphicsToBufferRefused);
    EXPECT_EQ(polygon(p, { { 0, 0 }, { 5, 5 }, { 5, 5 } }, -1), kGraphicsToBufferRefused);
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

} // namespace
