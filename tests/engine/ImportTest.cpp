// ImportTest: importing image data merges by larger alpha, clips to the canvas and honours offsets.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

#include <array>

using engine::Document;
using namespace enginetest;

namespace {

int importWhite(Document& document, int layer, int width, int height, int x, int y, std::uint8_t alpha = 255)
{
    std::vector<std::uint8_t> image = whiteImage(width, height, alpha);
    return IPD_LayerPaint_ImportImageData(document.context(), layer, image.data(), width, height, x, y);
}

} // namespace

TEST(ImportMerge, KeepsTheLargerAlphaPerPixel)
{
    Document document;
    const std::array<std::uint8_t, 4> first { 100, 200, 50, 0 };
    const std::array<std::uint8_t, 4> second { 150, 150, 150, 150 };
    for (const auto& alphas : { first, second }) {
        std::vector<std::uint8_t> row;
        for (std::uint8_t a : alphas)
            row.insert(row.end(), { a, a, a, a });
        ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kMask, row.data(), 4, 1, 10, 10), 0);
    }
    EXPECT_EQ(maskAt(document, 10, 10), 150);
    EXPECT_EQ(maskAt(document, 11, 10), 200);
    EXPECT_EQ(maskAt(document, 12, 10), 150);
    EXPECT_EQ(maskAt(document, 13, 10), 150);
    EXPECT_EQ(maskAt(document, 14, 10), 0);
}

TEST(ImportMerge, TheWinningPixelKeepsItsColourOnThePaintLayer)
{
    Document document;
    const std::uint8_t old[4] = { 10, 20, 30, 100 };
    const std::uint8_t weaker[4] = { 1, 2, 3, 50 };
    const std::uint8_t stronger[4] = { 40, 50, 60, 200 };
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kPaint, old, 1, 1, 5, 6), 0);
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kPaint, weaker, 1, 1, 5, 6), 0);
    std::vector<std::uint8_t> pixels = document.paintPixels();
    std::size_t at = (6 * 1000 + 5) * 4;
    EXPECT_EQ(std::vector<std::uint8_t>(pixels.begin() + at, pixels.begin() + at + 4),
        std::vector<std::uint8_t>(old, old + 4));
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kPaint, stronger, 1, 1, 5, 6), 0);
    pixels = document.paintPixels();
    EXPECT_EQ(std::vector<std::uint8_t>(pixels.begin() + at, pixels.begin() + at + 4),
        std::vector<std::uint8_t>(stronger, stronger + 4));
    EXPECT_EQ(selectedCount(document), 0u) << "a paint-layer import leaves the mask alone";
}

TEST(ImportMerge, AnImportThatChangesNothingCreatesNoCells)
{
    Document document;
    ASSERT_EQ(importWhite(document, kMask, 100, 100, 0, 0, 0), 0);
    EXPECT_EQ(document.cellCount(kMask), 0u);
    EXPECT_FALSE(document.hasOpenUndoStep());
}

struct EdgeCase {
    const char* edge;
    int x;
    int y;
    int firstInsideX; // where the clipped 20 x 20 image starts on the canvas
    int firstInsideY;
    int insideWidth;
    int insideHeight;
};

class ImportClipping : public ::testing::TestWithParam<EdgeCase> {};

TEST_P(ImportClipping, KeepsOnlyThePixelsOnTheCanvas)
{
    const EdgeCase& c = GetParam();
    Document document;
    ASSERT_EQ(importWhite(document, kMask, 20, 20, c.x, c.y), 0);
    EXPECT_EQ(selectedCount(document), static_cast<std::size_t>(c.insideWidth * c.insideHeight));
    EXPECT_EQ(maskAt(document, c.firstInsideX, c.firstInsideY), 255);
    EXPECT_EQ(maskAt(document, c.firstInsideX + c.insideWidth - 1, c.firstInsideY + c.insideHeight - 1), 255);
    // The visible part of every case lies in one cell; nothing is stored for the clipped part.
    EXPECT_EQ(document.cellCount(kMask), 1u);
}

INSTANTIATE_TEST_SUITE_P(AllEdges, ImportClipping,
    ::testing::Values(EdgeCase { "left", -10, 100, 0, 100, 10, 20 }, EdgeCase { "top", 100, -10, 100, 0, 20, 10 },
        EdgeCase { "right", 990, 100, 990, 100, 10, 20 }, EdgeCase { "bottom", 100, 790, 100, 790, 20, 10 },
        EdgeCase { "topLeftCorner", -15, -5, 0, 0, 5, 15 }, EdgeCase { "bottomRightCorner", 995, 795, 995, 795, 5, 5 }),
    [](const auto& info) { return std::string(info.param.edge); });

TEST(ImportClippingOutside, AnImageEntirelyOffTheCanvasIsAcceptedAndChangesNothing)
{
    Document document;
    for (auto [x, y] : std::array<std::pair<int, int>, 4> { { { -20, 0 }, { 0, -20 }, { 1000, 0 }, { 0, 800 } } })
        EXPECT_EQ(importWhite(document, kMask, 20, 20, x, y), 0);
    EXPECT_EQ(document.cellCount(kMask), 0u);
    EXPECT_EQ(document.revision(), 0u);
}

TEST(ImportOffset, PlacesLayerPixelsAtTheirCanvasPositions)
{
    Document document;
    ASSERT_TRUE(document.setLayerOffset(kMask, 100, 50));
    ASSERT_EQ(importWhite(document, kMask, 10, 10, 0, 0), 0);
    EXPECT_EQ(maskAt(document, 100, 50), 255);
    EXPECT_EQ(maskAt(document, 109, 59), 255);
    EXPECT_EQ(maskAt(document, 99, 50), 0);
    EXPECT_EQ(maskAt(document, 0, 0), 0);
    EXPECT_EQ(selectedCount(document), 100u);
}

TEST(ImportOffset, ClipsAgainstTheCanvasAfterTheOffset)
{
    Document document;
    ASSERT_TRUE(document.setLayerOffset(kMask, -5, 795));
    ASSERT_EQ(importWhite(document, kMask, 10, 10, 0, 0), 0);
    EXPECT_EQ(selectedCount(document), 25u);
    EXPECT_EQ(maskAt(document, 0, 795), 255);
    EXPECT_EQ(maskAt(document, 4, 799), 255);
}

TEST(ImportOffset, MovingTheLayerMovesWhatItHolds)
{
    Document document;
    ASSERT_EQ(importWhite(document, kMask, 4, 4, 10, 10), 0);
    ASSERT_TRUE(document.setLayerOffset(kMask, 30, -5));
    EXPECT_EQ(maskAt(document, 10, 10), 0);
    EXPECT_EQ(maskAt(document, 40, 5), 255);
    int x = 0;
    int y = 0;
    ASSERT_EQ(IPD_Layer_GetOffset(document.context(), kMask, &x, &y), 0);
    EXPECT_EQ(x, 30);
    EXPECT_EQ(y, -5);
}

TEST(LayerDelete, EmptiesOnlyThatLayerAndKeepsTheStepOpen)
{
    Document document;
    ASSERT_EQ(importWhite(document, kMask, 70, 70, 30, 30), 0);
    ASSERT_EQ(importWhite(document, kPaint, 10, 10, 0, 0), 0);
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    ASSERT_EQ(document.undoDepth(), 1u);

    ASSERT_EQ(IPD_Layer_Delete(document.context(), kMask, 0), 0);
    EXPECT_EQ(selectedCount(document), 0u);
    EXPECT_EQ(document.cellCount(kMask), 0u);
    EXPECT_NE(document.cellCount(kPaint), 0u);
    EXPECT_EQ(document.undoDepth(), 1u);
    EXPECT_TRUE(document.hasOpenUndoStep());
}

TEST(LayerDelete, OfAnEmptyLayerIsAcceptedAndOpensNoStep)
{
    Document document;
    EXPECT_EQ(IPD_Layer_Delete(document.context(), kMask, 0), 0);
    EXPECT_FALSE(document.hasOpenUndoStep());
}
