// PictureFilter: settings parsed and checked against the kit's filter, rendering, and the masked mix.
#include "hostapp/PictureFilter.h"

#include "hostapp/SessionScript.h"

#include "kit/CIFilter.h"
#include "kit/CIImage.h"
#include "kit/ColorSpace.h"
#include "kit/Data.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>

namespace hostapp {

namespace {

bool contains(const std::vector<std::string>& keys, const std::string& key)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

std::string numberText(double value)
{
    std::array<char, 32> buffer {};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

/// The numbers of "A" or "A,B"; empty when any part is not a finite number within the bound.
std::vector<double> parseValues(std::string_view text)
{
    std::vector<double> values;
    for (std::size_t start = 0;;) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        double value = 0;
        const char* first = text.data() + start;
        const char* last = text.data() + comma;
        const auto [ptr, ec] = std::from_chars(first, last, value);
        if (ec != std::errc() || ptr != last || first == last || !std::isfinite(value)
            || std::fabs(value) > PictureFilter::kMaxValue)
            return {};
        values.push_back(value);
        if (comma == text.size())
            return values;
        start = comma + 1;
    }
}

/// Checks one KEY=VALUE word against the filter; an empty result means it is fine.
std::string checkSetting(const kit::CIFilter& filter, const std::string& word, PictureFilter::Setting& setting)
{
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos)
        return quotedWord(word) + " is not KEY=VALUE";
    setting.key = word.substr(0, equals);
    const bool isNumber = contains(filter.numberKeys(), setting.key);
    const bool isPoint = contains(filter.pointKeys(), setting.key);
    if (!isNumber && !isPoint)
        return filter.name() + " has no input " + quotedWord(setting.key);
    setting.values = parseValues(std::string_view(word).substr(equals + 1));
    if (setting.values.empty())
        return quotedWord(word) + ": " + setting.key + " must be a finite number within +-100000";
    if (isNumber && setting.values.size() != 1)
        return quotedWord(word) + ": " + setting.key + " takes one number";
    if (isPoint && setting.values.size() != 2)
        return quotedWord(word) + ": " + setting.key + " takes a point X,Y";
    return {};
}

/// Mixes the filtered picture into the old one by the mask's alpha, on the stored 8-bit values;
/// an empty mask lets the filter act everywhere.
void mixByMask(
    std::vector<std::uint8_t>& filtered, const std::vector<std::uint8_t>& old, const std::vector<std::uint8_t>& mask)
{
    if (std::all_of(mask.begin(), mask.end(), [](std::uint8_t a) { return a == 0; }))
        return;
    for (std::size_t i = 0; i < mask.size(); ++i) {
        const unsigned a = mask[i];
        for (std::size_t c = i * 4; c < i * 4 + 4; ++c)
            filtered[c] = std::uint8_t((old[c] * (255 - a) + filtered[c] * a + 127) / 255);
    }
}

} // namespace

std::optional<PictureFilter> PictureFilter::named(const std::string& name)
{
    if (!kit::CIFilter::filterWithName(name))
        return std::nullopt;
    return PictureFilter(name);
}

std::optional<PictureFilter> PictureFilter::parse(std::string_view text, std::string& error)
{
    std::istringstream in { std::string(text) };
    std::string name;
    in >> name;
    auto filter = kit::CIFilter::filterWithName(name);
    if (!filter) {
        error = name.empty() ? "no filter named" : "unknown filter " + quotedWord(name);
        return std::nullopt;
    }
    PictureFilter result(name);
    for (std::string word; in >> word;) {
        Setting setting;
        if (std::string problem = checkSetting(*filter, word, setting); !problem.empty()) {
            error = problem;
            return std::nullopt;
        }
        for (const Setting& earlier : result.m_settings) {
            if (earlier.key == setting.key) {
                error = quotedWord(setting.key) + " is set twice";
                return std::nullopt;
            }
        }
        result.m_settings.push_back(std::move(setting));
    }
    return result;
}

void PictureFilter::setNumber(const std::string& key, double value)
{
    for (Setting& setting : m_settings) {
        if (setting.key == key) {
            setting.values = { value };
            return;
        }
    }
    m_settings.push_back({ key, { value } });
}

std::string PictureFilter::text() const
{
    std::string out = m_name;
    for (const Setting& setting : m_settings) {
        out += " " + setting.key + "=";
        for (std::size_t i = 0; i < setting.values.size(); ++i)
            out += (i ? "," : "") + numberText(setting.values[i]);
    }
    return out;
}

std::optional<std::vector<std::uint8_t>> PictureFilter::render(
    const std::vector<std::uint8_t>& picture, int width, int height) const
{
    auto filter = kit::CIFilter::filterWithName(m_name);
    auto space = kit::ColorSpace::createSRGB();
    auto source = kit::CIImage::imageWithBitmapData(kit::Data::dataWithBytes(picture.data(), picture.size()),
        std::size_t(width) * 4, { float(width), float(height) }, kit::CIFormatRGBA8, space.get());
    if (!filter || !source)
        return std::nullopt;
    filter->setValueForKey(source->imageByClampingToExtent(), "inputImage");
    for (const Setting& setting : m_settings) {
        if (setting.values.size() == 2)
            filter->setValueForKey(kit::Point { float(setting.values[0]), float(setting.values[1]) }, setting.key);
        else
            filter->setValueForKey(setting.values[0], setting.key);
    }
    auto output = filter->outputImage();
    std::vector<std::uint8_t> pixels(picture.size());
    if (!output || !output->drawArea(0, 0, width, height, pixels.data(), std::ptrdiff_t(width) * 4, true, space.get()))
        return std::nullopt;
    return pixels;
}

bool PictureFilter::apply(engine::Document& document, std::string& problem) const
{
    const int width = document.canvasWidth();
    const int height = document.canvasHeight();
    const std::vector<std::uint8_t> picture = document.paintPixels();
    auto filtered = render(picture, width, height);
    if (!filtered) {
        problem = "cannot render " + m_name + " on a " + std::to_string(width) + " x " + std::to_string(height)
            + " picture";
        return false;
    }
    mixByMask(*filtered, picture, document.maskAlpha());
    document.replacePaintPixels(*filtered);
    return true;
}

} // namespace hostapp
