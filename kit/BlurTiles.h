// BlurTiles: which tiles of a blurred area the blur leaves at one level, so that it need not run there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kit {

struct BlurSource;

/// A blurred area cut into kSize x kSize tiles, each flat or mixed. A tile is flat when the
/// source holds one level over the tile and everything within the blur's reach of it: the blur
/// is that level throughout, and a recursive blur can start a line at the tile's edge from the
/// steady state of that level. Only mixed tiles need blurring, so a filled shape costs its edges
/// rather than its area.
class BlurTiles {
public:
    static constexpr int kSize = 16;
    /// The level of a tile that is not flat.
    static constexpr std::uint16_t kMixed = 0x100;

    /// The tiles of a `width` x `height` area holding `source` (one byte a pixel, zero outside
    /// it) for a blur that `reach` pixels away no longer tells a change from none.
    BlurTiles(const BlurSource& source, int width, int height, int reach);

    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    /// The level of tile (column, row), or kMixed. Tiles beyond the area are flat at 0.
    std::uint16_t level(int column, int row) const
    {
        if (column < 0 || row < 0 || column >= m_columns || row >= m_rows)
            return 0;
        return m_levels[std::size_t(row) * std::size_t(m_columns) + std::size_t(column)];
    }

    /// A stretch of pixels along a row: `level` throughout, or kMixed.
    struct Run {
        int from;
        int to;
        std::uint16_t level;
    };
    /// The stretches across `width` pixels of tile rows `upper` and `lower` taken together: flat
    /// where both hold flat tiles of one level, mixed elsewhere; neighbours differ.
    void runsAcross(int upper, int lower, int width, std::vector<Run>& runs) const;

    /// Calls run(from, to, before, after) for each stretch of mixed tiles along tile row `row`
    /// (`acrossColumns`) or down tile column `row` (otherwise), in pixels up to `length`, with the
    /// levels of the flat tiles on either side (0 at the ends).
    template <class Run> void forEachMixedRun(bool acrossColumns, int line, std::size_t length, Run&& run) const
    {
        const int count = acrossColumns ? m_columns : m_rows;
        auto at = [&](int i) { return acrossColumns ? level(i, line) : level(line, i); };
        for (int i = 0; i < count;) {
            if (at(i) != kMixed) {
                ++i;
                continue;
            }
            int end = i + 1;
            while (end < count && at(end) == kMixed)
                ++end;
            const std::size_t from = std::size_t(i) * kSize;
            const std::size_t to = std::size_t(end) * kSize < length ? std::size_t(end) * kSize : length;
            if (from < to)
                run(from, to, float(at(i - 1)), float(at(end)));
            i = end;
        }
    }

private:
    int m_columns;
    int m_rows;
    std::vector<std::uint16_t> m_levels;
};

} // namespace kit
