// RectangleSelectionView: the marquee gesture, its outline and read-out, the commit and replay.
#include "Classes/Selection/RectangleSelectionView.h"

#include "Classes/Selection/FloatConversion.h"
#include "Classes/Selection/MaskCommit.h"
#include "Classes/Selection/RectangleSelectionOptions.h"
#include "Classes/Selection/SelectionAssert.h"
#include "Classes/Selection/SelectionMainView.h"
#include "entry/ResourceHelpers.h"
#include "host/HostEngine.h"
#include "kit/BezierPath.h"
#include "kit/Bundle.h"
#include "kit/Color.h"
#include "kit/ImageView.h"
#include "kit/TextField.h"
#include "kit/Utf8.h"

#include <algorithm>
#include <cmath>

namespace {

// The marquee types are the panel's.
constexpr int kTypeFixedRatio = RectangleSelectionOptions::kTypeFixedRatio;
constexpr int kTypeFixedSize = RectangleSelectionOptions::kTypeFixedSize;
// The read-out: 45 points high, 20 points from the cursor, value fields 30 points narrower.
constexpr float kReadOutHeight = 45;
constexpr float kReadOutGap = 20;
constexpr int kReadOutCaptionSpace = 30;

int decimalDigits(int value)
{
    int digits = 1;
    for (long long v = std::max(value, 0); v >= 10; v /= 10)
        ++digits;
    return digits;
}

} // namespace

void RectangleSelectionView::initData()
{
    m_bIntermediate = false;
    m_prevPoint = {};
    m_currentPoint = {};
    m_selectionLogicRect = {};
    m_selectionCanvasViewRect = {};
    m_nShowValueLabelWidth = 100;
    m_nSelectionWidth = 0;
    m_nSelectionHeight = 0;
    m_bMoveSelection = false;
}

void RectangleSelectionView::makeLabel(kit::TextField*& field, const kit::Rect& frame, const char* title)
{
    auto label = kit::TextField::create(frame);
    label->setAlignment(kit::RightTextAlignment);
    label->setTextColor(kit::Color::whiteColor());
    label->setDrawsBackground(false);
    label->setBackgroundColor(kit::Color::clearColor());
    label->setBordered(false);
    label->setEditable(false);
    label->setSelectable(false); // a read-out, never a place to click into
    label->setTitle(title);
    m_viewShowSize->addSubview(label.get());
    field = label.get();
}

void RectangleSelectionView::initView()
{
    const float width = float(m_nShowValueLabelWidth + kReadOutCaptionSpace);
    auto readOut = kit::View::create({ 0, 0, width, kReadOutHeight });
    readOut->setHidden(true);
    addSubview(readOut.get());
    m_viewShowSize = readOut.get();

    auto background = kit::make<kit::ImageView>(kit::Rect { 0, 0, width, kReadOutHeight });
    background->setImage(myLibraryImageNamed("showSizeBg.png"));
    background->setImageScaling(kit::ImageScaleAxesIndependently);
    m_viewShowSize->addSubview(background.get());
    m_bgImageView = background.get();

    kit::TextField* widthCaption = nullptr;
    kit::TextField* heightCaption = nullptr;
    const float valueWidth = float(m_nShowValueLabelWidth);
    makeLabel(widthCaption, { 5, 22, 20, 17.5f }, "W:");
    makeLabel(m_labelWidthValue, { 25, 22, valueWidth, 17.5f }, "");
    makeLabel(heightCaption, { 5, 5, 20, 17.5f }, "H:");
    makeLabel(m_labelHeightValue, { 25, 5, valueWidth, 17.5f }, "");
    m_labelWidthValue->setLineBreakMode(kit::LineBreakByCharWrapping);
    m_labelHeightValue->setLineBreakMode(kit::LineBreakByCharWrapping);
}

RectangleSelectionView::Options RectangleSelectionView::readOptions() const
{
    Options o;
    auto* panel = dynamic_cast<RectangleSelectionOptions*>(m_options);
    if (!panel)
        return o;
    o.mode = panel->selectionMode();
    o.type = panel->SelectionType();
    o.feather = panel->feather();
    panel->getSelectionRatioHeightRatio(o.widthRatio, o.heightRatio);
    o.fixedSize = panel->getSelectionFixedSize();
    return o;
}

void RectangleSelectionView::updateSelection()
{
    setSelectionSize();
    calculateSelectionRect();
    setNeedsDisplay(true);
    setShowSizeViewUI();
}

void RectangleSelectionView::mouseDown(const kit::Event& event)
{
    SelectionBaseView::mouseDown(event);
    m_prevPoint = m_currentPoint = event.locationInWindow();
    if (m_bUnresposiveArea) {
        kit::View::mouseDown(event);
        return;
    }
    m_bIntermediate = true;
    const Options o = readOptions();
    if (o.mode == kModeAdd && o.type == kTypeFixedSize)
        updateSelection(); // a fixed box shows at the press at once
    else if (o.mode == kModeNew && !m_bMoveSelection)
        IPD_Layer_Delete(m_QMContext, IPD_GetSelectionMaskID(m_QMContext), 0);
}

void RectangleSelectionView::mouseDragged(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseDragged(event);
        return;
    }
    m_currentPoint = event.locationInWindow();
    m_bIntermediate = true;
    if (readOptions().mode == kModeNew && m_bMoveSelection)
        return;
    updateSelection();
}

void RectangleSelectionView::mouseUp(const kit::Event& event)
{
    if (m_bUnresposiveArea) {
        kit::View::mouseUp(event);
        return;
    }
    m_currentPoint = event.locationInWindow();
    m_bIntermediate = false;
    if (readOptions().mode == kModeNew && m_bMoveSelection)
        return;
    updateSelection();
    if (m_selectionCanvasViewRect.width() == 0 || m_selectionCanvasViewRect.height() == 0)
        return;
    commitSelection();
}

void RectangleSelectionView::commitSelection()
{
    const float f = readOptions().feather;
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const int nRet = createImageBuffer(buffer, origin, m_selectionCanvasViewRect, f);
    if (nRet < 0)
        return;
    assertRasterised(nRet, "mouseUp");
    CommitSelectionMask(m_QMContext, buffer, origin);

    SelectionEventRecord record;
    record.param2 = float(toolNumber());
    record.param3 = m_selectionCanvasViewRect.x();
    record.param4 = m_selectionCanvasViewRect.y();
    record.param5 = m_selectionCanvasViewRect.width();
    record.param6 = m_selectionCanvasViewRect.height();
    record.param8 = f;
    RecordSelectionEvent(m_QMContext, record);
}

void RectangleSelectionView::setSelectionSize()
{
    const Options o = readOptions();
    const float k = SelectionMainView::canvasZoom(m_QMContext);
    if (o.type == kTypeFixedSize) {
        m_nSelectionWidth = truncateToInt(o.fixedSize.width);
        m_nSelectionHeight = truncateToInt(o.fixedSize.height);
        return;
    }
    m_nSelectionWidth = truncateToInt(ieeeDivide(std::fabs(m_currentPoint.x - m_prevPoint.x), k));
    m_nSelectionHeight = truncateToInt(ieeeDivide(std::fabs(m_currentPoint.y - m_prevPoint.y), k));
    if (o.type != kTypeFixedRatio)
        return;
    // The box shrinks along one side to the ratio and never grows.
    const float w = float(m_nSelectionWidth);
    const float h = float(m_nSelectionHeight);
    const float r = ieeeDivide(o.widthRatio, o.heightRatio);
    const float q = ieeeDivide(w, h);
    if (r > q)
        m_nSelectionHeight = truncateToInt(ieeeDivide(o.heightRatio * w, o.widthRatio));
    else if (q > r)
        m_nSelectionWidth = truncateToInt(ieeeDivide(o.widthRatio * h, o.heightRatio));
}

void RectangleSelectionView::calculateSelectionRect()
{
    const Options o = readOptions();
    const float k = SelectionMainView::canvasZoom(m_QMContext);
    const float height = float(m_nSelectionHeight) * k;
    float x, y;
    if (o.type == kTypeFixedSize) {
        x = std::trunc(m_currentPoint.x); // the fixed box hangs from the cursor by its top-left corner
        y = std::trunc(m_currentPoint.y) - height;
    } else {
        x = std::trunc(std::min(m_prevPoint.x, m_currentPoint.x));
        y = std::trunc(std::min(m_prevPoint.y, m_currentPoint.y));
    }
    m_selectionLogicRect = m_bIntermediate ? kit::Rect { x, y, float(m_nSelectionWidth) * k, height } : kit::Rect {};

    IPD_EnableSeletionLayerOperation(m_QMContext, 0);
    kit::Point topLeft { x, y + height };
    if (const SelectionCanvas* overlay = canvas())
        topLeft = overlay->convertPointNSViewToCavansView(topLeft);
    int offsetX = 0, offsetY = 0;
    IPD_Layer_GetOffset(m_QMContext, IPD_GetSelectionMaskID(m_QMContext), &offsetX, &offsetY);
    m_selectionCanvasViewRect = { topLeft.x - float(offsetX), topLeft.y - float(offsetY), float(m_nSelectionWidth),
        float(m_nSelectionHeight) };
}

void RectangleSelectionView::setShowSizeViewUI()
{
    if (!m_bIntermediate || readOptions().type == kTypeFixedSize) {
        m_viewShowSize->setHidden(true);
        return;
    }
    const std::string unit = kit::Bundle::mainBundle().localizedString("Pixels", "", "");
    const int n = decimalDigits(std::max(m_nSelectionWidth, m_nSelectionHeight));
    const int total = 48 + 6 * n + 6 * int(kit::characterCount(unit));
    m_nShowValueLabelWidth = total - kReadOutCaptionSpace;

    float x = m_currentPoint.x + kReadOutGap;
    const float y = m_currentPoint.y + kReadOutGap;
    if (m_prevPoint.x > m_currentPoint.x && m_prevPoint.y > m_currentPoint.y)
        x = m_currentPoint.x - kReadOutGap - float(total); // keep it off the box when dragging left and down
    m_viewShowSize->setFrame({ x, y, float(total), kReadOutHeight });
    m_viewShowSize->setHidden(false);

    const float valueWidth = float(m_nShowValueLabelWidth);
    m_labelWidthValue->setFrame({ 25, 22, valueWidth, 17.5f });
    m_labelHeightValue->setFrame({ 25, 5, valueWidth, 17.5f });
    m_labelWidthValue->setTitle(std::to_string(m_nSelectionWidth) + " " + unit);
    m_labelHeightValue->setTitle(std::to_string(m_nSelectionHeight) + " " + unit);
}

void RectangleSelectionView::drawRect(const kit::Rect& dirty)
{
    SelectionBaseView::drawRect(dirty);
    drawOutline(m_selectionLogicRect);
}

void RectangleSelectionView::drawOutline(const kit::Rect& rect) const
{
    strokeDashed(*kit::BezierPath::bezierPathWithRect(rect));
}

void RectangleSelectionView::strokeDashed(kit::BezierPath& path)
{
    // 4 points drawn, 3 left out, always from phase 0, so the pattern stands still between redraws.
    static const float fLengths[] = { 4.0f, 3.0f };
    path.setLineDashCountPhase(fLengths, 2, 0);
    kit::Color::blackColor().setStroke();
    path.stroke();
}

void RectangleSelectionView::assertRasterised(int nRet, const char* operation) const
{
    if (nRet != 0)
        selection::assertionFailed("nRet == 0", operation, __FILE__, __LINE__);
}

int RectangleSelectionView::createImageBuffer(
    IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect box, float feather) const
{
    return CreateImageBufferFromRect(buffer, origin, box, kOpaqueWhite, true, kOpaqueWhite, feather);
}

void RectangleSelectionView::dealPlay(SelectionEventRecord* record)
{
    if (!record)
        return;
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    const kit::Rect box { record->param3, record->param4, record->param5, record->param6 };
    const int nRet = createImageBuffer(buffer, origin, box, record->param8);
    if (nRet < 0)
        return; // nothing to commit: refused
    assertRasterised(nRet, "dealPlay");
    CommitSelectionMask(m_QMContext, buffer, origin);
    IPD_RecordEvent(m_QMContext, record);
}
