// DocumentSnapshot: everything observable about a document, to show that a refused call changed nothing.
#pragma once

#include "engine/Document.h"

#include <cstdint>
#include <ostream>
#include <vector>

/// Captured through the public API only, so it sees what a host or plug-in could see.
struct DocumentSnapshot {
    explicit DocumentSnapshot(const engine::Document& document);

    std::vector<std::uint8_t> mask;
    std::vector<std::uint8_t> paint;
    std::size_t maskCells;
    std::size_t paintCells;
    std::size_t undoDepth;
    std::size_t redoDepth;
    bool openStep;
    std::uint64_t revision;
    std::size_t logSize;
    std::size_t brushes;
    bool routing;
    int maskOffsetX = 0;
    int maskOffsetY = 0;
    engine::ViewRect view;
    engine::ViewSize viewSize;

    bool operator==(const DocumentSnapshot&) const = default;
};

std::ostream& operator<<(std::ostream& out, const DocumentSnapshot& snapshot);
