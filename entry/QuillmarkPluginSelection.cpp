// QuillmarkPluginSelection: run, stop and the overlay's lifetime.
#include "entry/QuillmarkPluginSelection.h"

#include "Classes/Selection/SelectionMainView.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

namespace {

// The overlay goes on screen this long after the first run.
constexpr double kAddDelaySeconds = 0.5;

} // namespace

kit::RefPtr<QuillmarkPluginSelection> QuillmarkPluginSelection::create()
{
    auto controller = kit::adoptRef(new QuillmarkPluginSelection);
    controller->initData();
    return controller;
}

QuillmarkPluginSelection::~QuillmarkPluginSelection()
{
    if (m_pluginMainView) {
        m_pluginMainView->removeFromSuperview();
        m_pluginMainView.clear();
    }
}

void QuillmarkPluginSelection::initData()
{
    m_QMContext = nullptr;
    m_parentWindow = nullptr;
    m_bActive = false;
    m_pluginMainView.clear();
}

void QuillmarkPluginSelection::run()
{
    if (m_bActive)
        return;
    m_bActive = true;
    if (m_pluginMainView) {
        m_pluginMainView->setHidden(false);
        return;
    }
    kit::Rect frame;
    auto* window = static_cast<kit::Window*>(m_parentWindow);
    if (window) {
        const kit::Rect content = window->contentRectForFrameRect(window->frame());
        frame = { 0, 0, content.width(), content.height() };
    }
    auto overlay = kit::make<SelectionMainView>(frame);
    overlay->setQMContext(m_QMContext);
    if (!window)
        overlay->setHidden(true);
    overlay->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
    m_pluginMainView = overlay;
    kit::RunLoop::main().performAfterDelay(this, &QuillmarkPluginSelection::addPluginMainView, kAddDelaySeconds);
}

void QuillmarkPluginSelection::stop()
{
    m_bActive = false;
    if (m_pluginMainView)
        m_pluginMainView->setHidden(true);
}

void QuillmarkPluginSelection::addPluginMainView()
{
    if (!m_pluginMainView)
        return;
    m_pluginMainView->setWantsLayer(true);
    auto* window = static_cast<kit::Window*>(m_parentWindow);
    if (kit::View* content = window ? window->contentView() : nullptr)
        content->addSubview(m_pluginMainView.get());
}

void QuillmarkPluginSelection::undo(void* argument)
{
    if (m_pluginMainView)
        m_pluginMainView->undo(argument);
}

void QuillmarkPluginSelection::redo(void* argument)
{
    if (m_pluginMainView)
        m_pluginMainView->redo(argument);
}

void QuillmarkPluginSelection::play(void* record)
{
    if (m_pluginMainView)
        m_pluginMainView->dealPlay(static_cast<SelectionEventRecord*>(record));
}
