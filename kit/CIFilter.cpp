// CIFilter: the table of known filters, their inputs and defaults, and their recipes.
#include "kit/CIFilter.h"

#include "kit/FilterOutputs.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace kit {

struct CIFilter::Description {
    const char* name;
    std::vector<std::pair<const char*, double>> numberKeys; // with defaults, in order
    std::vector<std::pair<const char*, Point>> pointKeys;
    Recipe output;
};

namespace {

constexpr Point kCentre { 150, 150 };

} // namespace

static const std::vector<CIFilter::Description>& descriptions()
{
    using namespace filteroutputs;
    static const std::vector<CIFilter::Description> table = {
        { "CIGaussianBlur", { { "inputRadius", 10.0 } }, {}, gaussianBlur },
        { "CIBoxBlur", { { "inputRadius", 10.0 } }, {}, boxBlur },
        { "CIDiscBlur", { { "inputRadius", 8.0 } }, {}, discBlur },
        { "CIMotionBlur", { { "inputRadius", 20.0 }, { "inputAngle", 0.0 } }, {}, motionBlur },
        { "CIZoomBlur", { { "inputAmount", 20.0 } }, { { "inputCenter", kCentre } }, zoomBlur },
        { "CIColorControls", { { "inputSaturation", 1.0 }, { "inputBrightness", 0.0 }, { "inputContrast", 1.0 } }, {},
            colorControls },
        { "CIExposureAdjust", { { "inputEV", 0.0 } }, {}, exposureAdjust },
        { "CIGammaAdjust", { { "inputPower", 1.0 } }, {}, gammaAdjust },
        { "CIHueAdjust", { { "inputAngle", 0.0 } }, {}, hueAdjust },
        { "CIVibrance", { { "inputAmount", 0.0 } }, {}, vibrance },
        { "CIColorInvert", {}, {}, colorInvert },
        { "CIColorPosterize", { { "inputLevels", 6.0 } }, {}, colorPosterize },
        { "CIPhotoEffectChrome", {}, {}, photoEffectChrome },
        { "CIPhotoEffectFade", {}, {}, photoEffectFade },
        { "CIPhotoEffectInstant", {}, {}, photoEffectInstant },
        { "CIPhotoEffectMono", {}, {}, photoEffectMono },
        { "CIPhotoEffectProcess", {}, {}, photoEffectProcess },
        { "CIPhotoEffectTransfer", {}, {}, photoEffectTransfer },
        { "CISepiaTone", { { "inputIntensity", 1.0 } }, {}, sepiaTone },
        { "CIVignette", { { "inputRadius", 1.0 }, { "inputIntensity", 0.0 } }, {}, vignette },
        { "CIVignetteEffect", { { "inputRadius", 150.0 }, { "inputIntensity", 1.0 }, { "inputFalloff", 0.5 } },
            { { "inputCenter", kCentre } }, vignetteEffect },
        { "CIBumpDistortion", { { "inputRadius", 300.0 }, { "inputScale", 0.5 } }, { { "inputCenter", kCentre } },
            bumpDistortion },
    };
    return table;
}

RefPtr<CIFilter> CIFilter::filterWithName(const std::string& name)
{
    for (const Description& description : descriptions()) {
        if (name == description.name)
            return adoptRef(new CIFilter(description));
    }
    return nullptr;
}

CIFilter::CIFilter(const Description& description) : m_description(description), m_name(description.name)
{
    setDefaults();
}

void CIFilter::setDefaults()
{
    m_images.clear();
    m_numbers.clear();
    m_points.clear();
    m_images["inputImage"] = nullptr;
    for (const auto& [key, value] : m_description.numberKeys)
        m_numbers[key] = value;
    for (const auto& [key, value] : m_description.pointKeys)
        m_points[key] = value;
}

void CIFilter::setValueForKey(RefPtr<CIImage> image, const std::string& key)
{
    auto it = m_images.find(key);
    if (it != m_images.end())
        it->second = std::move(image);
}

void CIFilter::setValueForKey(double number, const std::string& key)
{
    auto it = m_numbers.find(key);
    if (it != m_numbers.end())
        it->second = number;
}

void CIFilter::setValueForKey(Point point, const std::string& key)
{
    auto it = m_points.find(key);
    if (it != m_points.end())
        it->second = point;
}

RefPtr<CIImage> CIFilter::imageForKey(const std::string& key) const
{
    if (key == "outputImage")
        return outputImage();
    auto it = m_images.find(key);
    return it == m_images.end() ? nullptr : it->second;
}

double CIFilter::numberForKey(const std::string& key) const
{
    auto it = m_numbers.find(key);
    return it == m_numbers.end() ? std::numeric_limits<double>::quiet_NaN() : it->second;
}

Point CIFilter::pointForKey(const std::string& key) const
{
    auto it = m_points.find(key);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    return it == m_points.end() ? Point { nan, nan } : it->second;
}

std::vector<std::string> CIFilter::numberKeys() const
{
    std::vector<std::string> keys;
    for (const auto& entry : m_description.numberKeys)
        keys.emplace_back(entry.first);
    return keys;
}

std::vector<std::string> CIFilter::pointKeys() const
{
    std::vector<std::string> keys;
    for (const auto& entry : m_description.pointKeys)
        keys.emplace_back(entry.first);
    return keys;
}

RefPtr<CIImage> CIFilter::outputImage() const
{
    for (const auto& [key, image] : m_images) {
        if (!image)
            return nullptr;
    }
    return m_description.output(*this);
}

} // namespace kit
