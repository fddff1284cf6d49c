// CIFilter: the table of known filters, their inputs and defaults, and their recipes.
#include "kit/CIFilter.h"

#include <cmath>
#include <limits>
#include <vector>

namespace kit {

struct CIFilter::Description {
    const char* name;
    std::vector<const char*> imageKeys;
    std::vector<std::pair<const char*, double>> numberKeys; // with defaults
    Recipe output;
};

namespace {

RefPtr<CIImage> gaussianBlurOutput(const CIFilter& filter)
{
    auto input = filter.imageForKey("inputImage");
    const double radius = filter.numberForKey("inputRadius");
    // The radius has no meaning below 0: such a blur, and a NaN one, blurs nothing.
    return CIImage::gaussianBlur(std::move(input), radius >= 0 ? radius : 0);
}

} // namespace

static const std::vector<CIFilter::Description>& descriptions()
{
    static const std::vector<CIFilter::Description> table = {
        { "CIGaussianBlur", { "inputImage" }, { { "inputRadius", 10.0 } }, gaussianBlurOutput },
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
    for (const char* key : m_description.imageKeys)
        m_images[key] = nullptr;
    for (const auto& [key, value] : m_description.numberKeys)
        m_numbers[key] = value;
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

RefPtr<CIImage> CIFilter::outputImage() const
{
    for (const auto& [key, image] : m_images) {
        if (!image)
            return nullptr;
    }
    return m_description.output(*this);
}

} // namespace kit
