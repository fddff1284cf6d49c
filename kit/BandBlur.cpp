// BandBlur: a ring of decoded rows, summed down the columns and then along each output row.
#include "kit/BandBlur.h"

#include "kit/BandBlurKernels.h"
#include "kit/LinearLight.h"
#include "kit/ScratchBlock.h"

#include <cstring>

namespace kit {

namespace {

// Reads the sRGB bytes of the image's row whose bottom edge is at y over the columns
// x .. x + width into `bytes`, transparent black outside the image; false for a row wholly
// outside it, with nothing read.
bool readRow(const CIImage& input, long long x, long long y, long long width, std::uint8_t* bytes)
{
    static const RefPtr<ColorSpace> srgb = ColorSpace::createSRGB();
    const PixelArea source = PixelArea::enclosing(input.extent());
    if (y < source.y || y >= source.maxY())
        return false;
    return input.drawArea(int(x), int(y), int(width), 1, bytes, std::ptrdiff_t(width * 4), true, srgb.get());
}

} // namespace

bool BandBlur::drawBox(const CIImage& input, long long r, const PixelArea& area, std::uint8_t* rgba,
                       std::ptrdiff_t stride)
{
    const long long window = 2 * r + 1;
    if (window > kMaxBoxWindow || area.isEmpty())
        return false;
    const long long x0 = area.x - r, width = area.width + 2 * r;
    const auto values = std::size_t(width * 4);
    // window + 1 rows, so that the row leaving the window is still there when its successor
    // enters.
    const auto slots = std::size_t(window + 1);
    ScratchBlock bytes(values), ring(slots * values * sizeof(std::uint16_t));
    ScratchBlock columns(values * sizeof(std::uint32_t)), sums(std::size_t(area.width) * 4 * sizeof(std::uint32_t));
    if (!bytes || !ring || !columns || !sums)
        return false;
    std::memset(columns.bytes(), 0, values * sizeof(std::uint32_t));
    const float scale = float(1.0 / (double(window * window) * 65535.0));
    // Source row k of the pass is the one whose bottom edge is r rows above the area's top row's.
    for (long long k = 0; k < area.height + window - 1; ++k) {
        std::uint16_t* entering = ring.as<std::uint16_t>() + std::size_t(k) % slots * values;
        if (readRow(input, x0, area.maxY() - 1 + r - k, width, bytes.bytes()))
            linearlight::decodeUnitsRow(bytes.bytes(), std::size_t(width), entering);
        else
            std::memset(entering, 0, values * sizeof(std::uint16_t));
        const std::uint16_t* leaving
            = k >= window ? ring.as<std::uint16_t>() + std::size_t(k - window) % slots * values : nullptr;
        bandblurkernels::slideColumns(columns.as<std::uint32_t>(), entering, leaving, values);
        if (k < window - 1)
            continue;
        bandblurkernels::slideRow(
            columns.as<std::uint32_t>(), std::size_t(window), std::size_t(area.width), sums.as<std::uint32_t>());
        linearlight::encodeSumsRow(
            sums.as<std::uint32_t>(), scale, std::size_t(area.width), rgba + (k - window + 1) * stride);
    }
    return true;
}

bool BandBlur::drawWeighted(const CIImage& input, const std::vector<float>& weights, const PixelArea& area,
                            std::uint8_t* rgba, std::ptrdiff_t stride)
{
    const auto taps = (long long)weights.size(), reach = taps / 2;
    if (area.isEmpty() || taps % 2 == 0)
        return false;
    const long long x0 = area.x - reach, width = area.width + 2 * reach;
    const auto values = std::size_t(width * 4);
    ScratchBlock bytes(values), ring(std::size_t(taps) * values * sizeof(float));
    ScratchBlock down(values * sizeof(float)), across(std::size_t(area.width) * 4 * sizeof(float));
    if (!bytes || !ring || !down || !across)
        return false;
    std::vector<const float*> rows(static_cast<std::size_t>(taps));
    for (long long k = 0; k < area.height + taps - 1; ++k) {
        float* entering = ring.as<float>() + std::size_t(k % taps) * values;
        if (readRow(input, x0, area.maxY() - 1 + reach - k, width, bytes.bytes()))
            linearlight::decodeRow(bytes.bytes(), false, true, std::size_t(width), entering);
        else
            std::memset(entering, 0, values * sizeof(float));
        if (k < taps - 1)
            continue;
        // The kernel is symmetric: the rows may be taken top down.
        for (long long t = 0; t < taps; ++t)
            rows[std::size_t(t)] = ring.as<float>() + std::size_t((k - taps + 1 + t) % taps) * values;
        bandblurkernels::weighRows(rows.data(), weights.data(), std::size_t(taps), values, down.as<float>());
        bandblurkernels::weighColumns(
            down.as<float>(), weights.data(), std::size_t(taps), std::size_t(area.width), across.as<float>());
        linearlight::encodeRow(across.as<float>(), true, std::size_t(area.width), rgba + (k - taps + 1) * stride);
    }
    return true;
}

} // namespace kit
