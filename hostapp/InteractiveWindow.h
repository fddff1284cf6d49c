// InteractiveWindow: the canvas window on screen, driven by a person's mouse and keyboard.
#pragma once

#include "entry/PluginModule.h"

#include <functional>
#include <string>

namespace hostapp {

class SessionRunner;

/// Shows the host's canvas window with the plug-in running in a real window (SDL2), turns the
/// window system's mouse, key, resize and file-drop events into kit events, runs the run loop on
/// the wall clock and redraws what changed. Ctrl+Z and Ctrl+Shift+Z (or Ctrl+Y) are the host's
/// undo and redo through the module table.
class InteractiveWindow {
public:
    explicit InteractiveWindow(const PluginModule& table) : m_table(table) {}

    using Hook = std::function<void(SessionRunner&)>;
    /// Runs until the window is closed; false with `error` set when no window can be shown
    /// (no display). `afterStart` runs once the window is up and `beforeClose` as it closes,
    /// with the session behind the window (tests feed events and look at the document there).
    bool run(std::string& error, const Hook& afterStart = {}, const Hook& beforeClose = {});

private:
    const PluginModule& m_table;
};

} // namespace hostapp
