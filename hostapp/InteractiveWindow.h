// InteractiveWindow: the canvas window on screen, driven by a person's mouse and keyboard.
#pragma once

#include "module/PluginModule.h"

#include <functional>
#include <string>

namespace hostapp {

class SessionRunner;

/// Shows the host's canvas window with the plug-in running in a real window (SDL2), turns the
/// window system's mouse, key, wheel, resize and file-drop events into kit events and host
/// commands, runs the run loop on the wall clock and redraws only when something changed (an
/// event, a call the run loop ran, a step of the marching ants, which redraws just the
/// outline's area). Between them it sleeps. The host's keys (Ctrl+Z undo, Ctrl+Shift+Z or
/// Ctrl+Y redo, Ctrl+A all, Ctrl+D or Ctrl+Shift+A none, Ctrl+Shift+I invert, Ctrl+S save,
/// Ctrl+0 fit, Ctrl+1 100 %) and Space+drag never reach a text field being edited, nor the
/// field's keys the host.
class InteractiveWindow {
public:
    /// `picture`, when not empty, is opened as the canvas picture once the window is up.
    explicit InteractiveWindow(const PluginModule& table, std::string picture = {})
        : m_table(table), m_picture(std::move(picture))
    {
    }

    using Hook = std::function<void(SessionRunner&)>;
    /// Runs until the window is closed; false with `error` set when no window can be shown
    /// (no display). `afterStart` runs once the window is up and `beforeClose` as it closes,
    /// with the session behind the window (tests feed events and look at the document there).
    bool run(std::string& error, const Hook& afterStart = {}, const Hook& beforeClose = {});

private:
    const PluginModule& m_table;
    std::string m_picture;
};

} // namespace hostapp
