// DocumentTest: the host's view of a document through IPD_ queries, and the call journal.
#include "engine/Document.h"
#include "host/HostEngine.h"
#include "tests/engine/EngineTestSupport.h"

#include <gtest/gtest.h>

#include <climits>

using engine::Document;
using namespace enginetest;

TEST(DocumentView, DefaultsAsAHostWithoutSettingsSeesThem)
{
    Document document;
    int x = -1, y = -1, width = -1, height = -1;
    ASSERT_EQ(IPD_GetPos(document.context(), &x, &y, &width, &height), 0);
    EXPECT_EQ((std::vector<int> { x, y, width, height }), (std::vector<int> { 0, 0, 1000, 800 }));
    ASSERT_EQ(IPD_GetCanvasSize(document.context(), &width, &height), 0);
    EXPECT_EQ(width, 1000);
    EXPECT_EQ(height, 800);
    for (int layer : { kPaint, kMask }) {
        ASSERT_EQ(IPD_Layer_GetOffset(document.context(), layer, &x, &y), 0);
        EXPECT_EQ(x, 0);
        EXPECT_EQ(y, 0);
    }
    EXPECT_EQ(IPD_GetSelectionMaskID(document.context()), kMask);
    EXPECT_EQ(document.maskAlpha().size(), 1000u * 800u);
    EXPECT_FALSE(document.selectionRouting());
}

TEST(DocumentView, HostSettingsReachTheQueries)
{
    Document document;
    ASSERT_TRUE(document.setViewRect({ -20, 35, 500, 400 }));
    ASSERT_TRUE(document.setViewSize({ 1000, 800 })); // zoom 2
    ASSERT_TRUE(document.setLayerOffset(kMask, INT_MIN, INT_MAX));
    int x = 0, y = 0, width = 0, height = 0;
    ASSERT_EQ(IPD_GetPos(document.context(), &x, &y, &width, &height), 0);
    EXPECT_EQ((std::vector<int> { x, y, width, height }), (std::vector<int> { -20, 35, 500, 400 }));
    ASSERT_EQ(IPD_GetCanvasSize(document.context(), &width, &height), 0);
    EXPECT_EQ(width, 1000);
    ASSERT_EQ(IPD_Layer_GetOffset(document.context(), kMask, &x, &y), 0);
    EXPECT_EQ(x, INT_MIN);
    EXPECT_EQ(y, INT_MAX);
}

TEST(DocumentView, RefusesImpossibleSizesAndKeepsTheOldOnes)
{
    Document document;
    EXPECT_FALSE(document.setViewRect({ 0, 0, 0, 10 }));
    EXPECT_FALSE(document.setViewSize({ 10, -1 }));
    for (auto [width, height] : { std::pair { 0, 10 }, std::pair { 10, -5 }, std::pair { INT_MIN, INT_MIN },
             std::pair { Document::kMaxCanvasSide + 1, 1 },
             std::pair { Document::kMaxCanvasSide, Document::kMaxCanvasSide } })
        EXPECT_FALSE(document.setCanvasSize(width, height)) << width << "x" << height;
    EXPECT_FALSE(document.setLayerOffset(3, 1, 1));
    EXPECT_EQ(document.viewRect(), (engine::ViewRect { 0, 0, 1000, 800 }));
    EXPECT_EQ(document.viewSize(), (engine::ViewSize { 1000, 800 }));
    EXPECT_EQ(document.canvasWidth(), 1000);
    EXPECT_EQ(document.canvasHeight(), 800);
}

TEST(DocumentView, AResizedCanvasClipsImportsAndImages)
{
    Document document;
    ASSERT_TRUE(document.setCanvasSize(70, 30));
    std::vector<std::uint8_t> image = whiteImage(100, 100, 255);
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(document.context(), kMask, image.data(), 100, 100, 0, 0), 0);
    EXPECT_EQ(document.maskAlpha().size(), 70u * 30u);
    EXPECT_EQ(selectedCount(document), 70u * 30u);
    EXPECT_EQ(document.cellCount(kMask), 2u);
}

TEST(DocumentContext, OnlyLiveDocumentsAreContexts)
{
    auto document = std::make_unique<Document>();
    void* context = document->context();
    EXPECT_EQ(Document::fromContext(context), document.get());
    int local = 0;
    EXPECT_EQ(Document::fromContext(&local), nullptr);
    EXPECT_EQ(Document::fromContext(nullptr), nullptr);
    document.reset();
    EXPECT_EQ(Document::fromContext(context), nullptr);
    EXPECT_LT(IPD_GetSelectionMaskID(context), 0);
}

TEST(DocumentContext, DocumentsDoNotShareState)
{
    Document first;
    Document second;
    std::vector<std::uint8_t> image = whiteImage(8, 8, 255);
    ASSERT_EQ(IPD_LayerPaint_ImportImageData(first.context(), kMask, image.data(), 8, 8, 0, 0), 0);
    ASSERT_EQ(IPD_EnableSeletionLayerOperation(first.context(), 1), 0);
    EXPECT_EQ(selectedCount(second), 0u);
    EXPECT_FALSE(second.selectionRouting());
    EXPECT_LT(IPD_UndoStroke(second.context()), 0);
    EXPECT_EQ(selectedCount(first), 64u);
}

TEST(DocumentRouting, FlagIsZeroOrOne)
{
    Document document;
    EXPECT_EQ(IPD_EnableSeletionLayerOperation(document.context(), 0), 0) << "0 while off is fine";
    EXPECT_EQ(IPD_EnableSeletionLayerOperation(document.context(), 1), 0);
    EXPECT_EQ(document.activeLayer(), kMask);
    EXPECT_LT(IPD_EnableSeletionLayerOperation(document.context(), 2), 0);
    EXPECT_LT(IPD_EnableSeletionLayerOperation(document.context(), -1), 0);
    EXPECT_TRUE(document.selectionRouting());
    EXPECT_EQ(IPD_EnableSeletionLayerOperation(document.context(), 0), 0);
    EXPECT_EQ(document.activeLayer(), kPaint);
}

TEST(DocumentJournal, RecordsEveryCallInOrderOnlyWhileEnabled)
{
    Document document;
    document.setBrushDirectory(shippedBrushDirectory());
    std::vector<std::uint8_t> image = whiteImage(64, 64, 255);
    IPD_GetSelectionMaskID(document.context());
    document.setJournalEnabled(true);
    IPD_EnableSeletionLayerOperation(document.context(), 1);
    IPD_Layer_Delete(document.context(), kMask, 0);
    IPD_LayerPaint_ImportImageData(document.context(), kMask, image.data(), 64, 64, 10, 20);
    IPD_StartRefreshingActiveLayer(document.context());
    void* pen = IPD_CreateBrushFromPackage(document.context(), "pen_1.bru");
    IPD_SetBrushParam(document.context(), pen, 3, 1.5f);
    IPD_BeginOneStroke(document.context());
    IPD_StrokeTo(document.context(), pen, 0xff00, 5, 6, 1.0f, 5.1f);
    IPD_EndOneStroke(document.context());
    IPD_Layer_GetCellBuffer(document.context(), kMask, 1, 2, 0);
    IPD_UndoStroke(document.context());
    IPD_RecordEvent(document.context(), nullptr);
    IPD_DestroyBursh(document.context(), pen);
    document.setJournalEnabled(false);
    IPD_RedoStroke(document.context());

    const std::vector<std::string> expected {
        "IPD_EnableSeletionLayerOperation 1",
        "IPD_Layer_Delete 2 0",
        "IPD_LayerPaint_ImportImageData 2 64x64 at 10,20",
        "IPD_StartRefreshingActiveLayer",
        "IPD_CreateBrushFromPackage pen_1.bru",
        "IPD_SetBrushParam brush1 3 1.5",
        "IPD_BeginOneStroke",
        "IPD_StrokeTo brush1 00ff00 5,6 1 5.1",
        "IPD_EndOneStroke",
        "IPD_Layer_GetCellBuffer 2 1,2",
        "IPD_UndoStroke",
        "IPD_RecordEvent (null)",
        "IPD_DestroyBursh brush1",
    };
    EXPECT_EQ(document.journal(), expected);
    document.clearJournal();
    EXPECT_TRUE(document.journal().empty());
}
