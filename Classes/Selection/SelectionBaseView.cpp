// SelectionBaseView: defaults shared by the five tool views.
#include "Classes/Selection/SelectionBaseView.h"

#include "Classes/Selection/InUnresponsiveArea.h"
#include "kit/Cursor.h"
#include "kit/Event.h"

SelectionBaseView::SelectionBaseView(const kit::Rect& frame) : DragsToContentView<kit::View>(frame)
{
    registerForDraggedTypes({ kit::FilenamesPboardType });
}

SelectionBaseView::~SelectionBaseView() { unregisterDraggedTypes(); }

void SelectionBaseView::initData()
{
    m_options = nullptr;
    m_QMContext = nullptr;
    m_bUnresposiveArea = false;
}

void SelectionBaseView::mouseDown(const kit::Event& event)
{
    const kit::Point p = event.locationInWindow();
    m_bUnresposiveArea = InUnresponsiveArea(p.x, p.y);
}

bool SelectionBaseView::beginPress(const kit::Event& event)
{
    SelectionBaseView::mouseDown(event);
    if (!m_bUnresposiveArea)
        return true;
    kit::View::mouseDown(event);
    return false;
}

void SelectionBaseView::mouseDragged(const kit::Event& event)
{
    if (m_bUnresposiveArea)
        kit::View::mouseDragged(event);
}

void SelectionBaseView::mouseUp(const kit::Event& event)
{
    if (m_bUnresposiveArea)
        kit::View::mouseUp(event);
}

void SelectionBaseView::mouseMoved(const kit::Event& event) { kit::View::mouseMoved(event); }

void SelectionBaseView::mouseEntered(const kit::Event&) { kit::Cursor::arrowCursor()->set(); }

void SelectionBaseView::mouseExited(const kit::Event&) { kit::Cursor::crosshairCursor()->set(); }

void SelectionBaseView::cursorUpdate(const kit::Event&) {}

void SelectionBaseView::setCursor(const kit::Event&) { kit::Cursor::crosshairCursor()->set(); }

void SelectionBaseView::dealPlay(SelectionEventRecord*) {}
