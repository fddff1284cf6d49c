// Demo: the built-in session that `quillmark-host demo` runs.
#pragma once

#include "module/PluginModule.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>

namespace hostapp {

/// The demo's session: marquee selections made through the option bar as a person would, and
/// the picture (demo-picture.png, which runDemo writes first) blurred through them.
std::string_view demoScript();
/// The second half: the first session's log replayed onto a fresh document.
std::string_view demoReplayScript();

/// Runs both sessions into `outDir`, then checks that the replayed mask and picture equal the
/// originals pixel for pixel. False with `error` set when a step fails or the masks differ.
bool runDemo(const PluginModule& table, const std::filesystem::path& outDir, std::ostream& report, std::string& error);

} // namespace hostapp
