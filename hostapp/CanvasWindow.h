// CanvasWindow: the host's canvas window and the engine document shown in it.
#pragma once

#include "engine/Document.h"
#include "hostapp/CanvasView.h"
#include "kit/Window.h"

#include <memory>

namespace hostapp {

class CanvasWindow {
public:
    /// A window whose content area is `contentSize`, made the application's main window.
    explicit CanvasWindow(kit::Size contentSize);
    ~CanvasWindow();
    CanvasWindow(const CanvasWindow&) = delete;
    CanvasWindow& operator=(const CanvasWindow&) = delete;

    kit::Window& window() { return *m_window; }
    engine::Document& document() { return *m_document; }
    CanvasView& canvasView() { return *m_canvasView; }
    /// Dispatches a mouse or key event of the person at the window. A release ends the gesture:
    /// whatever it changed is one undo step, even when the plug-in closed none.
    void sendEvent(const kit::Event& event);
    /// Resizes the content area; views with autoresizing masks follow.
    void setContentSize(kit::Size size);
    /// Lets the topmost view under the pointer choose the cursor afresh, as the host does after
    /// the pointer moves without a button or a button is released: a tool's cursor then follows
    /// a change of zoom or of its options without the pointer having to cross a control.
    void refreshCursor(kit::Point pointer, double timestamp);

private:
    kit::RefPtr<kit::Window> m_window;
    std::unique_ptr<engine::Document> m_document;
    kit::RefPtr<CanvasView> m_canvasView;
};

} // namespace hostapp
