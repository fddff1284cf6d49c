// BlurTiles: each tile's lowest and highest level, widened by the blur's reach.
#include "kit/BlurTiles.h"

#include "kit/GaussianBlur.h"
#include "kit/GaussianBlurKernels.h"

#include <algorithm>

namespace kit {

namespace {

// Each entry becomes the lowest (or highest) of the entries within `radius` of it along a line
// of `count` entries `step` apart; entries beyond the line count as 0.
void widen(std::vector<std::uint8_t>& values, std::size_t first, std::size_t step, int count, int radius, bool highest,
    std::vector<std::uint8_t>& line)
{
    line.resize(std::size_t(count));
    for (int i = 0; i < count; ++i)
        line[std::size_t(i)] = values[first + std::size_t(i) * step];
    for (int i = 0; i < count; ++i) {
        std::uint8_t v = line[std::size_t(i)];
        for (int k = std::max(0, i - radius); k <= std::min(count - 1, i + radius); ++k)
            v = highest ? std::max(v, line[std::size_t(k)]) : std::min(v, line[std::size_t(k)]);
        if (!highest && (i - radius < 0 || i + radius >= count))
            v = 0;
        values[first + std::size_t(i) * step] = v;
    }
}

} // namespace

BlurTiles::BlurTiles(const BlurSource& source, int width, int height, int reach)
    : m_columns((width + kSize - 1) / kSize)
    , m_rows((height + kSize - 1) / kSize)
    , m_levels(std::size_t(m_columns) * std::size_t(m_rows))
{
    const std::size_t count = m_levels.size();
    std::vector<std::uint8_t> lowest(count, 255), highest(count, 0);
    // A tile reaching beyond the source holds zeros too.
    for (int row = 0; row < m_rows; ++row)
        for (int column = 0; column < m_columns; ++column) {
            const int x = column * kSize - source.x, y = row * kSize - source.y;
            if (x < 0 || y < 0 || x + kSize > source.width || y + kSize > source.height)
                lowest[std::size_t(row) * std::size_t(m_columns) + std::size_t(column)] = 0;
        }
    // Each tile row's pixels are first brought down to one row of lowest and highest values,
    // element by element (vector code), and only then taken a tile at a time.
    const int from = std::max(0, -source.x), to = std::min(source.width, width - source.x);
    std::vector<std::uint8_t> low(std::size_t(m_columns) * kSize), high(low.size());
    for (int row = 0; row < m_rows; ++row) {
        std::fill(low.begin(), low.end(), std::uint8_t(255));
        std::fill(high.begin(), high.end(), std::uint8_t(0));
        for (int y = row * kSize; y < std::min(height, (row + 1) * kSize); ++y) {
            const int sy = y - source.y;
            if (sy < 0 || sy >= source.height || from >= to)
                continue;
            const std::uint8_t* line = source.pixels + sy * source.rowStride + from;
            blurkernels::lowerAndRaise(
                line, low.data() + (from + source.x), high.data() + (from + source.x), std::size_t(to - from));
        }
        for (int column = 0; column < m_columns; ++column) {
            const std::size_t tile = std::size_t(row) * std::size_t(m_columns) + std::size_t(column);
            for (int i = column * kSize; i < (column + 1) * kSize; ++i) {
                lowest[tile] = std::min(lowest[tile], low[std::size_t(i)]);
                highest[tile] = std::max(highest[tile], high[std::size_t(i)]);
            }
        }
    }
    const int radius = (reach + kSize - 1) / kSize;
    std::vector<std::uint8_t> line;
    for (auto* values : { &lowest, &highest }) {
        const bool high = values == &highest;
        for (int row = 0; row < m_rows; ++row)
            widen(*values, std::size_t(row) * std::size_t(m_columns), 1, m_columns, radius, high, line);
        for (int column = 0; column < m_columns; ++column)
            widen(*values, std::size_t(column), std::size_t(m_columns), m_rows, radius, high, line);
    }
    for (std::size_t i = 0; i < count; ++i)
        m_levels[i] = lowest[i] == highest[i] ? lowest[i] : kMixed;
}

void BlurTiles::runsAcross(int upper, int lower, int width, std::vector<Run>& runs) const
{
    runs.clear();
    for (int column = 0; column < m_columns && column * kSize < width; ++column) {
        const std::uint16_t a = level(column, upper), b = level(column, lower);
        const std::uint16_t both = a == b ? a : kMixed;
        const int from = column * kSize, to = std::min(width, from + kSize);
        if (!runs.empty() && runs.back().level == both)
            runs.back().to = to;
        else
            runs.push_back({ from, to, both });
    }
}

} // namespace kit
