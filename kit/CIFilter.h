// CIFilter: a filter found by its name, with key-value inputs and an output image.
#pragma once

#include "kit/CIImage.h"
#include "kit/Object.h"

#include <map>
#include <string>
#include <vector>

namespace kit {

/// A filter of the filter framework, named and keyed as there: "CIGaussianBlur" with
/// "inputImage" and "inputRadius" (the standard deviation, default 10), and 21 more, from
/// "CIBoxBlur" to "CIBumpDistortion". Its "outputImage" is a recipe over the inputs as they are
/// when it is asked for; nothing is computed until drawn. Inputs are images, numbers and
/// points (centres, in the input image's space); every filter has "inputImage".
class CIFilter final : public Object {
public:
    /// A filter with its defaults set, or null for a name the kit does not know.
    static RefPtr<CIFilter> filterWithName(const std::string& name);

    const std::string& name() const { return m_name; }
    /// Restores every input to its default (images to none).
    void setDefaults();
    /// Sets an image input; keys the filter does not have are ignored.
    void setValueForKey(RefPtr<CIImage> image, const std::string& key);
    /// Sets a number input; keys the filter does not have are ignored.
    void setValueForKey(double number, const std::string& key);
    /// Sets a point input (inputCenter); keys the filter does not have are ignored.
    void setValueForKey(Point point, const std::string& key);
    /// An image input, or "outputImage"; null for anything else or when an input is missing.
    RefPtr<CIImage> imageForKey(const std::string& key) const;
    /// A number input; NaN for a key the filter does not have.
    double numberForKey(const std::string& key) const;
    /// A point input; (NaN, NaN) for a key the filter does not have.
    Point pointForKey(const std::string& key) const;
    /// The number inputs and the point inputs, each in the filter's own order.
    std::vector<std::string> numberKeys() const;
    std::vector<std::string> pointKeys() const;
    RefPtr<CIImage> outputImage() const;

    using Recipe = RefPtr<CIImage> (*)(const CIFilter&);
    /// One entry of the kit's filter table: name, inputs with defaults, and recipe.
    struct Description;

private:
    explicit CIFilter(const Description& description);

    const Description& m_description;
    std::string m_name;
    std::map<std::string, RefPtr<CIImage>> m_images;
    std::map<std::string, double> m_numbers;
    std::map<std::string, Point> m_points;
};

} // namespace kit
