// CanvasWindow: window set-up and resizing.
#include "hostapp/CanvasWindow.h"

#include "kit/Application.h"
#include "kit/Event.h"

namespace hostapp {

CanvasWindow::CanvasWindow(kit::Size contentSize)
    : m_window(kit::Window::create({ 0, 0, contentSize.width, contentSize.height }))
    , m_document(std::make_unique<engine::Document>())
{
    m_window->setTitle("Quillmark");
    m_canvasView = kit::make<CanvasView>(kit::Rect { 0, 0, contentSize.width, contentSize.height });
    m_canvasView->setDocument(m_document.get());
    m_window->setContentView(m_canvasView.get());
    // Keys that no tool takes end at the canvas, which passes their releases on as "keyUp".
    m_window->makeFirstResponder(m_canvasView.get());
    kit::Application::shared().setMainWindow(m_window.get());
}

CanvasWindow::~CanvasWindow()
{
    if (kit::Application::shared().mainWindow() == m_window.get())
        kit::Application::shared().setMainWindow(nullptr);
}

void CanvasWindow::sendEvent(const kit::Event& event)
{
    m_window->sendEvent(event);
    const kit::EventType type = event.type();
    if (type == kit::EventType::LeftMouseUp || type == kit::EventType::RightMouseUp || type == kit::EventType::KeyUp)
        m_document->endGesture();
}

void CanvasWindow::refreshCursor(kit::Point pointer, double timestamp)
{
    kit::View* content = m_window->contentView();
    const kit::Event entered = kit::Event::tracking(kit::EventType::MouseEntered, pointer, nullptr, timestamp);
    const auto& subviews = content->subviews();
    for (auto it = subviews.rbegin(); it != subviews.rend(); ++it) {
        if (!(*it)->isHidden() && kit::PointInRect(pointer, (*it)->frame())) {
            (*it)->mouseEntered(entered);
            return;
        }
    }
    content->mouseEntered(entered);
}

void CanvasWindow::setContentSize(kit::Size size)
{
    const kit::Rect frame = m_window->frame();
    m_window->setFrame(m_window->frameRectForContentRect({ frame.origin, size }));
}

} // namespace hostapp
