// EngineTestSupport: small helpers shared by the engine tests.
#pragma once

#include "engine/Document.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace enginetest {

inline constexpr int kMask = engine::Document::kSelectionMaskLayerId;
inline constexpr int kPaint = engine::Document::kPaintLayerId;

/// A width x height image of premultiplied white with the given alpha.
std::vector<std::uint8_t> whiteImage(int width, int height, std::uint8_t alpha);
/// The selection mask's alpha at a canvas pixel.
int maskAt(const engine::Document& document, int x, int y);
/// How many canvas pixels of the selection mask are not transparent.
std::size_t selectedCount(const engine::Document& document);
/// The brush packages the build ships.
std::filesystem::path shippedBrushDirectory();
/// A fresh, empty directory for one test's files.
std::filesystem::path scratchDirectory(const char* name);

} // namespace enginetest
