// PixelRect: a half-open pixel rectangle in 64-bit coordinates, so that no offset overflows.
#pragma once

#include <algorithm>
#include <cstdint>

namespace engine {

/// Pixels x in [left, right) and y in [top, bottom).
struct PixelRect {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }

    PixelRect intersected(const PixelRect& other) const
    {
        return { std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
            std::min(bottom, other.bottom) };
    }

    PixelRect translated(std::int64_t dx, std::int64_t dy) const
    {
        return { left + dx, top + dy, right + dx, bottom + dy };
    }

    bool operator==(const PixelRect&) const = default;
};

} // namespace engine
