// The filter catalogue: its table entry by entry, the record's bytes, handles and the comparisons.
#include "Classes/Selection/AImageFilter.h"

#include "kit/CIFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

struct Param {
    const char* name;
    const char* key;
    float defaultValue = 0, minimum = 0, maximum = 0;
    bool point = false;
};

Param pointParam(const char* name, const char* key) { return { name, key, 0, 0, 0, true }; }

struct Entry {
    const char* name;
    const char* filterName;
    std::vector<Param> params;
};

// Written out from the catalogue's definition, not from the source, so that a slip in either shows.
const std::vector<Entry> kExpected = {
    { "Box Blur", "CIBoxBlur", { { "Radius", "inputRadius", 10, 0, 20 } } },
    { "Disc Blur", "CIDiscBlur", { { "Radius", "inputRadius", 8, 0, 20 } } },
    { "Gaussian Blur", "CIGaussianBlur", { { "Radius", "inputRadius", 10, 0, 20 } } },
    { "Motion Blur", "CIMotionBlur", { { "Radius", "inputRadius", 20, 0, 50 }, { "Angle", "inputAngle", 0, 0, 360 } } },
    { "Zoom Blur", "CIZoomBlur", { { "Amout", "inputAmount", 20, 0, 50 }, pointParam("Center", "inputCenter") } },
    { "Color Controls", "CIColorControls",
        { { "Saturation", "inputSaturation", 1, 0, 2 }, { "Brightness", "inputBrightness", 1, 0, 2 },
            { "Contrast", "inputContrast", 1, 0, 2 } } },
    { "Exposure Adjust", "CIExposureAdjust", { { "EV", "inputEV", 0.5f, -1, 2 } } },
    { "Gamma Adjust", "CIGammaAdjust", { { "Power", "inputPower", 0.75f, 0, 2 } } },
    { "Hue Adjust", "CIHueAdjust", { { "Angle", "inputAngle", 0, 0, 360 } } },
    { "Vibrance", "CIVibrance", { { "Angle", "inputAmount", 0, 0, 1 } } },
    { "Color Invert", "CIColorInvert", {} },
    { "Color Posterize", "CIColorPosterize", { { "Levels", "inputLevels", 6, 0, 12 } } },
    { "Chrome", "CIPhotoEffectChrome", {} },
    { "Fade", "CIPhotoEffectFade", {} },
    { "Instant", "CIPhotoEffectInstant", {} },
    { "Mono", "CIPhotoEffectMono", {} },
    { "Process", "CIPhotoEffectProcess", {} },
    { "Transfer", "CIPhotoEffectTransfer", {} },
    { "Sepia Tone", "CISepiaTone", { { "Intensity", "inputIntensity", 1, 0, 2 } } },
    { "Vignette", "CIVignette", { { "Radius", "inputRadius", 1, 0, 2 }, { "Intensity", "inputIntensity", 0, 0, 1 } } },
    { "Vignette Effect", "CIVignetteEffect",
        { { "Intensity", "inputIntensity", 1, 0, 1 }, pointParam("Center", "inputCenter") } },
    { "Bump Distortion", "CIBumpDistortion",
        { { "Radius", "inputRadius", 300, 0, 800 }, { "Scale", "inputScale", 0.5f, 0, 1 },
            pointParam("Center", "inputCenter") } },
};

const std::vector<_AstructAlgorithmItem>& table()
{
    return CAImageFilterInfo::GetImageFilterInfoInstance()->m_arrAlgorithm;
}

// A field of the record read from its raw bytes, as a host written in another language would.
template <typename T> T at(const AUNI_VARIABLE& param, std::size_t offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const unsigned char*>(&param) + offset, sizeof value);
    return value;
}

TEST(FilterCatalogue, HoldsEveryEntryWithItsNamesKeysDefaultsAndRanges)
{
    ASSERT_EQ(GetFiltersCount(), 22);
    ASSERT_EQ(table().size(), 22u);
    for (int i = 0; i < 22; ++i) {
        const Entry& want = kExpected[std::size_t(i)];
        const _AstructAlgorithmItem& item = table()[std::size_t(i)];
        SCOPED_TRACE(want.name);
        EXPECT_EQ(GetFilterName(i), want.name);
        EXPECT_EQ(item.strFilterName, want.filterName);
        EXPECT_EQ(item.nReserved, 0);
        ASSERT_EQ(GetFilterParaCount(i), int(want.params.size()));
        for (int j = 0; j < GetFilterParaCount(i); ++j) {
            const Param& p = want.params[std::size_t(j)];
            const AUNI_VARIABLE& got = item.vectorParam[std::size_t(j)];
            SCOPED_TRACE(p.name);
            EXPECT_EQ(GetFilterParamName(i, j), p.name);
            EXPECT_STREQ(got.szKey, p.key);
            EXPECT_EQ(got.nType, p.point ? 9 : 1);
            EXPECT_EQ(got.nFlags, p.point ? 1 : 7);
            // A point's range reads 0 through the float getters; a float's value starts at its default.
            EXPECT_EQ(GetFilterParamDefault(i, j), p.defaultValue);
            EXPECT_EQ(GetFilterParamMin(i, j), p.minimum);
            EXPECT_EQ(GetFilterParamMax(i, j), p.maximum);
            EXPECT_EQ(at<float>(got, 204), p.defaultValue);
            if (p.point) {
                EXPECT_EQ(at<float>(got, 208), 0.0f);
            }
        }
    }
    // Every filter the catalogue names is one the kit can make.
    for (const _AstructAlgorithmItem& item : table())
        EXPECT_TRUE(kit::CIFilter::filterWithName(item.strFilterName)) << item.strFilterName;
}

TEST(FilterCatalogue, RecordFieldsSitAtTheirFixedOffsets)
{
    const AUNI_VARIABLE& ev = table()[6].vectorParam[0]; // "EV": 0.5, -1 to 2
    EXPECT_EQ(sizeof(AUNI_VARIABLE), 2256u);
    EXPECT_STREQ(reinterpret_cast<const char*>(&ev), "EV");
    EXPECT_STREQ(reinterpret_cast<const char*>(&ev) + 100, "inputEV");
    EXPECT_EQ(at<int>(ev, 200), 1);
    EXPECT_EQ(at<float>(ev, 204), 0.5f);
    EXPECT_EQ(at<int>(ev, 716), 7);
    EXPECT_EQ(at<float>(ev, 720), 0.5f);
    EXPECT_EQ(at<float>(ev, 1232), 2.0f);
    EXPECT_EQ(at<float>(ev, 1744), -1.0f);
}

// A 4 x 4 opaque grey picture to apply filters to.
kit::RefPtr<kit::CIImage> smallImage()
{
    std::vector<unsigned char> rgba(4 * 4 * 4, 128);
    for (std::size_t i = 3; i < rgba.size(); i += 4)
        rgba[i] = 255;
    auto space = kit::ColorSpace::createDeviceRGB();
    return kit::CIImage::imageWithBitmapData(
        kit::Data::dataWithBytes(rgba.data(), rgba.size()), 16, { 4, 4 }, kit::CIFormatRGBA8, space.get());
}

struct Handle {
    void* h;
    explicit Handle(int entry, float value) : h(CreateFilterForImage(smallImage().get(), entry, value)) {}
    ~Handle() { DestroyImageFilter(h); }
};

TEST(FilterHandle, SetsOnlyTheFirstFloatAndRoundTripsParameters)
{
    Handle motion(3, 7.5f);
    ASSERT_TRUE(GetOutImage(motion.h));
    EXPECT_EQ(GetImageFilterParm(motion.h, 0), 7.5f);
    // The angle keeps the filter's own default (0), not the catalogue's.
    EXPECT_EQ(GetImageFilterParm(motion.h, 1), 0.0f);
    ModifyImageFilterParm(motion.h, 1, 45.25f);
    EXPECT_EQ(GetImageFilterParm(motion.h, 1), 45.25f);
    for (int bad : { -1, 2, 5 }) {
        ModifyImageFilterParm(motion.h, bad, 3);
        EXPECT_EQ(GetImageFilterParm(motion.h, bad), 0.0f) << bad;
    }
    EXPECT_EQ(GetImageFilterParm(motion.h, 0), 7.5f);

    Handle bump(21, 40);
    EXPECT_EQ(GetImageFilterParm(bump.h, 0), 40.0f);
    ModifyImageFilterParm(bump.h, 2, 9); // the centre is a point: not adjustable here
    EXPECT_EQ(GetImageFilterParm(bump.h, 2), 0.0f);

    Handle invert(10, 99); // no parameters: the value goes nowhere
    EXPECT_TRUE(GetOutImage(invert.h));
    EXPECT_EQ(GetImageFilterParm(invert.h, 0), 0.0f);
}

TEST(FilterHandle, NullHandlesAreHarmless)
{
    EXPECT_EQ(GetOutImage(nullptr), nullptr);
    EXPECT_EQ(GetImageFilterParm(nullptr, 0), 0.0f);
    ModifyImageFilterParm(nullptr, 0, 1);
    DestroyImageFilter(nullptr);
}

TEST(FilterHandle, RenderDrawsTheOutputIntoABitmap)
{
    Handle blur(2, 0); // a blur of radius 0 passes the picture through
    std::vector<unsigned char> pixels(8 * 8 * 4, 0);
    auto space = kit::ColorSpace::createDeviceRGB();
    auto context
        = kit::BitmapContext::create(pixels.data(), 8, 8, 8, 32, space.get(), kit::ImageAlphaPremultipliedLast);
    RenderCIImage(context.get(), GetOutImage(blur.h), kit::Rect(4, 0, 4, 4), kit::Rect(0, 0, 4, 4));
    // The bottom-right quarter (drawing space is y up: memory rows 4 to 7) holds the grey.
    for (int row = 0; row < 8; ++row)
        for (int column = 0; column < 8; ++column) {
            const bool inside = column >= 4 && row >= 4;
            EXPECT_EQ(pixels[std::size_t(row * 8 + column) * 4 + 3], inside ? 255 : 0) << column << "," << row;
            if (inside) {
                EXPECT_NEAR(pixels[std::size_t(row * 8 + column) * 4], 128, 1) << column << "," << row;
            }
        }
}

AUNI_VARIABLE floatParam(const char* name, float value)
{
    AUNI_VARIABLE p {};
    std::strcpy(p.szName, name);
    p.nType = 1;
    std::memcpy(p.value, &value, sizeof value);
    return p;
}

TEST(FilterComparison, FloatsWithinATenMillionthAreEqualAndKeysDoNotCount)
{
    EXPECT_TRUE(IsUnivariableEqual(floatParam("A", 0.5f), floatParam("A", std::nextafter(0.5f, 1.0f))));
    EXPECT_FALSE(IsUnivariableEqual(floatParam("A", 1.0f), floatParam("A", std::nextafter(1.0f, 2.0f))));
    EXPECT_FALSE(IsUnivariableEqual(floatParam("A", 1), floatParam("B", 1)));
    AUNI_VARIABLE keyed = floatParam("A", 1);
    std::strcpy(keyed.szKey, "inputOther");
    EXPECT_TRUE(IsUnivariableEqual(floatParam("A", 1), keyed));
    AUNI_VARIABLE whole = floatParam("A", 1);
    whole.nType = 3;
    EXPECT_FALSE(IsUnivariableEqual(whole, floatParam("A", 1)));
    AUNI_VARIABLE other = whole;
    EXPECT_TRUE(IsUnivariableEqual(whole, other));
    other.value[0] ^= 1;
    EXPECT_FALSE(IsUnivariableEqual(whole, other));

    EXPECT_TRUE(IsAlgorithmEqual(table()[0], table()[2])); // both "Radius" 10
    EXPECT_FALSE(IsAlgorithmEqual(table()[0], table()[1])); // 10 against 8
    EXPECT_TRUE(IsAlgorithmEqual(table()[10], table()[12])); // no parameters
}

TEST(FilterComparison, PointsAndLengthMismatchesAreBrokenInvariants)
{
    const AUNI_VARIABLE& centre = table()[4].vectorParam[1];
    EXPECT_DEATH(IsUnivariableEqual(centre, centre),
        "assertion failed: \\(false\\), function IsUnivariableEqual, file Classes/Selection/AImageFilter");
    EXPECT_DEATH(IsAlgorithmEqual(table()[3], table()[2]),
        "assertion failed: \\(Alg1.vectorParam.size\\(\\) == Alg2.vectorParam.size\\(\\)\\), function "
        "IsAlgorithmEqual");
}

} // namespace
