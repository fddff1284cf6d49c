// BandBlur: a ring of decoded rows, summed down the columns and then along each output row.
#include "kit/BandBlur.h"

#include "kit/BandBlurKernels.h"
#include "kit/LinearLight.h"
#include "kit/ScratchBlock.h"

#include <algorithm>
#include <cstring>

namespace kit {

namespace {

// Decodes the image's row whose bottom edge is at y over the columns x .. x + width into `out`
// (four values a pixel), transparent black outside the image: straight from the image's own
// bytes where they hold the row's part inside the image, otherwise from the row drawn into
// `bytes`: a row reaching past the image is not copied whole only to be padded.
template <typename T, typename Decode>
void decodedRow(
    const CIImage& input, long long x, long long y, long long width, std::uint8_t* bytes, T* out, Decode decode)
{
    static const RefPtr<ColorSpace> srgb = ColorSpace::createSRGB();
    const PixelArea source = PixelArea::enclosing(input.extent());
    const long long from = std::clamp(source.x, x, x + width), to = std::clamp(source.maxX(), from, x + width);
    if (y >= source.y && y < source.maxY() && from < to) {
        const std::uint8_t* pixels = input.bitmapPixel(from, y);
        if (pixels && input.bitmapPixel(to - 1, y)) {
            std::fill(out, out + 4 * (from - x), T(0));
            decode(pixels, std::size_t(to - from), out + 4 * (from - x));
            std::fill(out + 4 * (to - x), out + 4 * width, T(0));
            return;
        }
        if (input.drawArea(int(x), int(y), int(width), 1, bytes, std::ptrdiff_t(width * 4), true, srgb.get())) {
            decode(bytes, std::size_t(width), out);
            return;
        }
    }
    std::fill(out, out + 4 * width, T(0));
}

// Draws the area in stripes of columns whose ring of `slots` rows of `pixelBytes` a pixel stays
// within `ringBytes`.
template <typename Draw>
bool inStripes(const PixelArea& area, long long reach, long long slots, long long pixelBytes, long long ringBytes,
    std::uint8_t* rgba, Draw draw)
{
    const long long stripe = std::max(64LL, ringBytes / (slots * pixelBytes) - 2 * reach);
    for (long long x = area.x; x < area.maxX(); x += stripe) {
        const PixelArea part { x, area.y, std::min(stripe, area.maxX() - x), area.height };
        if (!draw(part, rgba + (x - area.x) * 4))
            return false;
    }
    return true;
}

} // namespace

bool BandBlur::drawBox(
    const CIImage& input, long long r, const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride)
{
    const long long window = 2 * r + 1;
    if (window > kMaxBoxWindow || area.isEmpty())
        return false;
    // Each row of the ring is read twice, entering and leaving, so it need not stay in cache:
    // stripes only bound the memory, and each one decodes and sums its 2 r edge columns again
    // (half-width 50 over 3000 columns: 14 stripes of 256 KB took about 15 % longer than one of
    // 2.5 MB).
    return inStripes(area, r, window + 1, 4 * sizeof(std::uint16_t), 4 << 20, rgba,
        [&](const PixelArea& part, std::uint8_t* out) { return drawBoxStripe(input, r, part, out, stride); });
}

bool BandBlur::drawBoxStripe(
    const CIImage& input, long long r, const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride)
{
    const long long window = 2 * r + 1;
    const long long x0 = area.x - r, width = area.width + 2 * r;
    const auto values = std::size_t(width * 4);
    // window + 1 rows, so that the row leaving the window is still there when its successor
    // enters.
    const auto slots = std::size_t(window + 1);
    ScratchBlock bytes(values), ring(slots * values * sizeof(std::uint16_t));
    ScratchBlock columns(values * sizeof(std::uint32_t));
    if (!bytes || !ring || !columns)
        return false;
    std::memset(columns.bytes(), 0, values * sizeof(std::uint32_t));
    const float scale = float(1.0 / (double(window * window) * 65535.0));
    // Source row k of the pass is the one whose bottom edge is r rows above the area's top row's.
    for (long long k = 0; k < area.height + window - 1; ++k) {
        std::uint16_t* entering = ring.as<std::uint16_t>() + std::size_t(k) % slots * values;
        decodedRow(input, x0, area.maxY() - 1 + r - k, width, bytes.bytes(), entering, linearlight::decodeUnitsRow);
        const std::uint16_t* leaving
            = k >= window ? ring.as<std::uint16_t>() + std::size_t(k - window) % slots * values : nullptr;
        bandblurkernels::slideColumns(columns.as<std::uint32_t>(), entering, leaving, values);
        if (k < window - 1)
            continue;
        linearlight::encodeWindowSumsRow(columns.as<std::uint32_t>(), std::size_t(window), scale,
            std::size_t(area.width), rgba + (k - window + 1) * stride);
    }
    return true;
}

bool BandBlur::drawWeighted(const CIImage& input, const std::vector<float>& weights, const PixelArea& area,
    std::uint8_t* rgba, std::ptrdiff_t stride)
{
    const auto taps = (long long)weights.size();
    if (area.isEmpty() || taps % 2 == 0)
        return false;
    // Every row of the ring is read for each of its taps: the ring stays within the second-level
    // cache. A ring of whole rows of a wide picture did not, and reading it back from further out
    // cost more than the arithmetic.
    return inStripes(area, taps / 2, taps + (long long)bandblurkernels::kRowsAtOnce - 1, 4 * sizeof(float), 256 << 10,
        rgba, [&](const PixelArea& part, std::uint8_t* out) {
            return drawWeightedStripe(input, weights, part, out, stride);
        });
}

bool BandBlur::drawWeightedStripe(const CIImage& input, const std::vector<float>& weights, const PixelArea& area,
    std::uint8_t* rgba, std::ptrdiff_t stride)
{
    const auto taps = (long long)weights.size(), reach = taps / 2;
    constexpr auto group = (long long)bandblurkernels::kRowsAtOnce;
    const long long x0 = area.x - reach, width = area.width + 2 * reach;
    const auto values = std::size_t(width * 4);
    // The rows of one group of output rows; the next group keeps all but its first `group`.
    const long long slots = taps + group - 1;
    ScratchBlock bytes(values), ring(std::size_t(slots) * values * sizeof(float));
    ScratchBlock down(std::size_t(group) * values * sizeof(float)), across(std::size_t(area.width) * 4 * sizeof(float));
    if (!bytes || !ring || !down || !across)
        return false;
    std::vector<const float*> rows(static_cast<std::size_t>(slots));
    float* downRows[group];
    for (long long j = 0; j < group; ++j)
        downRows[j] = down.as<float>() + std::size_t(j) * values;
    // Source row k is the one whose bottom edge is `reach` rows above the area's top row's.
    auto decode = [&](long long k) {
        decodedRow(input, x0, area.maxY() - 1 + reach - k, width, bytes.bytes(),
            ring.as<float>() + std::size_t(k % slots) * values,
            [](const std::uint8_t* pixels, std::size_t count, float* out) {
                linearlight::decodeRow(pixels, false, true, count, out);
            });
    };
    for (long long k = 0; k < slots - group; ++k)
        decode(k);
    for (long long first = 0; first < area.height; first += group) {
        // Output rows first .. first + group - 1 read source rows first .. first + slots - 1.
        for (long long k = first + slots - group; k < first + slots; ++k)
            decode(k);
        // The kernel is symmetric: the rows may be taken top down.
        for (long long t = 0; t < slots; ++t)
            rows[std::size_t(t)] = ring.as<float>() + std::size_t((first + t) % slots) * values;
        bandblurkernels::weighRows(rows.data(), weights.data(), std::size_t(taps), values, downRows);
        for (long long j = 0; j < group && first + j < area.height; ++j) {
            bandblurkernels::weighColumns(
                downRows[j], weights.data(), std::size_t(taps), std::size_t(area.width), across.as<float>());
            linearlight::encodeRow(across.as<float>(), true, std::size_t(area.width), rgba + (first + j) * stride);
        }
    }
    return true;
}

} // namespace kit
