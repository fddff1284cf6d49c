// The overlay's cell-by-cell mask writer: which cells it visits, in what order, and the merge rule.
#include "Classes/Selection/SelectionMainView.h"
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "kit/RunLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>
#include <vector>

namespace {

using Pixel = std::array<unsigned char, 4>;

class TileWriterTest : public testing::Test {
protected:
    void SetUp() override
    {
        overlay->setQMContext(document.context());
        document.setJournalEnabled(true);
    }
    void TearDown() override { kit::RunLoop::main().advance(10); }

    /// A mask of one colour.
    static std::vector<unsigned char> mask(int width, int height, Pixel p)
    {
        std::vector<unsigned char> out;
        for (int i = 0; i < width * height; ++i)
            out.insert(out.end(), p.begin(), p.end());
        return out;
    }
    /// The cell-operation lines of the journal, without the layer id.
    std::vector<std::string> cellCalls() const
    {
        std::vector<std::string> out;
        for (const std::string& line : document.journal()) {
            if (line.rfind("IPD_Layer_", 0) == 0)
                out.push_back(line.substr(10));
        }
        return out;
    }
    Pixel cellPixel(int column, int row, int x, int y)
    {
        unsigned char* cell = IPD_Layer_GetCellBuffer(document.context(), 2, column, row, 0);
        unsigned char* p = cell + (y * 64 + x) * 4;
        return { p[0], p[1], p[2], p[3] };
    }
    void setCellPixel(int column, int row, int x, int y, Pixel value)
    {
        unsigned char* cell = IPD_Layer_GetCellBuffer(document.context(), 2, column, row, 0);
        std::copy(value.begin(), value.end(), cell + (y * 64 + x) * 4);
    }
    int alphaAt(int x, int y) const { return document.maskAlpha()[std::size_t(y) * document.canvasWidth() + x]; }

    engine::Document document;
    kit::RefPtr<SelectionMainView> overlay = kit::make<SelectionMainView>(kit::Rect { 0, 0, 1200, 900 });
};

TEST_F(TileWriterTest, AWholeCellVisitsExactlyThatCell)
{
    const auto m = mask(64, 64, { 128, 128, 128, 128 });
    EXPECT_EQ(overlay->setSelectionMaskRect(m.data(), { 0, 0, 64, 64 }), 0);
    EXPECT_EQ(
        cellCalls(), (std::vector<std::string> { "GetCellBuffer 2 0,0", "UpdateCell 2 0,0", "SaveCellInfo 2 0,0" }));
    EXPECT_EQ(document.journal().front(), "IPD_GetSelectionMaskID");
    for (int y : { 0, 31, 63 })
        for (int x : { 0, 40, 63 })
            EXPECT_EQ(alphaAt(x, y), 128);
    EXPECT_EQ(alphaAt(64, 0), 0);
}

TEST_F(TileWriterTest, APartialRectangleChangesOnlyItsPixelsOfTheOneCell)
{
    const auto m = mask(20, 5, { 255, 255, 255, 255 });
    overlay->setSelectionMaskRect(m.data(), { 10, 70, 20, 5 });
    EXPECT_EQ(
        cellCalls(), (std::vector<std::string> { "GetCellBuffer 2 0,1", "UpdateCell 2 0,1", "SaveCellInfo 2 0,1" }));
    for (int y = 64; y < 128; ++y) {
        for (int x = 0; x < 64; ++x) {
            const bool inside = x >= 10 && x <= 29 && y >= 70 && y <= 74;
            ASSERT_EQ(alphaAt(x, y), inside ? 255 : 0) << x << "," << y;
        }
    }
}

TEST_F(TileWriterTest, AMaskAcrossACellBorderSplitsItsColumns)
{
    std::vector<unsigned char> m;
    for (int i = 0; i < 10; ++i)
        m.insert(m.end(), { 255, 255, 255, static_cast<unsigned char>(10 * (i + 1)) });
    overlay->setSelectionMaskRect(m.data(), { 60, 0, 10, 1 });
    EXPECT_EQ(cellCalls(),
        (std::vector<std::string> { "GetCellBuffer 2 0,0", "UpdateCell 2 0,0", "SaveCellInfo 2 0,0",
            "GetCellBuffer 2 1,0", "UpdateCell 2 1,0", "SaveCellInfo 2 1,0" }));
    EXPECT_EQ(cellPixel(0, 0, 60, 0)[3], 10);
    EXPECT_EQ(cellPixel(0, 0, 63, 0)[3], 40);
    EXPECT_EQ(cellPixel(1, 0, 0, 0)[3], 50);
    EXPECT_EQ(cellPixel(1, 0, 5, 0)[3], 100);
    EXPECT_EQ(cellPixel(1, 0, 6, 0)[3], 0);
}

TEST_F(TileWriterTest, CellsAreVisitedRowByRowThenColumnByColumn)
{
    const auto m = mask(10, 10, { 255, 255, 255, 255 });
    overlay->setSelectionMaskRect(m.data(), { 60, 60, 10, 10 });
    std::vector<std::string> fetched;
    for (const std::string& call : cellCalls()) {
        if (call.rfind("GetCellBuffer", 0) == 0)
            fetched.push_back(call.substr(16));
    }
    EXPECT_EQ(fetched, (std::vector<std::string> { "0,0", "1,0", "0,1", "1,1" }));
}

TEST_F(TileWriterTest, AnEmptyRectangleVisitsNothing)
{
    const auto m = mask(1, 1, { 255, 255, 255, 255 });
    EXPECT_EQ(overlay->setSelectionMaskRect(m.data(), { 64, 64, 0, 0 }), 0);
    EXPECT_TRUE(cellCalls().empty());
    EXPECT_EQ(overlay->setSelectionMaskRect(m.data(), { 0, 0, -5, 10 }), 0);
    EXPECT_TRUE(cellCalls().empty());
}

TEST_F(TileWriterTest, NoMaskOrAnImpossiblyLargeOneVisitsNothing)
{
    EXPECT_EQ(overlay->setSelectionMaskRect(nullptr, { 0, 0, 64, 64 }), 0);
    const auto m = mask(1, 1, { 255, 255, 255, 255 });
    // Billions of cells: refused before the first visit rather than walked.
    EXPECT_EQ(overlay->setSelectionMaskRect(m.data(), { INT_MIN, INT_MIN, INT_MAX, INT_MAX }), 0);
    EXPECT_TRUE(cellCalls().empty());
    EXPECT_EQ(document.undoDepth(), 0u);
}

TEST_F(TileWriterTest, NegativeCoordinatesFloorToTheCellBeforeZeroWhichIsNeverWritten)
{
    std::vector<unsigned char> m;
    for (int i = 0; i < 20; ++i)
        m.insert(m.end(), { 255, 255, 255, static_cast<unsigned char>(i + 1) });
    overlay->setSelectionMaskRect(m.data(), { -10, 0, 20, 1 });
    const auto calls = cellCalls();
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[0], "GetCellBuffer 2 -1,0"); // off the canvas: the engine gives no buffer
    EXPECT_EQ(calls[1], "UpdateCell 2 -1,0");
    EXPECT_EQ(calls[2], "SaveCellInfo 2 -1,0");
    EXPECT_EQ(alphaAt(0, 0), 11);
    EXPECT_EQ(alphaAt(9, 0), 20);
    EXPECT_EQ(alphaAt(10, 0), 0);
}

TEST_F(TileWriterTest, TheMergeRuleNeverRaisesASelectedPixel)
{
    // Four cell pixels: unselected, strongly selected, weakly selected, and one under a clear mask pixel.
    setCellPixel(0, 0, 0, 0, { 0, 0, 0, 0 });
    setCellPixel(0, 0, 1, 0, { 200, 200, 200, 200 });
    setCellPixel(0, 0, 2, 0, { 100, 100, 100, 100 });
    setCellPixel(0, 0, 3, 0, { 7, 8, 9, 50 });
    const std::vector<unsigned char> m = { 128, 64, 32, 128, 128, 64, 32, 128, 128, 64, 32, 128, 1, 2, 3, 0 };
    overlay->setSelectionMaskRect(m.data(), { 0, 0, 4, 1 });
    EXPECT_EQ(cellPixel(0, 0, 0, 0), (Pixel { 128, 64, 32, 128 })); // takes the mask pixel
    EXPECT_EQ(cellPixel(0, 0, 1, 0), (Pixel { 128, 64, 32, 128 })); // lowered to the mask's alpha
    EXPECT_EQ(cellPixel(0, 0, 2, 0), (Pixel { 128, 64, 32, 100 })); // colour from the mask, alpha stays
    EXPECT_EQ(cellPixel(0, 0, 3, 0), (Pixel { 7, 8, 9, 50 })); // clear mask pixel: untouched
}

} // namespace
