// EngineExport: marks the engine's public C++ API as visible outside the shared library.
#pragma once

/// Gives a class or function default visibility; everything else in the library stays hidden.
#define ENGINE_API __attribute__((visibility("default")))
