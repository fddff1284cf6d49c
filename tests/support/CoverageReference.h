// CoverageReference: fill-rule coverage of a polygon measured on many sub-scanlines, for checking
// the rasteriser by a different method.
#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace coverage_reference {

using Polygon = std::vector<std::pair<double, double>>;

/// Each pixel row is cut into `subRows` scanlines; on each, the spans the rule counts are
/// exact in x and added to the pixels they cover. Only the vertical sampling errs: under one
/// step of 8 bits for a vertex or crossing in a pixel at the default 512 scanlines.
inline std::vector<double> measure(const Polygon& polygon, int width, int height, bool evenOdd, int subRows = 512)
{
    std::vector<double> out(std::size_t(width) * std::size_t(height), 0.0);
    std::vector<std::pair<double, int>> crossings;
    const std::size_t n = polygon.size();
    for (int row = 0; row < height; ++row) {
        for (int k = 0; k < subRows; ++k) {
            const double y = row + (k + 0.5) / subRows;
            crossings.clear();
            for (std::size_t i = 0; i < n; ++i) {
                const auto [ax, ay] = polygon[i];
                const auto [bx, by] = polygon[(i + 1) % n];
                if (ay == by || y < std::min(ay, by) || y >= std::max(ay, by))
                    continue;
                crossings.emplace_back(ax + (y - ay) * (bx - ax) / (by - ay), ay < by ? 1 : -1);
            }
            std::sort(crossings.begin(), crossings.end());
            int winding = 0;
            for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
                winding += crossings[i].second;
                if (evenOdd ? (winding & 1) == 0 : winding == 0)
                    continue;
                const double from = std::clamp(crossings[i].first, 0.0, double(width));
                const double to = std::clamp(crossings[i + 1].first, 0.0, double(width));
                for (int x = int(std::floor(from)); x < width && x < to; ++x) {
                    const double part = std::min(to, x + 1.0) - std::max(from, double(x));
                    out[std::size_t(row) * std::size_t(width) + std::size_t(x)] += part / subRows;
                }
            }
        }
    }
    return out;
}

} // namespace coverage_reference
