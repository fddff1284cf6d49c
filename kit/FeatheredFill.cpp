// FeatheredFill: the blur of a coverage plane laid out inside the RGBA block it is written to.
#include "kit/FeatheredFill.h"

#include "kit/BlurTiles.h"
#include "kit/GaussianBlur.h"
#include "kit/GaussianBlurKernels.h"
#include "kit/PixelKernels.h"
#include "kit/ScratchBlock.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace kit {

namespace {

constexpr int kMaxStep = 16;
// Bilinear interpolation between samples `step` apart stays within 0.2 of a step of the smooth
// blur from this many steps per sigma on.
constexpr double kSigmaPerStep = 4;

// Writes each plane row as coloured RGBA over the block's rows, first row first; with `tiles`,
// a flat tile's pixels are its level and the plane is not read there. The row is copied out
// before its pixels are written: a plane in the block's last quarter, or ending with the block
// with rows no wider than four pixels' bytes, is then never written over unread.
void writeRowsForward(const std::uint8_t* plane, std::ptrdiff_t stride, std::uint8_t* pixels, int width, int height,
    const std::uint8_t colour[4], const BlurTiles* tiles = nullptr)
{
    std::vector<std::uint8_t> row(static_cast<std::size_t>(width));
    std::vector<BlurTiles::Run> runs;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* line = plane + y * stride;
        if (!tiles) {
            std::memcpy(row.data(), line, row.size());
        } else {
            if (y % BlurTiles::kSize == 0)
                tiles->runsAcross(y / BlurTiles::kSize, y / BlurTiles::kSize, width, runs);
            for (const BlurTiles::Run& run : runs) {
                const std::size_t from = std::size_t(run.from), count = std::size_t(run.to - run.from);
                if (run.level == BlurTiles::kMixed)
                    std::memcpy(row.data() + from, line + from, count);
                else
                    std::memset(row.data() + from, run.level, count);
            }
        }
        pixelkernels::writeCoverage(row.data(), colour, pixels + std::size_t(y) * std::size_t(width) * 4, row.size());
    }
}

// The interpolation between samples `step` apart whose first is centred on pixel
// (step - 1) / 2 - step, as the decimated grid's ring puts it: pixel x lies between samples
// x / step + offset and the next, at `weight` of the way.
struct Phase {
    int offset;
    float weight;
};

std::vector<Phase> phasesFor(int step)
{
    std::vector<Phase> phases(static_cast<std::size_t>(step));
    for (int j = 0; j < step; ++j) {
        const double u = (j + 0.5) / step + 0.5;
        phases[std::size_t(j)] = { int(std::floor(u)), float(u - std::floor(u)) };
    }
    return phases;
}

// The block's mean coverage of each step x step square, zero beyond the plane. Each sample row
// adds its step rows into 16-bit sums (16 x 255 fits) and halves them pairwise across: loops the
// compiler turns into vector code.
void decimate(
    const std::uint8_t* coverage, int width, int height, int step, std::uint8_t* out, int outWidth, int outHeight)
{
    const std::size_t padded = std::size_t(outWidth) * std::size_t(step);
    std::vector<std::uint16_t> sums(padded), halves(padded / 2);
    int shift = 0;
    while ((1 << shift) < step)
        shift++;
    for (int j = 0; j < outHeight; ++j) {
        std::fill(sums.begin(), sums.end(), std::uint16_t(0));
        std::uint16_t* s = sums.data();
        std::uint16_t* t = halves.data();
        for (int r = j * step; r < std::min(height, (j + 1) * step); ++r) {
            const std::uint8_t* line = coverage + std::size_t(r) * std::size_t(width);
            for (int x = 0; x < width; ++x)
                s[x] = std::uint16_t(s[x] + line[x]);
        }
        for (std::size_t length = padded; length > std::size_t(outWidth); length /= 2) {
            for (std::size_t i = 0; i < length / 2; ++i)
                t[i] = std::uint16_t(s[2 * i] + s[2 * i + 1]);
            std::swap(s, t);
        }
        std::uint8_t* target = out + std::size_t(j) * std::size_t(outWidth);
        const unsigned half = (1u << (2 * shift)) / 2;
        for (int i = 0; i < outWidth; ++i)
            target[i] = std::uint8_t((unsigned(s[i]) + half) >> (2 * shift));
    }
}

} // namespace

FeatheredFill::FeatheredFill(std::uint8_t* pixels, int width, int height, double sigma)
    : m_pixels(pixels), m_width(width), m_height(height), m_sigma(sigma)
{
}

int FeatheredFill::decimationFor(double sigma)
{
    int step = 1;
    while (step < kMaxStep && sigma >= kSigmaPerStep * step * 2)
        step *= 2;
    return step;
}

bool FeatheredFill::finish(const std::uint8_t colour[4])
{
    if (GaussianBlur(m_sigma).isIdentity())
        return expandCoverage(colour);
    const int step = decimationFor(m_sigma);
    return step == 1 ? blurFullSize(colour) : blurDecimated(colour, step);
}

bool FeatheredFill::expandCoverage(const std::uint8_t colour[4])
{
    writeRowsForward(coverage(), m_width, m_pixels, m_width, m_height, colour);
    return true;
}

bool FeatheredFill::blurFullSize(const std::uint8_t colour[4])
{
    // The strips go from the block's start and the blurred plane ends with it, over the
    // coverage, which the first pass has read by then.
    const std::size_t n = count();
    const std::size_t stripBytes = GaussianBlur::stripBytes(m_width, m_height);
    const std::size_t planeBytes = GaussianBlur::planeBytes(m_width, m_height);
    const bool fits = stripBytes <= 3 * n && stripBytes + planeBytes <= 4 * n
        && GaussianBlur::planeStride(m_width) <= std::size_t(m_width) * 4;
    ScratchBlock spare(fits ? 0 : stripBytes + planeBytes);
    if (!fits && !spare)
        return false;
    BlurWorkspace workspace;
    workspace.strips = reinterpret_cast<std::uint16_t*>(fits ? m_pixels : spare.bytes());
    workspace.plane = fits ? m_pixels + 4 * n - planeBytes : spare.bytes() + stripBytes;
    BlurSource source;
    source.pixels = coverage();
    source.rowStride = m_width;
    source.width = m_width;
    source.height = m_height;
    source.bytesPerPixel = 1;
    const GaussianBlur blur(m_sigma);
    const BlurTiles tiles(source, m_width, m_height, blur.reach());
    workspace.tiles = &tiles;
    const std::uint8_t* blurred = nullptr;
    std::ptrdiff_t stride = 0;
    const auto keep = [&](int, int, const std::uint8_t* rows, std::ptrdiff_t rowStride) {
        blurred = rows;
        stride = rowStride;
    };
    if (!blur.blurChannel(source, m_width, m_height, keep, nullptr, &workspace))
        return false;
    writeRowsForward(blurred, stride, m_pixels, m_width, m_height, colour, &tiles);
    return true;
}

bool FeatheredFill::blurDecimated(const std::uint8_t colour[4], int step)
{
    // Samples of step x step squares, with a ring of one sample around them that the blur
    // spreads into and the interpolation at the edges reads.
    const int sampleWidth = (m_width + step - 1) / step, sampleHeight = (m_height + step - 1) / step;
    const int areaWidth = sampleWidth + 2, areaHeight = sampleHeight + 2;
    const std::size_t n = count();
    const std::size_t sampleBytes = std::size_t(sampleWidth) * std::size_t(sampleHeight);
    const std::size_t stripBytes = GaussianBlur::stripBytes(areaWidth, areaHeight);
    const std::size_t planeBytes = 2 * GaussianBlur::planeBytes(areaWidth, areaHeight);
    const std::size_t planeStride = GaussianBlur::planeStride(areaWidth);
    const std::vector<Phase> phases = phasesFor(step);
    // Output rows go last first; row y must not write over the plane rows that rows above it read.
    auto firstSampleRow = [&](int y) { return y / step + phases[std::size_t(y % step)].offset; };
    bool fits = sampleBytes <= n && stripBytes <= n && planeBytes <= n;
    for (int y = 1; fits && y < m_height; ++y)
        fits = (std::size_t(firstSampleRow(y - 1)) + 2) * planeStride * 2 <= std::size_t(y) * std::size_t(m_width) * 4;
    ScratchBlock spare(fits ? 0 : sampleBytes + stripBytes + planeBytes);
    if (!fits && !spare)
        return false;
    std::uint8_t* base = fits ? m_pixels : spare.bytes();
    auto* plane = reinterpret_cast<std::uint16_t*>(base);
    auto* strips = reinterpret_cast<std::uint16_t*>(fits ? base + n : base + planeBytes);
    std::uint8_t* samples = fits ? base + 2 * n : base + planeBytes + stripBytes;

    decimate(coverage(), m_width, m_height, step, samples, sampleWidth, sampleHeight);
    BlurSource source;
    source.pixels = samples;
    source.rowStride = sampleWidth;
    source.width = sampleWidth;
    source.height = sampleHeight;
    source.bytesPerPixel = 1;
    source.x = 1;
    source.y = 1;
    // The box average and the interpolation add step^2 / 4 of variance between them.
    const double sampleSigma = std::sqrt(m_sigma * m_sigma - step * step / 4.0) / step;
    const GaussianBlur blur(sampleSigma);
    const BlurTiles tiles(source, areaWidth, areaHeight, blur.reach());
    if (!blur.blurChannelWide(source, areaWidth, areaHeight, strips, plane, &tiles))
        return false;

    // The interpolation reads and writes a vector's length past its end; the row starts half a
    // step after the first interval's first pixel.
    constexpr std::size_t kOverrun = 16;
    std::vector<float> between(std::size_t(areaWidth) + kOverrun);
    std::vector<std::uint8_t> across(std::size_t(areaWidth) * std::size_t(step) + kOverrun);
    std::uint8_t* row = across.data() + step / 2;
    std::vector<BlurTiles::Run> runs;
    int runsFor = -1;
    for (int y = m_height; y-- > 0;) {
        const Phase vertical = phases[std::size_t(y % step)];
        const int upper = firstSampleRow(y);
        const int upperTile = upper / BlurTiles::kSize, lowerTile = (upper + 1) / BlurTiles::kSize;
        if (runsFor != upper) {
            tiles.runsAcross(upperTile, lowerTile, areaWidth, runs);
            runsFor = upper;
        }
        const std::uint16_t* above = plane + std::size_t(upper) * planeStride;
        const std::uint16_t* below = above + planeStride;
        // Samples first .. last-1 in 8-bit steps, with half a step added so that truncation
        // rounds. Flat tiles were not blurred: their samples are their level.
        const float down = vertical.weight / 256, up = (1 - vertical.weight) / 256;
        auto interpolateDown = [&](int first, int last) {
            for (int from = first; from < last;) {
                const int column = from / BlurTiles::kSize;
                const int to = std::min(last, (column + 1) * BlurTiles::kSize);
                const std::uint16_t a = tiles.level(column, upperTile), b = tiles.level(column, lowerTile);
                std::uint16_t flatAbove[BlurTiles::kSize], flatBelow[BlurTiles::kSize];
                std::fill(flatAbove, flatAbove + BlurTiles::kSize, std::uint16_t(a << 8));
                std::fill(flatBelow, flatBelow + BlurTiles::kSize, std::uint16_t(b << 8));
                const std::uint16_t* p = a == BlurTiles::kMixed ? above + from : flatAbove;
                const std::uint16_t* q = b == BlurTiles::kMixed ? below + from : flatBelow;
                float* out = between.data() + from;
                for (int i = 0; i < to - from; ++i)
                    out[i] = float(p[i]) * up + float(q[i]) * down + 0.5f;
                from = to;
            }
        };
        // A flat run's intervals lie between its own samples; a mixed run's reach one sample
        // into its neighbours on either side.
        auto pixel = [&](int m) { return std::clamp(m * step - step / 2, 0, m_width); };
        for (const BlurTiles::Run& run : runs) {
            if (run.level != BlurTiles::kMixed) {
                const int from = pixel(run.from), to = pixel(run.to - 1);
                std::memset(row + from, run.level, std::size_t(std::max(0, to - from)));
                continue;
            }
            const int first = std::max(0, run.from - 1), last = std::min(areaWidth, run.to + 1);
            interpolateDown(first, last);
            blurkernels::interpolateAcross(between.data(), std::size_t(first),
                std::size_t(std::min(run.to, areaWidth - 1)), std::size_t(step), across.data());
        }
        pixelkernels::writeCoverage(
            row, colour, m_pixels + std::size_t(y) * std::size_t(m_width) * 4, std::size_t(m_width));
    }
    return true;
}

} // namespace kit
