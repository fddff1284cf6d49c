// UndoTest: one gesture is one undo step, redo is dropped by new changes, and in-place cell writes undo.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/DocumentSnapshot.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

using engine::Document;
using namespace enginetest;

namespace {

void importWhite(Document& document, int width, int height, int x, int y)
{
    std::vector<std::uint8_t> image = whiteImage(width, height, 255);
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kMask, image.data(), width, height, x, y), 0);
}

// What a "new selection" does: drop the old selection and import the new one, as one gesture.
void replaceSelection(Document& document, int width, int height, int x, int y)
{
    ASSERT_EQ(IPD_Layer_Delete(document.context(), kMask, 0), 0);
    importWhite(document, width, height, x, y);
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
}

} // namespace

TEST(UndoGesture, ANewSelectionUndoesAndRedoesInOneStep)
{
    Document document;
    replaceSelection(document, 50, 50, 10, 10);
    std::vector<std::uint8_t> first = document.maskAlpha();
    replaceSelection(document, 80, 30, 300, 200);
    std::vector<std::uint8_t> second = document.maskAlpha();
    ASSERT_EQ(document.undoDepth(), 2u);

    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(document.maskAlpha(), first);
    ASSERT_EQ(IPD_RedoStroke(document.context()), 0);
    EXPECT_EQ(document.maskAlpha(), second);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(selectedCount(document), 0u);
    EXPECT_EQ(document.cellCount(kMask), 0u) << "cells created by the gesture go away with it";
    EXPECT_EQ(document.redoDepth(), 2u);
}

TEST(UndoGesture, UndoClosesTheOpenStepFirst)
{
    Document document;
    importWhite(document, 10, 10, 0, 0);
    ASSERT_TRUE(document.hasOpenUndoStep());
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(selectedCount(document), 0u);
    EXPECT_FALSE(document.hasOpenUndoStep());
    EXPECT_EQ(document.redoDepth(), 1u);
}

TEST(UndoGesture, AStepThatChangedNothingIsNotPushed)
{
    Document document;
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    ASSERT_NE(IPD_Layer_GetCellBuffer(document.context(), kMask, 2, 2, 0), nullptr);
    ASSERT_EQ(IPD_Layer_SaveCellInfo(document.context(), kMask, 2, 2), 0);
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    EXPECT_EQ(document.undoDepth(), 0u);
}

TEST(UndoRedoDropping, ANewChangeAfterUndoDropsRedo)
{
    Document document;
    replaceSelection(document, 10, 10, 0, 0);
    replaceSelection(document, 10, 10, 100, 100);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    ASSERT_EQ(document.redoDepth(), 1u);

    importWhite(document, 5, 5, 500, 500);
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    EXPECT_EQ(document.redoDepth(), 0u);
    DocumentSnapshot before(document);
    EXPECT_LT(IPD_RedoStroke(document.context()), 0);
    EXPECT_EQ(DocumentSnapshot(document), before);
    EXPECT_EQ(maskAt(document, 100, 100), 0);
    EXPECT_EQ(maskAt(document, 500, 500), 255);
}

TEST(UndoRedoDropping, UndoingAndRedoingDropsNothing)
{
    Document document;
    replaceSelection(document, 10, 10, 0, 0);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    ASSERT_EQ(IPD_RedoStroke(document.context()), 0);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(document.redoDepth(), 1u);
}

TEST(UndoNothing, UndoAndRedoWithNothingToDoChangeNothing)
{
    Document document;
    DocumentSnapshot empty(document);
    EXPECT_LT(IPD_UndoStroke(document.context()), 0);
    EXPECT_LT(IPD_RedoStroke(document.context()), 0);
    EXPECT_EQ(DocumentSnapshot(document), empty);

    replaceSelection(document, 10, 10, 0, 0);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    DocumentSnapshot undone(document);
    EXPECT_LT(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(DocumentSnapshot(document), undone);
}

TEST(CellBuffer, InPlaceWritesUndoAndRedo)
{
    Document document;
    importWhite(document, 64, 64, 64, 64); // fills cell (1, 1)
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    std::vector<std::uint8_t> imported = document.maskAlpha();

    unsigned char* cell = IPD_Layer_GetCellBuffer(document.context(), kMask, 1, 1, 0);
    ASSERT_NE(cell, nullptr);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 32; ++x)
            std::fill_n(cell + y * 256 + x * 4, 4, 0); // clear the left half
    }
    ASSERT_EQ(IPD_Layer_UpdateCell(document.context(), kMask, 1, 1, 0), 0);
    ASSERT_EQ(IPD_Layer_SaveCellInfo(document.context(), kMask, 1, 1), 0);
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    std::vector<std::uint8_t> edited = document.maskAlpha();
    EXPECT_EQ(maskAt(document, 64 + 31, 70), 0);
    EXPECT_EQ(maskAt(document, 64 + 32, 70), 255);
    ASSERT_EQ(document.undoDepth(), 2u);

    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(document.maskAlpha(), imported);
    ASSERT_EQ(IPD_RedoStroke(document.context()), 0);
    EXPECT_EQ(document.maskAlpha(), edited);
}

TEST(CellBuffer, ACellTouchedTwiceInOneStepUndoesToItsFirstState)
{
    Document document;
    for (std::uint8_t value : { std::uint8_t { 80 }, std::uint8_t { 160 } }) {
        unsigned char* cell = IPD_Layer_GetCellBuffer(document.context(), kMask, 0, 0, 0);
        ASSERT_NE(cell, nullptr);
        std::fill_n(cell, 4, value);
        ASSERT_EQ(IPD_Layer_UpdateCell(document.context(), kMask, 0, 0, 0), 0);
        ASSERT_EQ(IPD_Layer_SaveCellInfo(document.context(), kMask, 0, 0), 0);
    }
    ASSERT_EQ(IPD_StartRefreshingActiveLayer(document.context()), 0);
    EXPECT_EQ(maskAt(document, 0, 0), 160);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(maskAt(document, 0, 0), 0);
}

TEST(CellBuffer, RowsAre256BytesApartAndTheLayerOffsetApplies)
{
    Document document;
    ASSERT_TRUE(document.setLayerOffset(kMask, 7, 3));
    unsigned char* cell = IPD_Layer_GetCellBuffer(document.context(), kMask, 2, 1, 0);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(IPD_Layer_GetCellBuffer(document.context(), kMask, 2, 1, 0), cell) << "same cell, same buffer";
    std::fill_n(cell + 5 * 256 + 9 * 4, 4, 255);
    EXPECT_EQ(maskAt(document, 7 + 128 + 9, 3 + 64 + 5), 255);
    EXPECT_EQ(selectedCount(document), 1u);
}

TEST(CellBuffer, CellsOffTheCanvasGiveNull)
{
    Document document; // 1000 x 800: columns 0..15 and rows 0..12 overlap it
    for (auto [column, row] : { std::pair { -1, 0 }, std::pair { 0, -1 }, std::pair { 16, 0 }, std::pair { 0, 13 } })
        EXPECT_EQ(IPD_Layer_GetCellBuffer(document.context(), kMask, column, row, 0), nullptr) << column << "," << row;
    EXPECT_NE(IPD_Layer_GetCellBuffer(document.context(), kMask, 15, 12, 0), nullptr);

    ASSERT_TRUE(document.setLayerOffset(kMask, -64, 40));
    EXPECT_EQ(IPD_Layer_GetCellBuffer(document.context(), kMask, 0, 0, 0), nullptr);
    EXPECT_NE(IPD_Layer_GetCellBuffer(document.context(), kMask, 16, 0, 0), nullptr);
    EXPECT_NE(IPD_Layer_GetCellBuffer(document.context(), kMask, 1, -1, 0), nullptr);
    EXPECT_EQ(IPD_Layer_GetCellBuffer(document.context(), kMask, 1, 12, 0), nullptr);
    EXPECT_LT(IPD_Layer_UpdateCell(document.context(), kMask, 0, 0, 0), 0);
    EXPECT_LT(IPD_Layer_SaveCellInfo(document.context(), kMask, 0, 0), 0);
}

TEST(PaintPictures, ReplacingThePictureIsOneStepOverOnlyTheCellsThatChange)
{
    Document document;
    ASSERT_TRUE(document.setCanvasSize(130, 70)); // cells 3 x 2, the last ones partly on the canvas
    std::vector<std::uint8_t> picture(130 * 70 * 4, 0);
    picture[(69 * 130 + 129) * 4 + 1] = 9; // the bottom-right pixel, in the corner cell
    document.replacePaintPixels(picture);
    EXPECT_EQ(document.paintPixels(), picture);
    EXPECT_EQ(document.cellCount(Document::kPaintLayerId), 1u);
    EXPECT_EQ(document.undoDepth(), 1u);
    EXPECT_FALSE(document.hasOpenUndoStep());
    document.replacePaintPixels(std::vector<std::uint8_t>(7, 1)); // not canvas-sized: refused
    EXPECT_EQ(document.paintPixels(), picture);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(document.cellCount(Document::kPaintLayerId), 0u);
}

TEST(PaintPictures, OpeningSetsTheCanvasDropsTheOldPictureAndUndoesInOneStep)
{
    Document document;
    std::vector<std::uint8_t> before(1000 * 800 * 4, 0);
    before[(700 * 1000 + 900) * 4 + 3] = 255; // off the picture opened next
    document.replacePaintPixels(before);
    std::vector<std::uint8_t> picture(40 * 30 * 4, 200);
    ASSERT_TRUE(document.openPicture(40, 30, picture));
    EXPECT_EQ(document.canvasWidth(), 40);
    EXPECT_EQ(document.canvasHeight(), 30);
    EXPECT_EQ(document.paintPixels(), picture);
    EXPECT_EQ(document.cellCount(Document::kPaintLayerId), 1u);
    EXPECT_FALSE(document.openPicture(0, 30, {}));
    EXPECT_FALSE(document.openPicture(40, 30, std::vector<std::uint8_t>(5)));
    EXPECT_EQ(document.canvasWidth(), 40);
    ASSERT_EQ(IPD_UndoStroke(document.context()), 0);
    EXPECT_EQ(document.canvasWidth(), 1000);
    EXPECT_EQ(document.canvasHeight(), 800);
    EXPECT_EQ(document.paintPixels(), before);
    ASSERT_EQ(IPD_RedoStroke(document.context()), 0);
    EXPECT_EQ(document.canvasWidth(), 40);
    EXPECT_EQ(document.paintPixels(), picture);
}

// The host's selection commands on a canvas of uneven size with a half-selected patch, its
// mask layer offset so that cells straddle the canvas edge: each gives the expected alpha at
// every canvas pixel, leaves what lies off the canvas alone, and is one undo step that an
// open gesture does not join.
TEST(HostSelectionCommands, EachMapsEveryCanvasPixelInOneUndoStep)
{
    struct Case {
        const char* name;
        void (Document::*command)();
        int outside, inside; // alpha after the command, off and on the patch
    };
    const Case cases[] = {
        { "all", &Document::selectAll, 255, 255 },
        { "none", &Document::selectNone, 0, 0 },
        { "invert", &Document::invertSelection, 255, 127 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Document document;
        ASSERT_TRUE(document.setCanvasSize(130, 70));
        ASSERT_TRUE(document.setLayerOffset(kMask, -5, 3));
        std::vector<std::uint8_t> patch = whiteImage(20, 10, 128);
        ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kMask, patch.data(), 20, 10, 40, 30), 0);
        // Left open, as a gesture leaves its step until the release.
        const std::vector<std::uint8_t> before = document.maskAlpha();
        const std::size_t cellsBefore = document.cellCount(kMask);

        (document.*c.command)();
        const std::vector<std::uint8_t> after = document.maskAlpha();
        for (int y = 0; y < 70; ++y) {
            for (int x = 0; x < 130; ++x) {
                const bool onPatch = x >= 35 && x < 55 && y >= 33 && y < 43;
                ASSERT_EQ(after[std::size_t(y) * 130 + x], onPatch ? c.inside : c.outside) << x << "," << y;
            }
        }
        EXPECT_FALSE(document.hasOpenUndoStep());
        ASSERT_EQ(document.undoDepth(), 2u);
        ASSERT_EQ(document.undo(), 0);
        EXPECT_EQ(document.maskAlpha(), before);
        EXPECT_EQ(document.cellCount(kMask), cellsBefore);
    }
}
