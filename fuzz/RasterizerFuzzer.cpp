// Fuzz target: any bytes as a polygon of up to 40 vertices on a 32 x 32 clip; every pixel's
// coverage must be within 4 steps of the area its fill rule counts.
#include "kit/ScanlineRasterizer.h"
#include "tests/support/CoverageReference.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 7 || size > 1 + 4 * 40)
        return 0;
    const bool evenOdd = data[0] & 1;
    coverage_reference::Polygon polygon;
    std::vector<double> xy;
    // Coordinates from -8 to 40 in steps of 1/64, so vertices land on and off the pixel grid.
    for (std::size_t i = 1; i + 3 < size; i += 4) {
        const double x = (data[i] | (data[i + 1] << 8)) % 3072 / 64.0 - 8;
        const double y = (data[i + 2] | (data[i + 3] << 8)) % 3072 / 64.0 - 8;
        polygon.emplace_back(x, y);
        xy.push_back(x);
        xy.push_back(y);
    }
    kit::ScanlineRasterizer rasterizer;
    rasterizer.reset(32, 32);
    rasterizer.addPolygon(xy.data(), polygon.size());
    const auto want = coverage_reference::measure(polygon, 32, 32, evenOdd, 256);
    rasterizer.rasterize(evenOdd ? kit::FillRule::EvenOdd : kit::FillRule::NonZero, true,
        [&](int y, int x0, int x1, const std::uint8_t* coverage, std::uint8_t rest) {
            for (int x = 0; x < 32; ++x) {
                const int got = x < x0 ? 0 : x < x1 ? coverage[x - x0] : rest;
                if (std::fabs(got - want[std::size_t(y * 32 + x)] * 255) > 4)
                    __builtin_trap();
            }
        });
    return 0;
}
