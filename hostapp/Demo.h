// Demo: the built-in session that `quillmark-host demo` runs.
#pragma once

#include <string_view>

namespace hostapp {

/// The demo's session script.
std::string_view demoScript();

} // namespace hostapp
