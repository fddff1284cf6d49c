// SessionRunner: carries out a session script against the plug-in and a fresh document.
#pragma once

#include "hostapp/CanvasWindow.h"
#include "hostapp/SessionScript.h"
#include "kit/Event.h"
#include "module/PluginModule.h"

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace hostapp {

class SessionRunner {
public:
    /// Output files named by the script are placed relative to `outDir`.
    SessionRunner(const PluginModule& table, std::filesystem::path outDir, std::ostream& report);
    /// Destroys a controller that is still alive.
    ~SessionRunner();
    SessionRunner(const SessionRunner&) = delete;
    SessionRunner& operator=(const SessionRunner&) = delete;

    /// Runs the commands in order; stops at the first failure with "SOURCE:LINE: message".
    /// What was written before the failure stays.
    bool run(const SessionScript& script, std::string& error);

    CanvasWindow& canvas() { return *m_canvas; }
    engine::Document& document() { return m_canvas->document(); }
    /// The plug-in handle, null before the first run and after destroy.
    void* handle() const { return m_handle; }
    /// Hands every record of a saved log to the play slot, in order; the count, or -1.
    int replayLog(const std::filesystem::path& path, std::string& problem);
    bool saveMask(const std::filesystem::path& path, std::string& problem);
    bool saveLog(const std::filesystem::path& path, std::string& problem);
    /// A PNG of the window's content: canvas, selection, the host's controls and the overlay.
    bool saveWindow(const std::filesystem::path& path, std::string& problem);
    /// A PNG of the current cursor's image; refused for the system cursors, which have none.
    bool saveCursor(const std::filesystem::path& path, std::string& problem);

private:
    bool execute(const SessionCommand& command, std::string& problem);
    bool applySetting(const SessionCommand& command, std::string& problem);
    /// open, filter and save-picture.
    bool editPicture(const SessionCommand& command, std::string& problem);
    /// Mouse and key commands; false for any other command.
    bool handleInput(const SessionCommand& command);
    void sendMouse(kit::EventType type, const std::vector<double>& numbers, int clicks);
    void sendKey(const std::string& characters, unsigned short keyCode);
    static std::pair<std::string, unsigned short> keyFor(const std::string& name);
    static std::vector<std::string> splitCharacters(const std::string& text);
    std::filesystem::path outputPath(const std::string& name) const;
    void destroyController();

    const PluginModule& m_table;
    std::filesystem::path m_outDir;
    std::ostream& m_report;
    std::unique_ptr<CanvasWindow> m_canvas;
    void* m_handle = nullptr;
    bool m_everRun = false;
    int m_clickCount = 1;
};

} // namespace hostapp
