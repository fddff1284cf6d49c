// Filter images: the Gaussian blur against an exact double-precision reference, and drawing.
#include "kit/CIContext.h"
#include "kit/CIFilter.h"
#include "kit/CIImage.h"
#include "kit/GaussianBlur.h"
#include "kit/MemoryRecycler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

// The exact blur of one channel: weights exp(-n^2 / 2 sigma^2) normalised over all integers,
// zero outside the image, the result cut to the image. Plain separable sums in double.
std::vector<double> exactBlur(const std::vector<double>& in, int w, int h, double sigma)
{
    const int reach = int(std::ceil(12 * sigma)) + 2;
    std::vector<double> weights(std::size_t(2 * reach + 1));
    double sum = 0;
    for (int n = -reach; n <= reach; ++n)
        sum += weights[std::size_t(n + reach)] = std::exp(-double(n) * n / (2 * sigma * sigma));
    for (double& wgt : weights)
        wgt /= sum;
    std::vector<double> across(in.size(), 0), out(in.size(), 0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int n = std::max(-reach, -x); n <= std::min(reach, w - 1 - x); ++n)
                across[std::size_t(y * w + x)] += weights[std::size_t(n + reach)] * in[std::size_t(y * w + x + n)];
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int n = std::max(-reach, -y); n <= std::min(reach, h - 1 - y); ++n)
                out[std::size_t(y * w + x)] += weights[std::size_t(n + reach)] * across[std::size_t((y + n) * w + x)];
    return out;
}

enum class Paint {
    White, // grey premultiplied: every byte equals alpha
    Black, // colour bytes zero
    Colours,
};

// A premultiplied image with a solid block, a thin line and scattered pixels: edges, an
// impulse-like line and noise all meet the blur.
std::vector<std::uint8_t> testImage(int w, int h, Paint paint, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::uint8_t> rgba(std::size_t(w * h * 4), 0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int a = 0;
            if (x >= w / 4 && x < w * 3 / 4 && y >= h / 3 && y < h - 2)
                a = 255;
            else if (x == 2)
                a = 200;
            else if (random() % 5 == 0)
                a = int(random() % 256);
            std::uint8_t* p = &rgba[std::size_t((y * w + x) * 4)];
            p[3] = std::uint8_t(a);
            for (int c = 0; c < 3; ++c) {
                switch (paint) {
                case Paint::White: p[c] = std::uint8_t(a); break;
                case Paint::Black: p[c] = 0; break;
                case Paint::Colours: p[c] = std::uint8_t(a == 0 ? 0 : random() % (a + 1)); break;
                }
            }
        }
    return rgba;
}

// Blurs through the filter framework exactly as a client does, into a cleared bitmap context.
std::vector<std::uint8_t> blurThroughContext(const std::vector<std::uint8_t>& rgba, int w, int h, double sigma)
{
    auto space = kit::ColorSpace::createDeviceRGB();
    auto data = kit::Data::dataWithBytes(rgba.data(), rgba.size());
    auto image = kit::CIImage::imageWithBitmapData(
        data, std::size_t(w) * 4, { float(w), float(h) }, kit::CIFormatRGBA8, space.get());
    auto filter = kit::CIFilter::filterWithName("CIGaussianBlur");
    filter->setValueForKey(image, "inputImage");
    filter->setValueForKey(sigma, "inputRadius");
    std::vector<std::uint8_t> out(rgba.size(), 0);
    auto context = kit::BitmapContext::create(
        out.data(), w, h, 8, std::size_t(w) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    auto ciContext = kit::CIContext::contextWithCGContextOptions(context.get(), nullptr);
    const kit::Rect whole(0, 0, float(w), float(h));
    EXPECT_TRUE(ciContext->drawImageInRectFromRect(filter->outputImage().get(), whole, whole));
    return out;
}

double worstError(const std::vector<std::uint8_t>& in, const std::vector<std::uint8_t>& got, int w, int h, double sigma)
{
    double worst = 0;
    for (int c = 0; c < 4; ++c) {
        std::vector<double> channel(std::size_t(w * h));
        for (std::size_t i = 0; i < channel.size(); ++i)
            channel[i] = in[4 * i + std::size_t(c)];
        const auto exact = sigma < 0.0001 ? channel : exactBlur(channel, w, h, sigma);
        for (std::size_t i = 0; i < channel.size(); ++i)
            worst = std::max(worst, std::fabs(got[4 * i + std::size_t(c)] - exact[i]));
    }
    return worst;
}

class GaussianBlurAccuracy : public ::testing::TestWithParam<double> {};

TEST_P(GaussianBlurAccuracy, EveryChannelIsWithinOneStepOfTheExactGaussian)
{
    const double sigma = GetParam();
    // Sizes that are not multiples of the vector width, and one side longer than the other.
    const int w = 37, h = 23;
    for (Paint paint : { Paint::White, Paint::Black, Paint::Colours }) {
        const auto in = testImage(w, h, paint, unsigned(sigma * 1000) + int(paint));
        const auto got = blurThroughContext(in, w, h, sigma);
        EXPECT_LE(worstError(in, got, w, h, sigma), 1.0) << "sigma " << sigma << " paint " << int(paint);
    }
}

INSTANTIATE_TEST_SUITE_P(RadiiFromTinyToHundred, GaussianBlurAccuracy,
    ::testing::Values(
        0.00005, 0.0001, 0.01, 0.15, 0.16, 0.2, 0.35, 0.5, 0.75, 1.0, 1.6, 2.5, 4.0, 7.0, 12.0, 25.0, 50.0, 100.0));

TEST(GaussianBlur, ASpanBlursExactlyAsTheDirectSumOverItsCoverage)
{
    // Spans inside, within one pixel, on whole pixels, cut by either end, beyond the line and
    // empty; sigmas from none to far wider than the line.
    const std::vector<std::pair<double, double>> spans = { { 3.25, 17.5 }, { 9.1, 9.6 }, { 4, 12 }, { -6.5, 8.25 },
        { 20.5, 40 }, { -5, -1 }, { 31, 45 }, { 7.5, 7.5 } };
    const int length = 31;
    for (double sigma : { 0.0, 0.1, 0.3, 1.0, 2.5, 7.0, 100.0 }) {
        const kit::GaussianBlur blur(sigma);
        for (auto [from, to] : spans) {
            std::vector<double> line(length);
            for (int p = 0; p < length; ++p)
                line[std::size_t(p)] = std::max(0.0, std::min(to, p + 1.0) - std::max(from, double(p)));
            std::vector<double> exact = line;
            if (!blur.isIdentity()) {
                // The same blur as a column: along the other axis a one-pixel line takes only the
                // centre weight (a single pixel takes it on both axes), which divides out.
                const auto column = exactBlur(line, 1, length, sigma);
                const auto centre = std::sqrt(exactBlur({ 1.0 }, 1, 1, sigma)[0]);
                for (int p = 0; p < length; ++p)
                    exact[std::size_t(p)] = column[std::size_t(p)] / centre;
            }
            std::vector<float> got(length, -1);
            blur.blurSpan(from, to, length, got.data());
            for (int i = 0; i < length; ++i)
                ASSERT_NEAR(got[std::size_t(i)], exact[std::size_t(i)], 1e-6)
                    << "sigma " << sigma << " span " << from << " " << to << " pixel " << i;
        }
    }
}

TEST(GaussianBlur, ALongStraightEdgeKeepsHalfAlphaOnItsOldBoundary)
{
    // Opaque columns 16 .. 63; the edge at x = 64 lies far from the other one and from the sides.
    const int w = 128, h = 9;
    std::vector<std::uint8_t> in(std::size_t(w * h * 4), 0);
    for (int y = 0; y < h; ++y)
        for (int x = 16; x < 64; ++x)
            for (int c = 0; c < 4; ++c)
                in[std::size_t((y * w + x) * 4 + c)] = 255;
    const auto out = blurThroughContext(in, w, h, 3.0);
    // The rows are cut at the image's top and bottom alike, so compare within the middle row.
    const int row = h / 2;
    auto alpha = [&](int x) { return double(out[std::size_t((row * w + x) * 4 + 3)]); };
    EXPECT_NEAR((alpha(63) + alpha(64)) / 2, alpha(40) / 2, 1.0);
    EXPECT_GT(alpha(63), alpha(64));
}

TEST(CIContext, DrawsTheSourceRectangleIntoTheDestinationRectangleWithYUp)
{
    // A 2 x 2 image, memory top row first: top (red, green), bottom (blue, white).
    const std::vector<std::uint8_t> rgba = { 255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255 };
    auto space = kit::ColorSpace::createDeviceRGB();
    auto image = kit::CIImage::imageWithBitmapData(
        kit::Data::dataWithBytes(rgba.data(), rgba.size()), 8, { 2, 2 }, kit::CIFormatRGBA8, space.get());
    std::vector<std::uint8_t> out(4 * 4 * 4, 0);
    auto context = kit::BitmapContext::create(out.data(), 4, 4, 8, 16, space.get(), kit::ImageAlphaPremultipliedLast);
    auto ciContext = kit::CIContext::contextWithCGContextOptions(context.get(), nullptr);
    // The image's top row (y 1..2) into the bitmap's bottom-left corner, and a source rectangle
    // hanging over the image's right edge, which reads transparent black there.
    ASSERT_TRUE(ciContext->drawImageInRectFromRect(image.get(), kit::Rect(0, 0, 2, 1), kit::Rect(0, 1, 2, 1)));
    ASSERT_TRUE(ciContext->drawImageInRectFromRect(image.get(), kit::Rect(2, 3, 2, 1), kit::Rect(1, 0, 2, 1)));
    auto pixel = [&](int column, int row) {
        return std::vector<std::uint8_t>(
            &out[std::size_t((row * 4 + column) * 4)], &out[std::size_t((row * 4 + column) * 4 + 4)]);
    };
    EXPECT_EQ(pixel(0, 3), (std::vector<std::uint8_t> { 255, 0, 0, 255 }));
    EXPECT_EQ(pixel(1, 3), (std::vector<std::uint8_t> { 0, 255, 0, 255 }));
    EXPECT_EQ(pixel(2, 0), (std::vector<std::uint8_t> { 255, 255, 255, 255 }));
    EXPECT_EQ(pixel(3, 0), (std::vector<std::uint8_t> { 0, 0, 0, 0 }));
    EXPECT_EQ(pixel(0, 0), (std::vector<std::uint8_t> { 0, 0, 0, 0 }));
}

TEST(CIContext, ClearingAndDrawingIsClearingThenDrawingForEveryKindOfImageAndPlace)
{
    // Blurs of grey, black and coloured images, the image itself, and places that cover the
    // bitmap exactly, cover only part of it, and scale; over old pixels each time.
    const int w = 37, h = 23;
    auto space = kit::ColorSpace::createDeviceRGB();
    const std::vector<std::pair<kit::Rect, kit::Rect>> places = {
        { kit::Rect(0, 0, w, h), kit::Rect(0, 0, w, h) },
        { kit::Rect(0, 0, w, h), kit::Rect(-4, 3, w, h) },
        { kit::Rect(5, 2, 20, 15), kit::Rect(3, 1, 20, 15) },
        { kit::Rect(0, 0, w, h), kit::Rect(0, 0, 18.5f, 11.5f) },
    };
    for (Paint paint : { Paint::White, Paint::Black, Paint::Colours }) {
        const auto in = testImage(w, h, paint, 21);
        auto image = kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytes(in.data(), in.size()),
            std::size_t(w) * 4, { float(w), float(h) }, kit::CIFormatRGBA8, space.get());
        for (double sigma : { 0.0, 2.5 }) {
            auto drawn = sigma > 0 ? kit::CIImage::gaussianBlur(image, sigma) : image;
            for (const auto& [to, from] : places) {
                const auto old = testImage(w, h, Paint::Colours, 5);
                std::vector<std::uint8_t> once = old, twice(old.size(), 0);
                auto onceContext = kit::BitmapContext::create(
                    once.data(), w, h, 8, std::size_t(w) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
                auto twiceContext = kit::BitmapContext::create(
                    twice.data(), w, h, 8, std::size_t(w) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
                ASSERT_TRUE(kit::CIContext::contextWithCGContextOptions(onceContext.get(), nullptr)
                                ->clearAndDrawImageInRectFromRect(drawn.get(), to, from));
                ASSERT_TRUE(kit::CIContext::contextWithCGContextOptions(twiceContext.get(), nullptr)
                                ->drawImageInRectFromRect(drawn.get(), to, from));
                ASSERT_EQ(once, twice) << "paint " << int(paint) << " sigma " << sigma << " to " << to.x() << ","
                                       << to.y() << " from " << from.x() << "," << from.y();
            }
        }
    }
}

TEST(CIImage, ARGBDataIsReadAsAlphaFirst)
{
    const std::vector<std::uint8_t> argb = { 200, 10, 20, 30 };
    auto space = kit::ColorSpace::createDeviceRGB();
    auto image = kit::CIImage::imageWithBitmapData(
        kit::Data::dataWithBytes(argb.data(), 4), 4, { 1, 1 }, kit::CIFormatARGB8, space.get());
    ASSERT_TRUE(image);
    std::vector<std::uint8_t> out(4, 0);
    ASSERT_TRUE(image->drawArea(0, 0, 1, 1, out.data(), 4));
    EXPECT_EQ(out, (std::vector<std::uint8_t> { 10, 20, 30, 200 }));
}

TEST(CIImage, RefusesDataThatDoesNotHoldTheImage)
{
    std::vector<std::uint8_t> bytes(4 * 4 * 3);
    auto space = kit::ColorSpace::createDeviceRGB();
    auto data = kit::Data::dataWithBytes(bytes.data(), bytes.size());
    EXPECT_TRUE(kit::CIImage::imageWithBitmapData(data, 16, { 4, 3 }, kit::CIFormatRGBA8, space.get()));
    EXPECT_FALSE(kit::CIImage::imageWithBitmapData(data, 16, { 4, 4 }, kit::CIFormatRGBA8, space.get()));
    EXPECT_FALSE(kit::CIImage::imageWithBitmapData(data, 12, { 4, 3 }, kit::CIFormatRGBA8, space.get()));
    EXPECT_FALSE(kit::CIImage::imageWithBitmapData(data, 16, { 4.5f, 3 }, kit::CIFormatRGBA8, space.get()));
    EXPECT_FALSE(kit::CIImage::imageWithBitmapData(data, 16, { NAN, 3 }, kit::CIFormatRGBA8, space.get()));
    EXPECT_FALSE(kit::CIImage::imageWithBitmapData(nullptr, 16, { 4, 3 }, kit::CIFormatRGBA8, space.get()));
}

TEST(CIFilter, GaussianBlurHasItsKeysAndDefaultsAndAnOutputOnlyWithAnInput)
{
    EXPECT_FALSE(kit::CIFilter::filterWithName("CINoSuchFilter"));
    auto filter = kit::CIFilter::filterWithName("CIGaussianBlur");
    ASSERT_TRUE(filter);
    EXPECT_EQ(filter->numberForKey("inputRadius"), 10.0);
    EXPECT_TRUE(std::isnan(filter->numberForKey("inputAngle")));
    EXPECT_FALSE(filter->imageForKey("outputImage"));

    const std::vector<std::uint8_t> rgba(4 * 4 * 4, 255);
    auto space = kit::ColorSpace::createDeviceRGB();
    auto image = kit::CIImage::imageWithBitmapData(
        kit::Data::dataWithBytes(rgba.data(), rgba.size()), 16, { 4, 4 }, kit::CIFormatRGBA8, space.get());
    filter->setValueForKey(image, "inputImage");
    filter->setValueForKey(2.0, "inputRadius");
    auto output = filter->imageForKey("outputImage");
    ASSERT_TRUE(output);
    EXPECT_EQ(output->extent(), kit::Rect(-6, -6, 16, 16)); // grown by ceil(3 sigma)
    // Below 0.16 the blur only widens the extent; radii that mean nothing give the input itself.
    filter->setValueForKey(0.1, "inputRadius");
    EXPECT_EQ(filter->outputImage()->extent(), kit::Rect(-1, -1, 6, 6));
    for (double radius : { 0.0, -3.0, double(NAN) }) {
        filter->setValueForKey(radius, "inputRadius");
        EXPECT_EQ(filter->outputImage().get(), image.get()) << radius;
    }
    filter->setDefaults();
    EXPECT_FALSE(filter->outputImage());
}

TEST(CIFilter, ListsItsNumberAndPointKeysInOrderAndIgnoresOthers)
{
    auto effect = kit::CIFilter::filterWithName("CIVignetteEffect");
    ASSERT_TRUE(effect);
    EXPECT_EQ(effect->numberKeys(), (std::vector<std::string> { "inputRadius", "inputIntensity", "inputFalloff" }));
    EXPECT_EQ(effect->pointKeys(), (std::vector<std::string> { "inputCenter" }));
    EXPECT_EQ(effect->pointForKey("inputCenter"), (kit::Point { 150, 150 }));
    effect->setValueForKey(kit::Point { 3, 4 }, "inputCenter");
    effect->setValueForKey(kit::Point { 3, 4 }, "inputRadius"); // a number key takes no point
    EXPECT_EQ(effect->pointForKey("inputCenter"), (kit::Point { 3, 4 }));
    EXPECT_EQ(effect->numberForKey("inputRadius"), 150.0);
    EXPECT_TRUE(std::isnan(effect->pointForKey("inputRadius").x));
    auto invert = kit::CIFilter::filterWithName("CIColorInvert");
    ASSERT_TRUE(invert);
    EXPECT_TRUE(invert->numberKeys().empty());
    EXPECT_TRUE(invert->pointKeys().empty());
    EXPECT_FALSE(invert->outputImage()); // no input image yet
}

// An sRGB image of `w` x `h` RGBA bytes.
kit::RefPtr<kit::CIImage> srgbImage(const std::vector<std::uint8_t>& rgba, int w, int h)
{
    auto space = kit::ColorSpace::createSRGB();
    return kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytes(rgba.data(), rgba.size()), std::size_t(w) * 4,
        { float(w), float(h) }, kit::CIFormatRGBA8, space.get());
}

std::vector<std::uint8_t> drawnInto(const kit::CIImage& image, int w, int h, bool srgb)
{
    std::vector<std::uint8_t> out(std::size_t(w * h * 4), 7);
    auto space = srgb ? kit::ColorSpace::createSRGB() : kit::ColorSpace::createDeviceRGB();
    auto context = kit::BitmapContext::create(
        out.data(), w, h, 8, std::size_t(w) * 4, space.get(), kit::ImageAlphaPremultipliedLast);
    const kit::Rect whole(0, 0, float(w), float(h));
    EXPECT_TRUE(kit::CIContext::contextWithCGContextOptions(context.get(), nullptr)
                    ->clearAndDrawImageInRectFromRect(&image, whole, whole));
    return out;
}

TEST(CIImage, SRGBBytesComeBackExactlyThroughTheLinearChainAndDecodeIntoDeviceMemory)
{
    // Every colour byte under opaque, half and faint alpha.
    std::vector<std::uint8_t> rgba;
    for (int a : { 255, 128, 7 })
        for (int c = 0; c <= a; ++c)
            rgba.insert(rgba.end(), { std::uint8_t(c), std::uint8_t(a - c), std::uint8_t(c / 2), std::uint8_t(a) });
    const int w = int(rgba.size() / 4);
    auto image = srgbImage(rgba, w, 1);
    auto filter = kit::CIFilter::filterWithName("CIExposureAdjust"); // EV 0: the chain without a change
    filter->setValueForKey(image, "inputImage");
    EXPECT_EQ(drawnInto(*filter->outputImage(), w, 1, true), rgba);
    // Into device RGB the values arrive in linear light: sRGB 188 is linear 0.5.
    const std::vector<std::uint8_t> grey = { 188, 188, 188, 255 };
    EXPECT_EQ(drawnInto(*srgbImage(grey, 1, 1), 1, 1, false), (std::vector<std::uint8_t> { 128, 128, 128, 255 }));
}

TEST(CIImage, ClampingRepeatsTheEdgesWithoutEndAndCroppingCutsBack)
{
    // 3 x 2, memory top row first: top (A, B, C), bottom (D, E, F).
    std::vector<std::uint8_t> rgba;
    for (int i = 0; i < 6; ++i)
        rgba.insert(rgba.end(), { std::uint8_t(40 * i), std::uint8_t(255 - 40 * i), 90, 255 });
    auto clamped = srgbImage(rgba, 3, 2)->imageByClampingToExtent();
    EXPECT_TRUE(kit::isInfinite(clamped->extent()));
    EXPECT_EQ(clamped->imageByClampingToExtent().get(), clamped.get());
    // An area far off to the lower right and one above the left: F and A repeated.
    std::vector<std::uint8_t> far(4 * 4, 0), above(4 * 2, 0);
    auto space = kit::ColorSpace::createSRGB();
    ASSERT_TRUE(clamped->drawArea(1000, -5000, 2, 2, far.data(), 8, true, space.get()));
    ASSERT_TRUE(clamped->drawArea(-7, 40, 1, 2, above.data(), 4, true, space.get()));
    for (int p = 0; p < 4; ++p)
        EXPECT_TRUE(std::equal(far.begin() + 4 * p, far.begin() + 4 * p + 4, rgba.begin() + 20)) << p;
    for (int p = 0; p < 2; ++p)
        EXPECT_TRUE(std::equal(above.begin() + 4 * p, above.begin() + 4 * p + 4, rgba.begin())) << p;

    auto cropped = clamped->imageByCroppingToRect(kit::Rect(-1, 0, 2, 5));
    EXPECT_EQ(cropped->extent(), kit::Rect(-1, 0, 2, 5));
    std::vector<std::uint8_t> row(4 * 4, 1);
    ASSERT_TRUE(cropped->drawArea(-2, 4, 4, 1, row.data(), 16, true, space.get()));
    EXPECT_EQ(std::vector<std::uint8_t>(row.begin(), row.begin() + 4), (std::vector<std::uint8_t> { 0, 0, 0, 0 }));
    EXPECT_TRUE(std::equal(
        row.begin() + 4, row.begin() + 12, std::vector<std::uint8_t> { 0, 255, 90, 255, 0, 255, 90, 255 }.begin()));
    EXPECT_EQ(std::vector<std::uint8_t>(row.begin() + 12, row.end()), (std::vector<std::uint8_t> { 0, 0, 0, 0 }));
}

TEST(CIImage, ABlurOfAClampedPictureKeepsItsBordersFromFading)
{
    // A flat colour stays flat to the very edge, where a blur of the bare picture darkens.
    const int w = 19, h = 11;
    std::vector<std::uint8_t> rgba;
    for (int i = 0; i < w * h; ++i)
        rgba.insert(rgba.end(), { 200, 120, 30, 255 });
    auto picture = srgbImage(rgba, w, h);
    for (const char* name : { "CIGaussianBlur", "CIBoxBlur", "CIDiscBlur", "CIMotionBlur" }) {
        auto filter = kit::CIFilter::filterWithName(name);
        filter->setValueForKey(picture->imageByClampingToExtent(), "inputImage");
        filter->setValueForKey(6.0, "inputRadius");
        auto output = filter->outputImage()->imageByCroppingToRect(picture->extent());
        EXPECT_EQ(output->extent(), picture->extent());
        const auto drawn = drawnInto(*output, w, h, true);
        for (std::size_t i = 0; i < drawn.size(); ++i)
            ASSERT_NEAR(drawn[i], rgba[i], 1) << name << " byte " << i;
    }
}

TEST(CIFilter, ChannelMapsOverBitmapBytesDrawTheBytesOfTheFloatPath)
{
    // Over the bitmap itself the map is a byte table; over the bitmap clamped and cropped back
    // it runs in floats. Both must give the same bytes.
    const int w = 37, h = 23;
    const auto rgba = testImage(w, h, Paint::Colours, 11);
    auto picture = srgbImage(rgba, w, h);
    const std::vector<std::pair<const char*, std::pair<const char*, double>>> maps
        = { { "CIColorInvert", { "", 0 } }, { "CIExposureAdjust", { "inputEV", 0.6 } },
              { "CIGammaAdjust", { "inputPower", 0.45 } }, { "CIColorPosterize", { "inputLevels", 3 } } };
    for (const auto& [name, setting] : maps) {
        std::vector<std::uint8_t> drawn[2];
        for (int way = 0; way < 2; ++way) {
            auto filter = kit::CIFilter::filterWithName(name);
            filter->setValueForKey(way ? picture->imageByClampingToExtent() : picture, "inputImage");
            filter->setValueForKey(setting.second, setting.first);
            auto output = filter->outputImage();
            drawn[way] = drawnInto(way ? *output->imageByCroppingToRect(picture->extent()) : *output, w, h, true);
        }
        EXPECT_EQ(drawn[0], drawn[1]) << name;
    }
}

TEST(CIFilter, FiltersThatDrawBitmapBytesDirectlyAgreeWithTheFloatPath)
{
    // The blurs read a bitmap a band of rows at a time, in stripes of columns, from its own
    // bytes where a row lies inside it, and the colour matrices go byte to byte; over the
    // bitmap cropped to itself every one of them runs in floats. A picture wider than a stripe
    // puts seams and edges inside it.
    const int w = 1700, h = 9;
    const auto rgba = testImage(w, h, Paint::Colours, 5);
    auto picture = srgbImage(rgba, w, h);
    const std::vector<std::pair<const char*, std::pair<const char*, double>>> filters
        = { { "CIBoxBlur", { "inputRadius", 15 } }, { "CIGaussianBlur", { "inputRadius", 2 } },
              { "CIHueAdjust", { "inputAngle", 2 } }, { "CISepiaTone", { "inputIntensity", 0.7 } } };
    for (const auto& [name, setting] : filters) {
        std::vector<std::uint8_t> drawn[2];
        for (int way = 0; way < 2; ++way) {
            auto filter = kit::CIFilter::filterWithName(name);
            filter->setValueForKey(way ? picture->imageByCroppingToRect(picture->extent()) : picture, "inputImage");
            filter->setValueForKey(setting.second, setting.first);
            drawn[way] = drawnInto(*filter->outputImage(), w, h, true);
        }
        for (std::size_t i = 0; i < drawn[0].size(); ++i)
            ASSERT_NEAR(drawn[0][i], drawn[1][i], 1) << name << " byte " << i;
    }
}

TEST(MemoryRecycler, HandsALargeGivenBackBlockToTheNextRequestOfAboutItsSize)
{
    auto& recycler = kit::MemoryRecycler::shared();
    recycler.trim();
    void* block = recycler.allocate(5 << 20);
    ASSERT_TRUE(block);
    recycler.release(block);
    EXPECT_GE(recycler.keptBytes(), std::size_t(5) << 20);
    EXPECT_EQ(recycler.allocate(9 << 19), block); // 4.5 MB: fits without wasting a quarter
    recycler.release(block);
    void* other = recycler.allocate(1 << 20); // far smaller: a fresh block
    EXPECT_NE(other, block);
    recycler.release(other);
    recycler.trim();
    EXPECT_EQ(recycler.keptBytes(), 0u);
}

} // namespace
