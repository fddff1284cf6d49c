// PluginHost: dlopen, the two entry points, and the table's lifetime.
#include "hostapp/PluginHost.h"

#include "kit/Bundle.h"

#include <dlfcn.h>

#include <filesystem>

namespace hostapp {

std::unique_ptr<PluginHost> PluginHost::loadInstalled(std::string& error)
{
    const std::string bundleFile = std::string(kBundleName) + ".bundle";
    const auto path
        = std::filesystem::path(kit::Bundle::mainBundle().bundlePath()) / "Contents" / "PlugIns" / bundleFile;
    return load(path.string(), error);
}

std::unique_ptr<PluginHost> PluginHost::load(const std::string& bundlePath, std::string& error)
{
    const auto library
        = std::filesystem::path(bundlePath) / "Contents" / "lib" / ("lib" + std::string(kBundleName) + ".so");
    std::error_code ec;
    if (!std::filesystem::exists(library, ec)) {
        error = "plug-in not found: " + library.string();
        return nullptr;
    }
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        error = std::string("cannot load the plug-in: ") + dlerror();
        return nullptr;
    }
    auto getPlugin = reinterpret_cast<PluginModule* (*)()>(dlsym(handle, "GetPlugin"));
    auto deletePlugin = reinterpret_cast<void (*)(PluginModule*)>(dlsym(handle, "DeletePlugin"));
    if (!getPlugin || !deletePlugin) {
        error = "the plug-in does not export GetPlugin and DeletePlugin: " + library.string();
        return nullptr;
    }
    std::unique_ptr<PluginHost> host(new PluginHost);
    host->m_library = handle;
    host->m_table = getPlugin();
    host->m_deletePlugin = deletePlugin;
    host->m_libraryPath = library.string();
    if (!host->m_table) {
        error = "the plug-in gave no module table";
        return nullptr;
    }
    return host;
}

PluginHost::~PluginHost()
{
    if (m_table)
        m_deletePlugin(m_table);
}

} // namespace hostapp
