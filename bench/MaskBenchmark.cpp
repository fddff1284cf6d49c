// MaskBenchmark: the mask pipeline against one memcpy of its buffer and against cairo + OpenCV.
//
// Every figure is a median over the runs of one process. For each shape each run times a
// memcpy of a buffer of the mask's size and then the rasteriser building the mask (allocation,
// fill, feather, as the tools call it), so that both see the same load; the ratio is the median
// of the runs' ratios. The "mask" runs reuse recycled memory, as every selection after the first
// does; the "mask-first-touch" runs empty the recycler first, so they include the page faults
// of fresh memory. The obvious alternative is cairo filling the same shape and, where OpenCV is
// installed, cv::GaussianBlur with the same sigma and a transparent border. For every feathered
// shape the program also prints the largest difference from the exact Gaussian of the sharp
// shape (computed separably in double precision: over the whole buffer for rectangles, on a
// grid of every 16th row and column for the others).
#include "Classes/Selection/GraphicsToBuffer.h"
#include "bench/BenchTiming.h"
#include "kit/BitmapContext.h"
#include "kit/MemoryRecycler.h"

#include <benchmark/benchmark.h>
#include <cairo.h>

#ifdef QM_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace {

constexpr COLOR_STRUCT kWhite { 255, 255, 255, 255 };
constexpr float kSide = 3000;

enum Shape {
    Rectangle,
    Ellipse,
    Star48,
    Star,
    CrossedStar,
};
const char* shapeName(int shape)
{
    const char* names[] = { "rectangle", "ellipse", "star48", "star500", "star500x" };
    return names[shape];
}

// `count` vertices alternating between two radii: a simple polygon with count / 2 points.
std::vector<kit::Point> starVertices(int count = 500)
{
    std::vector<kit::Point> v;
    for (int i = 0; i < count; ++i) {
        const double r = i % 2 ? kSide / 4 : kSide / 2;
        const double t = 2 * std::numbers::pi * i / count;
        v.push_back({ float(kSide / 2 + r * std::cos(t)), float(kSide / 2 + r * std::sin(t)) });
    }
    return v;
}

// The star with its second half turned upside down: a figure of eight of spikes, crossing itself
// where the halves meet, so that its shared pixels are measured exactly.
std::vector<kit::Point> crossedStarVertices()
{
    std::vector<kit::Point> v = starVertices();
    for (std::size_t i = v.size() / 2; i < v.size(); ++i)
        v[i].y = float(kSide) - v[i].y;
    return v;
}

int buildMask(int shape, float feather, IMAGE_BUFFER& buffer, kit::Point& origin)
{
    static const std::vector<kit::Point> star = starVertices();
    static const std::vector<kit::Point> star48 = starVertices(96);
    static const std::vector<kit::Point> crossed = crossedStarVertices();
    switch (shape) {
    case Star48:
        return CreateImageBufferFromPolygon(
            buffer, origin, star48.data(), int(star48.size()), kWhite, true, kWhite, feather);
    case Rectangle:
        return CreateImageBufferFromRect(buffer, origin, kit::Rect(0, 0, kSide, kSide), kWhite, true, kWhite, feather);
    case Ellipse:
        return CreateImageBufferFromEllipse(
            buffer, origin, kit::Rect(0, 0, kSide, kSide), kWhite, true, kWhite, feather);
    case Star:
        return CreateImageBufferFromPolygon(
            buffer, origin, star.data(), int(star.size()), kWhite, true, kWhite, feather);
    case CrossedStar:
        return CreateImageBufferFromPolygon(
            buffer, origin, crossed.data(), int(crossed.size()), kWhite, true, kWhite, feather);
    }
    return -1;
}

using bench::median;
using bench::milliseconds;

struct Result {
    double memcpyMs = 0, maskMs = 0, ratio = 0, coldMs = 0, coldRatio = 0, alternativeMs = 0, maxError = -1;
    int width = 0, height = 0;
};
std::map<std::string, Result> g_results;

std::string key(int shape, float feather)
{
    return std::string(shapeName(shape)) + " feather " + std::to_string(feather).substr(0, 5);
}

// One memcpy of a buffer of the mask's size between two blocks that stay mapped: the floor of
// writing the mask once. The copy is timed on its second run, after a first one has written back
// what the previous mask left in the caches, so that the floor is a clean memcpy as when copies
// run back to back.
class MemcpyFloor {
public:
    explicit MemcpyFloor(std::size_t bytes) : m_from(bytes, 1), m_to(bytes, 2) {}
    double run()
    {
        copy();
        const auto start = std::chrono::steady_clock::now();
        copy();
        return milliseconds(start);
    }

private:
    void copy()
    {
        std::memcpy(m_to.data(), m_from.data(), m_from.size());
        benchmark::DoNotOptimize(m_to.data());
        benchmark::ClobberMemory();
    }

    std::vector<unsigned char> m_from, m_to;
};

// The exact blur of the rectangle's sharp mask along one axis: the area coverage of the span
// [from, to) in each pixel, convolved in double precision with the normalised Gaussian.
std::vector<double> blurredSpan(int length, double from, double to, double sigma)
{
    const int reach = int(std::ceil(12 * sigma)) + 2;
    std::vector<double> weights(std::size_t(2 * reach + 1));
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += weights[std::size_t(n + reach)] = std::exp(-double(n) * n / (2 * sigma * sigma));
    std::vector<double> sharp(static_cast<std::size_t>(length));
    for (int x = 0; x < length; ++x)
        sharp[std::size_t(x)] = std::max(0.0, std::min(to, x + 1.0) - std::max(from, double(x)));
    std::vector<double> out(std::size_t(length), 0);
    for (int x = 0; x < length; ++x)
        for (int n = std::max(-reach, -x); n <= std::min(reach, length - 1 - x); ++n)
            out[std::size_t(x)] += weights[std::size_t(n + reach)] / sum * sharp[std::size_t(x + n)];
    return out;
}

// The largest distance, in 8-bit steps, of the rectangle mask's alpha from the exact Gaussian of
// its sharp square: a separable product, so the whole buffer can be checked.
double rectangleError(const IMAGE_BUFFER& buffer, float feather)
{
    const double from = 1 + double(feather); // the square's left and top edges in the buffer
    const auto across = blurredSpan(buffer.nWidth, from, from + kSide, feather);
    const auto down = blurredSpan(buffer.nHeight, from, from + kSide, feather);
    double worst = 0;
    for (int r = 0; r < buffer.nHeight; ++r) {
        const double py = down[std::size_t(r)]; // memory rows run down the layer, as the square's y does
        const unsigned char* row = buffer.pData + std::size_t(r) * std::size_t(buffer.nWidth) * 4;
        for (int x = 0; x < buffer.nWidth; ++x)
            worst = std::max(worst, std::fabs(row[4 * x + 3] - 255 * py * across[std::size_t(x)]));
    }
    return worst;
}

// The sharp shape's coverage in the buffer's frame, drawn by the kit as the rasteriser draws it
// (layer y mirrored within the buffer), one value from 0 to 255 a pixel.
std::vector<double> sharpCoverage(int shape, const IMAGE_BUFFER& buffer, kit::Point origin)
{
    std::vector<std::uint8_t> pixels(std::size_t(buffer.nWidth) * std::size_t(buffer.nHeight) * 4);
    auto space = kit::ColorSpace::createDeviceRGB();
    auto context = kit::BitmapContext::create(pixels.data(), buffer.nWidth, buffer.nHeight, 8,
        std::size_t(buffer.nWidth) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    context->setRGBFillColor(1, 1, 1, 1);
    const double height = buffer.nHeight;
    auto drawn = [&](kit::Point p) { return kit::Point { float(p.x - origin.x), float(height - (p.y - origin.y)) }; };
    if (shape == Ellipse) {
        const kit::Point low = drawn({ 0, kSide });
        context->addEllipseInRect(kit::Rect(low.x, low.y, kSide, kSide));
    } else {
        const auto vertices = shape == Star48 ? starVertices(96)
            : shape == Star                   ? starVertices()
                                              : crossedStarVertices();
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const kit::Point p = drawn(vertices[i]);
            i == 0 ? context->moveToPoint(p.x, p.y) : context->addLineToPoint(p.x, p.y);
        }
        context->closePath();
    }
    context->clearAndFillPath();
    std::vector<double> coverage(pixels.size() / 4);
    for (std::size_t i = 0; i < coverage.size(); ++i)
        coverage[i] = pixels[4 * i + 3];
    return coverage;
}

// The largest distance, in 8-bit steps, of the mask's alpha from the exact Gaussian of the sharp
// shape, at every 16th row and column: the rows are blurred across at the sampled columns, then
// those columns down at the sampled rows.
double sampledError(int shape, const IMAGE_BUFFER& buffer, kit::Point origin, float feather)
{
    constexpr int kEvery = 16;
    const double sigma = feather;
    const int reach = int(std::ceil(8 * sigma)) + 2;
    std::vector<double> weights(std::size_t(2 * reach + 1));
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += weights[std::size_t(n + reach)] = std::exp(-double(n) * n / (2 * sigma * sigma));
    const auto sharp = sharpCoverage(shape, buffer, origin);
    const int w = buffer.nWidth, h = buffer.nHeight, columns = (w + kEvery - 1) / kEvery;
    std::vector<double> across(std::size_t(h) * std::size_t(columns), 0);
    for (int r = 0; r < h; ++r)
        for (int i = 0; i < columns; ++i)
            for (int c = std::max(0, i * kEvery - reach); c <= std::min(w - 1, i * kEvery + reach); ++c)
                across[std::size_t(r) * std::size_t(columns) + std::size_t(i)]
                    += weights[std::size_t(c - i * kEvery + reach)] / sum
                    * sharp[std::size_t(r) * std::size_t(w) + std::size_t(c)];
    double worst = 0;
    for (int y = 0; y < h; y += kEvery)
        for (int i = 0; i < columns; ++i) {
            double exact = 0;
            for (int r = std::max(0, y - reach); r <= std::min(h - 1, y + reach); ++r)
                exact += weights[std::size_t(r - y + reach)] / sum
                    * across[std::size_t(r) * std::size_t(columns) + std::size_t(i)];
            const unsigned char alpha
                = buffer.pData[(std::size_t(y) * std::size_t(w) + std::size_t(i) * kEvery) * 4 + 3];
            worst = std::max(worst, std::fabs(alpha - exact));
        }
    return worst;
}

// Each run times a memcpy and then the mask, so that both see the same load on the machine;
// the ratio is the median of the runs' own ratios. With `cold`, every mask gets memory that was
// never touched (the recycler keeps nothing), so its time includes the page faults.
void maskBenchmark(benchmark::State& state, int shape, float feather, bool cold)
{
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    buildMask(shape, feather, buffer, origin); // warms the recycler the way a second selection finds it
    Result& result = g_results[key(shape, feather)];
    result.width = buffer.nWidth;
    result.height = buffer.nHeight;
    if (!cold && feather > 1)
        result.maxError
            = shape == Rectangle ? rectangleError(buffer, feather) : sampledError(shape, buffer, origin, feather);
    MemcpyFloor floor(std::size_t(buffer.nWidth) * std::size_t(buffer.nHeight) * 4);
    DestroyImageBuffer(buffer);
    std::vector<double> copies, masks, ratios;
    for (auto _ : state) {
        copies.push_back(floor.run());
        if (cold)
            kit::MemoryRecycler::shared().trim();
        const auto start = std::chrono::steady_clock::now();
        buildMask(shape, feather, buffer, origin);
        benchmark::DoNotOptimize(buffer.pData);
        masks.push_back(milliseconds(start));
        ratios.push_back(masks.back() / copies.back());
        DestroyImageBuffer(buffer);
    }
    if (cold) {
        result.coldMs = median(masks);
        result.coldRatio = median(ratios);
    } else {
        result.memcpyMs = median(copies);
        result.maskMs = median(masks);
        result.ratio = median(ratios);
    }
    state.counters["x_memcpy"] = median(ratios);
}

// What a user would write without the kit: cairo fills the shape into a cleared ARGB32 surface
// (premultiplied white has the same bytes in either order), OpenCV blurs it.
void alternative(int shape, float feather, int width, int height, std::vector<unsigned char>& pixels)
{
    pixels.assign(std::size_t(width) * std::size_t(height) * 4, 0);
    cairo_surface_t* surface
        = cairo_image_surface_create_for_data(pixels.data(), CAIRO_FORMAT_ARGB32, width, height, width * 4);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgba(cr, 1, 1, 1, 1);
    // cairo's y goes down the surface as the layer's does down the mask: no flip needed.
    const double inset = 1 + double(feather);
    switch (shape) {
    case Rectangle: cairo_rectangle(cr, inset, inset, kSide, kSide); break;
    case Ellipse:
        cairo_save(cr);
        cairo_translate(cr, inset + kSide / 2, inset + kSide / 2);
        cairo_scale(cr, kSide / 2, kSide / 2);
        cairo_arc(cr, 0, 0, 1, 0, 2 * std::numbers::pi);
        cairo_restore(cr);
        break;
    case Star48:
    case Star:
    case CrossedStar: {
        const auto star = shape == Star48 ? starVertices(96) : shape == Star ? starVertices() : crossedStarVertices();
        cairo_move_to(cr, star[0].x + inset, star[0].y + inset);
        for (const auto& p : star)
            cairo_line_to(cr, p.x + inset, p.y + inset);
        cairo_close_path(cr);
        break;
    }
    }
    cairo_fill(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
#ifdef QM_HAVE_OPENCV
    if (feather > 0.0001f) {
        cv::Mat mat(height, width, CV_8UC4, pixels.data());
        cv::GaussianBlur(mat, mat, cv::Size(0, 0), feather, feather, cv::BORDER_CONSTANT);
    }
#endif
}

void alternativeBenchmark(benchmark::State& state, int shape, float feather)
{
    Result& result = g_results[key(shape, feather)];
    if (!result.width) {
        state.SkipWithError("run the mask benchmark first");
        return;
    }
    std::vector<unsigned char> pixels;
    std::vector<double> times;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        alternative(shape, feather, result.width, result.height, pixels);
        benchmark::DoNotOptimize(pixels.data());
        times.push_back(milliseconds(start));
    }
    result.alternativeMs = median(times);
    state.counters["x_memcpy"] = result.memcpyMs > 0 ? result.alternativeMs / result.memcpyMs : 0.0;
}

void registerAll()
{
    std::vector<std::pair<int, float>> cases;
    for (int shape : { Rectangle, Ellipse, Star48, Star })
        for (float feather : { 0.0f, 2.5f, 10.0f, 100.0f })
            cases.push_back({ shape, feather });
    cases.push_back({ CrossedStar, 0 });
    for (bool cold : { false, true }) {
        for (auto [shape, feather] : cases) {
            benchmark::RegisterBenchmark(((cold ? "mask-first-touch/" : "mask/") + key(shape, feather)).c_str(),
                [shape = shape, feather = feather, cold](
                    benchmark::State& s) { maskBenchmark(s, shape, feather, cold); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(cold ? 9 : 31);
        }
    }
    for (auto [shape, feather] : cases) {
        // OpenCV's blur grows with the radius: a few runs are plenty at the large ones.
        const int runs = feather >= 100 ? 3 : feather >= 10 ? 5 : 11;
        benchmark::RegisterBenchmark(("cairo+opencv/" + key(shape, feather)).c_str(),
            [shape = shape, feather = feather](benchmark::State& s) { alternativeBenchmark(s, shape, feather); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(runs);
    }
}

void printSummary()
{
    std::printf("\nMedians of one process; ratios are medians of each run's mask / memcpy.\n");
    std::printf("%-24s %11s %9s %8s %8s %9s %9s %9s %8s %8s\n", "shape", "buffer", "memcpy ms", "mask ms", "mask/cpy",
        "1st ms", "1st/cpy", "alt ms", "alt/mask", "max err");
    for (const auto& [name, r] : g_results) {
        std::printf("%-24s %5dx%-5d %9.2f %8.2f %8.2f %9.2f %9.2f %9.1f %8.1f %8s\n", name.c_str(), r.width, r.height,
            r.memcpyMs, r.maskMs, r.ratio, r.coldMs, r.coldRatio, r.alternativeMs,
            r.maskMs > 0 ? r.alternativeMs / r.maskMs : 0.0,
            r.maxError < 0 ? "-" : std::to_string(r.maxError).substr(0, 5).c_str());
    }
#ifndef QM_HAVE_OPENCV
    std::printf("(OpenCV not installed: the alternative is cairo's fill alone)\n");
#endif
}

} // namespace

int main(int argc, char** argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    printSummary();
    return 0;
}
