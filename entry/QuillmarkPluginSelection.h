// QuillmarkPluginSelection: the controller behind each plug-in handle.
#pragma once

#include "entry/PluginProtocol.h"
#include "kit/Responder.h"

class SelectionMainView;

/// Puts the selection overlay over the host's canvas window while the plug-in runs and
/// hands undo, redo and replay to it.
class QuillmarkPluginSelection final : public kit::Responder, public PluginProtocol {
public:
    /// `init`: a new controller with its fields at their start values.
    static kit::RefPtr<QuillmarkPluginSelection> create();

    void initData();
    void setQMContext(void* context) { m_QMContext = context; }
    void setParentWindow(void* window) { m_parentWindow = window; }
    bool isActive() const { return m_bActive; }

    void run() override;
    void stop() override;
    void undo(void* argument) override;
    void redo(void* argument) override;
    void play(void* record) override;

    /// Adds the overlay to the window; only the delayed call that the first run schedules calls it.
    void addPluginMainView();

    SelectionMainView* pluginMainView() const { return m_pluginMainView.get(); }
    void* qmContext() const { return m_QMContext; }
    void* parentWindow() const { return m_parentWindow; }

private:
    QuillmarkPluginSelection() = default;
    ~QuillmarkPluginSelection() override;

    void* m_QMContext = nullptr;
    void* m_parentWindow = nullptr;
    bool m_bActive = false;
    kit::RefPtr<SelectionMainView> m_pluginMainView;
};
