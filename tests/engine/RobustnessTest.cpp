// RobustnessTest: bad contexts, layers, pointers, sizes and offsets are refused without changing anything.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/DocumentSnapshot.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>

using engine::Document;
using namespace enginetest;

namespace {

// A document with something on both layers, an undo step, a redo step and a brush, so that a
// refused call has plenty it could wrongly change.
class Robustness : public ::testing::Test {
protected:
    void SetUp() override
    {
        document.setBrushDirectory(shippedBrushDirectory());
        pen = IPD_CreateBrushFromPackage(context(), "pen_1.bru");
        ASSERT_NE(pen, nullptr);
        std::vector<std::uint8_t> image = whiteImage(100, 100, 200);
        for (int layer : { kMask, kPaint })
            ASSERT_EQ(IPD_LayerPaint_ImportImageData(context(), layer, image.data(), 100, 100, 50, 50), 0);
        ASSERT_EQ(IPD_StartRefreshingActiveLayer(context()), 0);
        ASSERT_EQ(IPD_LayerPaint_ImportImageData(context(), kMask, image.data(), 10, 10, 500, 500), 0);
        ASSERT_EQ(IPD_StartRefreshingActiveLayer(context()), 0);
        ASSERT_EQ(IPD_UndoStroke(context()), 0);
        ASSERT_EQ(IPD_EnableSeletionLayerOperation(context(), 1), 0);
    }

    void* context() { return document.context(); }

    // Runs the call and checks that it was refused and that nothing observable changed.
    void expectRefused(const char* what, const std::function<bool()>& refusedCall)
    {
        DocumentSnapshot before(document);
        EXPECT_TRUE(refusedCall()) << what;
        EXPECT_EQ(DocumentSnapshot(document), before) << what;
    }

    Document document;
    void* pen = nullptr;
};

// Every operation, called on one context, reports refusal.
void expectAllRefused(void* context, void* brush)
{
    std::uint8_t pixel[4] = { 255, 255, 255, 255 };
    int a = 7, b = 7, c = 7, d = 7;
    SelectionEventRecord record;
    EXPECT_LT(IPD_GetSelectionMaskID(context), 0);
    EXPECT_LT(IPD_EnableSeletionLayerOperation(context, 1), 0);
    EXPECT_LT(IPD_LayerPaint_ImportImageData(context, kMask, pixel, 1, 1, 0, 0), 0);
    EXPECT_LT(IPD_StartRefreshingActiveLayer(context), 0);
    EXPECT_LT(IPD_Layer_Delete(context, kMask, 0), 0);
    EXPECT_LT(IPD_Layer_GetOffset(context, kMask, &a, &b), 0);
    EXPECT_EQ(IPD_Layer_GetCellBuffer(context, kMask, 0, 0, 0), nullptr);
    EXPECT_LT(IPD_Layer_UpdateCell(context, kMask, 0, 0, 0), 0);
    EXPECT_LT(IPD_Layer_SaveCellInfo(context, kMask, 0, 0), 0);
    EXPECT_LT(IPD_GetPos(context, &a, &b, &c, &d), 0);
    EXPECT_LT(IPD_GetCanvasSize(context, &a, &b), 0);
    EXPECT_LT(IPD_UndoStroke(context), 0);
    EXPECT_LT(IPD_RedoStroke(context), 0);
    EXPECT_EQ(IPD_CreateBrushFromPackage(context, "pen_1.bru"), nullptr);
    EXPECT_LT(IPD_DestroyBursh(context, brush), 0);
    EXPECT_EQ(IPD_GetBrushParam(context, brush, 3), 0.0f);
    EXPECT_LT(IPD_SetBrushParam(context, brush, 3, 1.0f), 0);
    EXPECT_LT(IPD_BeginOneStroke(context), 0);
    EXPECT_LT(IPD_StrokeTo(context, brush, 0xffffff, 10, 10, 1.0f, 5.1f), 0);
    EXPECT_LT(IPD_EndOneStroke(context), 0);
    EXPECT_LT(IPD_RecordEvent(context, &record), 0);
    EXPECT_EQ((std::vector<int> { a, b, c, d }), (std::vector<int> { 7, 7, 7, 7 })) << "nothing written";
}

} // namespace

TEST_F(Robustness, ContextsThatAreNotLiveDocumentsAreRefused)
{
    DocumentSnapshot before(document);
    int notADocument[64] = {};
    auto destroyed = std::make_unique<Document>();
    void* stale = destroyed->context();
    destroyed.reset();
    for (void* bad : { static_cast<void*>(nullptr), static_cast<void*>(notADocument), stale,
             static_cast<void*>(static_cast<char*>(context()) + 1) })
        expectAllRefused(bad, pen);
    EXPECT_EQ(DocumentSnapshot(document), before);
    EXPECT_EQ(notADocument[0], 0);
}

TEST_F(Robustness, UnknownLayersAreRefused)
{
    std::uint8_t pixel[4] = { 255, 255, 255, 255 };
    for (int layer : { 0, 3, -1, INT_MIN, INT_MAX }) {
        int x = 7, y = 7;
        expectRefused(
            "import", [&] { return IPD_LayerPaint_ImportImageData(context(), layer, pixel, 1, 1, 0, 0) < 0; });
        expectRefused("delete", [&] { return IPD_Layer_Delete(context(), layer, 0) < 0; });
        expectRefused("offset", [&] { return IPD_Layer_GetOffset(context(), layer, &x, &y) < 0 && x == 7 && y == 7; });
        expectRefused("cell", [&] { return IPD_Layer_GetCellBuffer(context(), layer, 0, 0, 0) == nullptr; });
        expectRefused("update", [&] { return IPD_Layer_UpdateCell(context(), layer, 0, 0, 0) < 0; });
        expectRefused("save", [&] { return IPD_Layer_SaveCellInfo(context(), layer, 0, 0) < 0; });
    }
    expectRefused("delete with reserved set", [&] { return IPD_Layer_Delete(context(), kMask, 1) < 0; });
}

TEST_F(Robustness, NullPointersAreRefusedAndNothingIsWritten)
{
    int a = 7, b = 7, c = 7;
    expectRefused(
        "null data", [&] { return IPD_LayerPaint_ImportImageData(context(), kMask, nullptr, 4, 4, 0, 0) < 0; });
    expectRefused("null offset x", [&] { return IPD_Layer_GetOffset(context(), kMask, nullptr, &a) < 0; });
    expectRefused("null offset y", [&] { return IPD_Layer_GetOffset(context(), kMask, &a, nullptr) < 0; });
    expectRefused("null pos", [&] { return IPD_GetPos(context(), &a, &b, &c, nullptr) < 0; });
    expectRefused("null pos x", [&] { return IPD_GetPos(context(), nullptr, &a, &b, &c) < 0; });
    expectRefused("null size", [&] { return IPD_GetCanvasSize(context(), &a, nullptr) < 0; });
    expectRefused("null record", [&] { return IPD_RecordEvent(context(), nullptr) < 0; });
    expectRefused("null package", [&] { return IPD_CreateBrushFromPackage(context(), nullptr) == nullptr; });
    EXPECT_EQ((std::vector<int> { a, b, c }), (std::vector<int> { 7, 7, 7 }));
}

// The data is a single pixel: an import that read as far as its width and height claim would
// run off it, which the sanitizer build reports.
TEST_F(Robustness, ImpossibleImageSizesAreRefused)
{
    std::uint8_t pixel[4] = { 255, 255, 255, 255 };
    const std::vector<std::pair<int, int>> sizes { { 0, 1 }, { 1, 0 }, { -1, 1 }, { 1, -1 }, { INT_MIN, INT_MIN },
        { INT_MIN, -1 }, { INT_MAX, INT_MAX }, { 65536, 65536 }, { INT_MAX, 1 }, { 1, INT_MAX }, { 16385, 16385 } };
    for (const auto& size : sizes) {
        int width = size.first;
        int height = size.second;
        expectRefused(
            "size", [&] { return IPD_LayerPaint_ImportImageData(context(), kMask, pixel, width, height, 0, 0) < 0; });
    }
}

TEST_F(Robustness, ExtremeImportPositionsChangeNothing)
{
    std::vector<std::uint8_t> block = whiteImage(4, 4, 255);
    for (auto position : { std::pair { INT_MAX, INT_MAX }, std::pair { INT_MIN, INT_MIN }, std::pair { INT_MAX, 0 },
             std::pair { 0, INT_MIN }, std::pair { INT_MIN, INT_MAX } }) {
        int x = position.first;
        int y = position.second;
        expectRefused("position",
            [&] { return IPD_LayerPaint_ImportImageData(context(), kMask, block.data(), 4, 4, x, y) == 0; });
    }
    // In 32 bits INT_MAX + INT_MAX would wrap to -2 and put the block's corner on the canvas.
    ASSERT_TRUE(document.setLayerOffset(kMask, INT_MAX, INT_MAX));
    expectRefused("offset and position",
        [&] { return IPD_LayerPaint_ImportImageData(context(), kMask, block.data(), 4, 4, INT_MAX, INT_MAX) == 0; });
}

TEST_F(Robustness, OffsetAndPositionAreAddedWithoutOverflow)
{
    ASSERT_EQ(IPD_Layer_Delete(context(), kMask, 0), 0);
    ASSERT_TRUE(document.setLayerOffset(kMask, INT_MIN, INT_MIN));
    std::uint8_t block[2 * 2 * 4];
    std::fill(std::begin(block), std::end(block), 255);
    // INT_MAX + INT_MIN is -1, so the image's last pixel lands on canvas pixel (0, 0).
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(context(), kMask, block, 2, 2, INT_MAX, INT_MAX), 0);
    EXPECT_EQ(maskAt(document, 0, 0), 255);
    EXPECT_EQ(selectedCount(document), 1u);
}

TEST_F(Robustness, ExtremeCellsAreOffTheCanvas)
{
    for (auto cell : { std::pair { INT_MIN, 0 }, std::pair { 0, INT_MIN }, std::pair { INT_MAX, 0 },
             std::pair { 0, INT_MAX }, std::pair { INT_MAX, INT_MAX } }) {
        int column = cell.first;
        int row = cell.second;
        expectRefused("cell", [&] { return IPD_Layer_GetCellBuffer(context(), kMask, column, row, 0) == nullptr; });
        expectRefused("update", [&] { return IPD_Layer_UpdateCell(context(), kMask, column, row, 0) < 0; });
        expectRefused("save", [&] { return IPD_Layer_SaveCellInfo(context(), kMask, column, row) < 0; });
    }
    expectRefused("update of a cell never made", [&] { return IPD_Layer_UpdateCell(context(), kMask, 15, 12, 0) < 0; });
}

TEST_F(Robustness, BadBrushesAndStrokeArgumentsAreRefused)
{
    int onStack = 0;
    for (void* bogus : { static_cast<void*>(nullptr), static_cast<void*>(&onStack),
             static_cast<void*>(static_cast<char*>(pen) + 8), context() }) {
        expectRefused("param", [&] { return IPD_GetBrushParam(context(), bogus, 3) == 0.0f; });
        expectRefused("set param", [&] { return IPD_SetBrushParam(context(), bogus, 3, 2.0f) < 0; });
        expectRefused("stroke", [&] { return IPD_StrokeTo(context(), bogus, 0xffffff, 60, 60, 1.0f, 5.1f) < 0; });
        expectRefused("destroy", [&] { return IPD_DestroyBursh(context(), bogus) < 0; });
    }
    expectRefused("nan pressure", [&] { return IPD_StrokeTo(context(), pen, 0xffffff, 60, 60, NAN, 5.1f) < 0; });
    expectRefused("infinite time", [&] { return IPD_StrokeTo(context(), pen, 0xffffff, 60, 60, 1.0f, INFINITY) < 0; });
    EXPECT_EQ(onStack, 0);
}

TEST_F(Robustness, UnsafePackageNamesAreRefused)
{
    for (const char* name : { "../Brushes/pen_1.bru", "..", "a/../pen_1.bru", "/pen_1.bru", "./pen_1.bru", "" })
        expectRefused(name, [&] { return IPD_CreateBrushFromPackage(context(), name) == nullptr; });
}
