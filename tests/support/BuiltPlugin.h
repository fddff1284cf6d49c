// BuiltPlugin: the plug-in bundle of the build the tests run in.
#pragma once

#include "hostapp/PluginHost.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

/// The build folder ctest names in QM_BUILD_DIR, or the current folder.
inline std::filesystem::path builtTreeFolder()
{
    const char* build = std::getenv("QM_BUILD_DIR");
    return build ? std::filesystem::path(build) : std::filesystem::current_path();
}

/// Loads the bundle from the build's application tree.
inline std::unique_ptr<hostapp::PluginHost> loadBuiltPlugin(std::string& error)
{
    return hostapp::PluginHost::load(
        (builtTreeFolder() / "Quillmark.app/Contents/PlugIns/QuillmarkPlugin_Selection.bundle").string(), error);
}
