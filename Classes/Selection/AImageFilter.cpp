// AImageFilter: the catalogue's table, built at load, and the functions over it.
#include "Classes/Selection/AImageFilter.h"

#include "Classes/Selection/SelectionAssert.h"
#include "kit/CIContext.h"
#include "kit/CIFilter.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

namespace {

struct ParamRow {
    const char* name;
    const char* key;
    bool point; // a point with default (0, 0) and no range; otherwise a float
    float defaultValue;
    float minimum;
    float maximum;
};

struct FilterRow {
    const char* name;
    const char* filterName;
    std::vector<ParamRow> params;
};

ParamRow number(const char* name, const char* key, float defaultValue, float minimum, float maximum)
{
    return { name, key, false, defaultValue, minimum, maximum };
}

ParamRow point(const char* name, const char* key) { return { name, key, true, 0, 0, 0 }; }

// Names and keys stay as they are, "Amout" and the "Angle" of Vibrance included: settings and
// people's habits refer to them.
const std::vector<FilterRow>& rows()
{
    static const std::vector<FilterRow> table = {
        { "Box Blur", "CIBoxBlur", { number("Radius", "inputRadius", 10, 0, 20) } },
        { "Disc Blur", "CIDiscBlur", { number("Radius", "inputRadius", 8, 0, 20) } },
        { "Gaussian Blur", "CIGaussianBlur", { number("Radius", "inputRadius", 10, 0, 20) } },
        { "Motion Blur", "CIMotionBlur",
            { number("Radius", "inputRadius", 20, 0, 50), number("Angle", "inputAngle", 0, 0, 360) } },
        { "Zoom Blur", "CIZoomBlur", { number("Amout", "inputAmount", 20, 0, 50), point("Center", "inputCenter") } },
        { "Color Controls", "CIColorControls",
            { number("Saturation", "inputSaturation", 1, 0, 2), number("Brightness", "inputBrightness", 1, 0, 2),
                number("Contrast", "inputContrast", 1, 0, 2) } },
        { "Exposure Adjust", "CIExposureAdjust", { number("EV", "inputEV", 0.5f, -1, 2) } },
        { "Gamma Adjust", "CIGammaAdjust", { number("Power", "inputPower", 0.75f, 0, 2) } },
        { "Hue Adjust", "CIHueAdjust", { number("Angle", "inputAngle", 0, 0, 360) } },
        { "Vibrance", "CIVibrance", { number("Angle", "inputAmount", 0, 0, 1) } },
        { "Color Invert", "CIColorInvert", {} },
        { "Color Posterize", "CIColorPosterize", { number("Levels", "inputLevels", 6, 0, 12) } },
        { "Chrome", "CIPhotoEffectChrome", {} },
        { "Fade", "CIPhotoEffectFade", {} },
        { "Instant", "CIPhotoEffectInstant", {} },
        { "Mono", "CIPhotoEffectMono", {} },
        { "Process", "CIPhotoEffectProcess", {} },
        { "Transfer", "CIPhotoEffectTransfer", {} },
        { "Sepia Tone", "CISepiaTone", { number("Intensity", "inputIntensity", 1, 0, 2) } },
        { "Vignette", "CIVignette",
            { number("Radius", "inputRadius", 1, 0, 2), number("Intensity", "inputIntensity", 0, 0, 1) } },
        { "Vignette Effect", "CIVignetteEffect",
            { number("Intensity", "inputIntensity", 1, 0, 1), point("Center", "inputCenter") } },
        { "Bump Distortion", "CIBumpDistortion",
            { number("Radius", "inputRadius", 300, 0, 800), number("Scale", "inputScale", 0.5f, 0, 1),
                point("Center", "inputCenter") } },
    };
    return table;
}

CAImageFilterInfo s_ImageFilterInfo;

struct ImageFilterHandle {
    kit::RefPtr<kit::CIImage> outImage;
    kit::RefPtr<kit::CIFilter> filter;
    int index;
};

float slotFloat(const unsigned char* slot)
{
    float value;
    std::memcpy(&value, slot, sizeof value);
    return value;
}

void setSlotFloats(unsigned char* slot, std::initializer_list<float> values)
{
    std::memcpy(slot, values.begin(), values.size() * sizeof(float));
}

std::int32_t slotInt(const unsigned char* slot)
{
    std::int32_t value;
    std::memcpy(&value, slot, sizeof value);
    return value;
}

void copyName(char (&field)[100], const char* text) { std::strncpy(field, text, sizeof field - 1); }

AUNI_VARIABLE makeParam(const ParamRow& row)
{
    AUNI_VARIABLE param {};
    copyName(param.szName, row.name);
    copyName(param.szKey, row.key);
    if (row.point) {
        param.nType = kUnivariablePoint;
        setSlotFloats(param.value, { 0, 0 });
        param.nFlags = kUnivariableHasDefault;
        setSlotFloats(param.valueDefault, { 0, 0 });
        return param;
    }
    param.nType = kUnivariableFloat;
    setSlotFloats(param.value, { row.defaultValue });
    param.nFlags = kUnivariableHasDefault | kUnivariableHasMax | kUnivariableHasMin;
    setSlotFloats(param.valueDefault, { row.defaultValue });
    setSlotFloats(param.valueMax, { row.maximum });
    setSlotFloats(param.valueMin, { row.minimum });
    return param;
}

const AUNI_VARIABLE& paramAt(int index, int param)
{
    return s_ImageFilterInfo.m_arrAlgorithm[std::size_t(index)].vectorParam[std::size_t(param)];
}

using Slot = unsigned char[512];

float rangeSlot(int index, int param, int flag, Slot AUNI_VARIABLE::*slot)
{
    const AUNI_VARIABLE& p = paramAt(index, param);
    return p.nType == kUnivariableFloat && (p.nFlags & flag) ? slotFloat(p.*slot) : 0.0f;
}

/// The float parameter a live handle may read or change, or null where the call is to be ignored.
const AUNI_VARIABLE* adjustableParam(const ImageFilterHandle* h, int param)
{
    if (!h || !h->outImage || param < 0 || !h->filter)
        return nullptr;
    const auto& params = s_ImageFilterInfo.m_arrAlgorithm[std::size_t(h->index)].vectorParam;
    if (std::size_t(param) >= params.size() || params[std::size_t(param)].nType != kUnivariableFloat)
        return nullptr;
    return &params[std::size_t(param)];
}

} // namespace

CAImageFilterInfo::CAImageFilterInfo() { Init(); }

CAImageFilterInfo* CAImageFilterInfo::GetImageFilterInfoInstance() { return &s_ImageFilterInfo; }

void CAImageFilterInfo::Init()
{
    _AstructAlgorithmItem item;
    for (const FilterRow& row : rows()) {
        item.strName = row.name;
        item.strFilterName = row.filterName;
        item.nReserved = 0;
        item.vectorParam.clear();
        for (const ParamRow& param : row.params)
            item.vectorParam.push_back(makeParam(param));
        m_arrAlgorithm.push_back(item);
    }
}

int GetFiltersCount() { return int(s_ImageFilterInfo.m_arrAlgorithm.size()); }

std::string GetFilterName(int index) { return s_ImageFilterInfo.m_arrAlgorithm[std::size_t(index)].strName; }

int GetFilterParaCount(int index)
{
    return int(s_ImageFilterInfo.m_arrAlgorithm[std::size_t(index)].vectorParam.size());
}

std::string GetFilterParamName(int index, int param) { return paramAt(index, param).szName; }

float GetFilterParamMax(int index, int param)
{
    return rangeSlot(index, param, kUnivariableHasMax, &AUNI_VARIABLE::valueMax);
}

float GetFilterParamMin(int index, int param)
{
    return rangeSlot(index, param, kUnivariableHasMin, &AUNI_VARIABLE::valueMin);
}

float GetFilterParamDefault(int index, int param)
{
    return rangeSlot(index, param, kUnivariableHasDefault, &AUNI_VARIABLE::valueDefault);
}

void* CreateFilterForImage(kit::CIImage* image, int index, float value)
{
    const _AstructAlgorithmItem& item = s_ImageFilterInfo.m_arrAlgorithm[std::size_t(index)];
    auto* handle = new ImageFilterHandle { nullptr, kit::CIFilter::filterWithName(item.strFilterName), index };
    if (handle->filter) {
        handle->filter->setValueForKey(kit::RefPtr<kit::CIImage>(image), "inputImage");
        if (!item.vectorParam.empty() && item.vectorParam[0].nType == kUnivariableFloat)
            handle->filter->setValueForKey(double(value), item.vectorParam[0].szKey);
        handle->outImage = handle->filter->outputImage();
    }
    return handle;
}

void DestroyImageFilter(void* handle) { delete static_cast<ImageFilterHandle*>(handle); }

void ModifyImageFilterParm(void* handle, int param, float value)
{
    auto* h = static_cast<ImageFilterHandle*>(handle);
    if (const AUNI_VARIABLE* p = adjustableParam(h, param))
        h->filter->setValueForKey(double(value), p->szKey);
}

float GetImageFilterParm(void* handle, int param)
{
    auto* h = static_cast<ImageFilterHandle*>(handle);
    const AUNI_VARIABLE* p = adjustableParam(h, param);
    return p ? float(h->filter->numberForKey(p->szKey)) : 0.0f;
}

kit::CIImage* GetOutImage(void* handle)
{
    return handle ? static_cast<ImageFilterHandle*>(handle)->outImage.get() : nullptr;
}

void RenderCIImage(kit::BitmapContext* context, kit::CIImage* image, kit::Rect destination, kit::Rect source)
{
    if (auto ciContext = kit::CIContext::contextWithCGContextOptions(context, nullptr))
        ciContext->drawImageInRectFromRect(image, destination, source);
}

bool IsUnivariableEqual(const AUNI_VARIABLE& a, const AUNI_VARIABLE& b)
{
    if (a.nType != b.nType || std::strcmp(a.szName, b.szName) != 0)
        return false;
    switch (a.nType) {
    case 0:
    case 3:
    case 4: return slotInt(a.value) == slotInt(b.value);
    case kUnivariableFloat: return !(std::fabs(double(slotFloat(a.value)) - double(slotFloat(b.value))) > 1e-07);
    default: break;
    }
    SELECTION_ASSERT(false);
    return false;
}

bool IsAlgorithmEqual(const _AstructAlgorithmItem& Alg1, const _AstructAlgorithmItem& Alg2)
{
    SELECTION_ASSERT(Alg1.vectorParam.size() == Alg2.vectorParam.size());
    for (std::size_t i = 0; i < Alg1.vectorParam.size(); ++i) {
        if (!IsUnivariableEqual(Alg1.vectorParam[i], Alg2.vectorParam[i]))
            return false;
    }
    return true;
}
