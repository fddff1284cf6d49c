// FilterBenchmark: each of the kit's filters on a 3000 x 3000 picture, beside OpenCV's nearest
// equivalent where one exists, single thread.
//
// A run draws the filter's output over the picture's rectangle into an sRGB bitmap context, as
// the host draws a filtered picture: decoding to linear light, the filter and encoding again are
// all inside the time. OpenCV works on the same 8-bit RGBA bytes as they stand (no linear light):
// cv::GaussianBlur, cv::blur and cv::filter2D with a disc read a replicated border, cv::LUT
// stands for the per-channel colour maps and cv::transform for the 3 x 3 colour matrices. Every
// figure is the median of the runs (`--runs N`, default 5), in wall time, or with `--cpu` in the
// thread's processor time (OpenCV runs on the calling thread).
#include "kit/BitmapContext.h"
#include "kit/CIContext.h"
#include "kit/CIFilter.h"
#include "kit/CIImage.h"

#ifdef QM_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <time.h>

namespace {

constexpr int kSide = 3000;

// A photograph-like picture: smooth gradients with noise, opaque.
std::vector<std::uint8_t> picture()
{
    std::vector<std::uint8_t> rgba(std::size_t(kSide) * kSide * 4);
    std::mt19937 random(3);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            std::uint8_t* p = &rgba[(std::size_t(y) * kSide + std::size_t(x)) * 4];
            const int noise = int(random() % 24);
            p[0] = std::uint8_t(std::min(255, x * 200 / kSide + noise));
            p[1] = std::uint8_t(std::min(255, y * 220 / kSide + noise));
            p[2] = std::uint8_t(std::min(255, 128 + int(100 * std::sin(x * 0.01 + y * 0.02)) + noise / 2));
            p[3] = 255;
        }
    return rgba;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// The calling thread's processor time in milliseconds: on a machine others build on, wall time
// also counts the time the thread waits for a core.
double threadMs()
{
    timespec t {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
}

double timed(int runs, bool processorTime, const std::function<void()>& work)
{
    std::vector<double> ms;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const double startCpu = threadMs();
        work();
        ms.push_back(processorTime
                ? threadMs() - startCpu
                : std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return median(ms);
}

struct Entry {
    std::string label;
    std::string name;
    std::map<std::string, double> numbers;
    std::map<std::string, kit::Point> points;
#ifdef QM_HAVE_OPENCV
    std::function<void(const cv::Mat& in, cv::Mat& out)> opencv;
    std::string opencvLabel;
#endif
};

#ifdef QM_HAVE_OPENCV
// A per-channel table over 8-bit values, alpha kept.
std::function<void(const cv::Mat&, cv::Mat&)> lut(const std::function<double(double)>& f)
{
    cv::Mat table(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i) {
        const auto v = std::uint8_t(std::clamp(std::lround(255 * f(i / 255.0)), 0L, 255L));
        table.at<cv::Vec4b>(0, i) = cv::Vec4b(v, v, v, std::uint8_t(i));
    }
    return [table](const cv::Mat& in, cv::Mat& out) { cv::LUT(in, table, out); };
}

std::function<void(const cv::Mat&, cv::Mat&)> matrix(const float (&m)[9])
{
    cv::Mat t = (cv::Mat_<float>(4, 4) << m[0], m[1], m[2], 0, m[3], m[4], m[5], 0, m[6], m[7], m[8], 0, 0, 0, 0, 1);
    return [t](const cv::Mat& in, cv::Mat& out) { cv::transform(in, out, t); };
}

cv::Mat disc(int r)
{
    cv::Mat k = cv::Mat::zeros(2 * r + 1, 2 * r + 1, CV_32F);
    int count = 0;
    for (int y = -r; y <= r; ++y)
        for (int x = -r; x <= r; ++x)
            if (x * x + y * y <= r * r)
                k.at<float>(y + r, x + r) = 1, ++count;
    return k / count;
}
#endif

std::vector<Entry> entries()
{
    std::vector<Entry> list;
    auto add = [&](std::string label, std::string name, std::map<std::string, double> numbers = {}) {
        Entry entry;
        entry.label = std::move(label);
        entry.name = std::move(name);
        entry.numbers = std::move(numbers);
        list.push_back(std::move(entry));
        return &list.back();
    };
    [[maybe_unused]] Entry* e = nullptr;
    for (double r : { 2.0, 10.0, 50.0 }) {
        e = add("CIGaussianBlur " + std::to_string(int(r)), "CIGaussianBlur", { { "inputRadius", r } });
#ifdef QM_HAVE_OPENCV
        e->opencvLabel = "GaussianBlur";
        e->opencv = [r](const cv::Mat& in, cv::Mat& out) {
            cv::GaussianBlur(in, out, cv::Size(), r, r, cv::BORDER_REPLICATE);
        };
#endif
    }
    for (double r : { 2.0, 10.0, 50.0 }) {
        e = add("CIBoxBlur " + std::to_string(int(r)), "CIBoxBlur", { { "inputRadius", r } });
#ifdef QM_HAVE_OPENCV
        e->opencvLabel = "blur";
        e->opencv = [r](const cv::Mat& in, cv::Mat& out) {
            cv::blur(in, out, cv::Size(2 * int(r) + 1, 2 * int(r) + 1), cv::Point(-1, -1), cv::BORDER_REPLICATE);
        };
#endif
    }
    for (double r : { 8.0, 20.0 }) {
        e = add("CIDiscBlur " + std::to_string(int(r)), "CIDiscBlur", { { "inputRadius", r } });
#ifdef QM_HAVE_OPENCV
        e->opencvLabel = "filter2D disc";
        e->opencv = [kernel = disc(int(r))](const cv::Mat& in, cv::Mat& out) {
            cv::filter2D(in, out, -1, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
        };
#endif
    }
    add("CIMotionBlur", "CIMotionBlur");
    add("CIZoomBlur", "CIZoomBlur")->points["inputCenter"] = { 1500, 1500 };
    add("CIColorControls", "CIColorControls", { { "inputSaturation", 1.3 }, { "inputContrast", 1.1 } });
    e = add("CIExposureAdjust", "CIExposureAdjust", { { "inputEV", 0.5 } });
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "LUT", e->opencv = lut([](double v) { return v * std::sqrt(2.0); });
#endif
    e = add("CIGammaAdjust", "CIGammaAdjust", { { "inputPower", 0.7 } });
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "LUT", e->opencv = lut([](double v) { return std::pow(v, 0.7); });
#endif
    e = add("CIHueAdjust", "CIHueAdjust", { { "inputAngle", 1.0 } });
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "transform";
    e->opencv = matrix({ 0.69f, -0.19f, 0.5f, 0.5f, 0.69f, -0.19f, -0.19f, 0.5f, 0.69f });
#endif
    add("CIVibrance", "CIVibrance", { { "inputAmount", 0.5 } });
    e = add("CIColorInvert", "CIColorInvert");
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "LUT", e->opencv = lut([](double v) { return 1 - v; });
#endif
    e = add("CIColorPosterize", "CIColorPosterize");
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "LUT", e->opencv = lut([](double v) { return std::floor(v * 6 + 0.5) / 6; });
#endif
    for (const char* effect : { "Chrome", "Fade", "Instant", "Mono", "Process", "Transfer" })
        add(std::string("CIPhotoEffect") + effect, std::string("CIPhotoEffect") + effect);
    e = add("CISepiaTone", "CISepiaTone");
#ifdef QM_HAVE_OPENCV
    e->opencvLabel = "transform";
    e->opencv = matrix({ 0.359f, 0.704f, 0.137f, 0.299f, 0.587f, 0.114f, 0.239f, 0.470f, 0.091f });
#endif
    add("CIVignette", "CIVignette", { { "inputIntensity", 0.8 } });
    add("CIVignetteEffect", "CIVignetteEffect", { { "inputRadius", 1200 } })->points["inputCenter"] = { 1500, 1500 };
    add("CIBumpDistortion", "CIBumpDistortion", { { "inputRadius", 1000 } })->points["inputCenter"] = { 1500, 1500 };
    return list;
}

} // namespace

int main(int argc, char** argv)
{
    int runs = 5;
    std::string only;
    bool processorTime = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--cpu") == 0)
            processorTime = true;
        else if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc)
            runs = std::max(1, std::atoi(argv[++i]));
        else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc)
            only = argv[++i];
    }
    auto bytes = picture();
    auto space = kit::ColorSpace::createSRGB();
    auto image = kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytesNoCopy(bytes.data(), bytes.size(), false),
        std::size_t(kSide) * 4, { float(kSide), float(kSide) }, kit::CIFormatRGBA8, space.get());
    std::vector<std::uint8_t> target(bytes.size());
    auto context = kit::BitmapContext::create(
        target.data(), kSide, kSide, 8, std::size_t(kSide) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    auto ciContext = kit::CIContext::contextWithCGContextOptions(context.get(), nullptr);
    const kit::Rect whole(0, 0, kSide, kSide);
#ifdef QM_HAVE_OPENCV
    cv::setNumThreads(1);
    const cv::Mat in(kSide, kSide, CV_8UC4, bytes.data());
    cv::Mat out;
    std::printf("| filter | kit ms | OpenCV | OpenCV ms | kit / OpenCV |\n|---|---|---|---|---|\n");
#else
    std::printf("| filter | kit ms |\n|---|---|\n");
#endif
    for (const Entry& entry : entries()) {
        if (!only.empty() && entry.label.find(only) == std::string::npos)
            continue;
        auto filter = kit::CIFilter::filterWithName(entry.name);
        filter->setValueForKey(image, "inputImage");
        for (const auto& [key, value] : entry.numbers)
            filter->setValueForKey(value, key);
        for (const auto& [key, value] : entry.points)
            filter->setValueForKey(value, key);
        auto output = filter->outputImage();
        bool drawn = true;
        const double kit = timed(runs, processorTime,
            [&] { drawn = drawn && ciContext->clearAndDrawImageInRectFromRect(output.get(), whole, whole); });
        if (!drawn) {
            std::printf("| %s | failed |\n", entry.label.c_str());
            continue;
        }
#ifdef QM_HAVE_OPENCV
        if (entry.opencv) {
            const double cvMs = timed(runs, processorTime, [&] { entry.opencv(in, out); });
            std::printf("| %s | %.1f | %s | %.1f | %.2f |\n", entry.label.c_str(), kit, entry.opencvLabel.c_str(), cvMs,
                kit / cvMs);
        } else {
            std::printf("| %s | %.1f | – | – | – |\n", entry.label.c_str(), kit);
        }
#else
        std::printf("| %s | %.1f |\n", entry.label.c_str(), kit);
#endif
        std::fflush(stdout);
    }
    return 0;
}
