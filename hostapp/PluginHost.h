// PluginHost: loads the selection plug-in bundle and holds its module table.
#pragma once

#include "module/PluginModule.h"

#include <memory>
#include <string>

namespace hostapp {

class PluginHost {
public:
    static constexpr const char* kBundleName = "QuillmarkPlugin_Selection";

    /// Loads the bundle from the application's plug-ins folder (Contents/PlugIns).
    static std::unique_ptr<PluginHost> loadInstalled(std::string& error);
    /// Loads the bundle folder at `bundlePath`.
    static std::unique_ptr<PluginHost> load(const std::string& bundlePath, std::string& error);
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    const PluginModule& table() const { return *m_table; }
    const std::string& libraryPath() const { return m_libraryPath; }

private:
    PluginHost() = default;
    // The library stays loaded for the life of the process: views and delayed calls that it
    // made may outlive this object.
    void* m_library = nullptr;
    PluginModule* m_table = nullptr;
    void (*m_deletePlugin)(PluginModule*) = nullptr;
    std::string m_libraryPath;
};

} // namespace hostapp
