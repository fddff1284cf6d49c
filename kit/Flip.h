// Flip: the one conversion between y-up drawing space and top-row-first bitmap memory.
#pragma once

namespace kit {

/// Drawing space has its origin at the bottom left and y going up; bitmap memory keeps its top
/// row first. In a bitmap `height` rows high, drawing-space y and memory-space y (0 at the top
/// edge of row 0) map onto each other by this same function, both ways: memory row r covers
/// drawing-space y from height - r - 1 to height - r.
constexpr double flippedY(double y, double height) { return height - y; }

} // namespace kit
