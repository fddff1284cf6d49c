// BrushPackage: reads a brush package, a small text file of "key = value" lines.
#include "engine/BrushPackage.h"

#include "engine/TextLines.h"
#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>
#include <system_error>

namespace engine {

namespace {

std::string_view trimmed(std::string_view text)
{
    const char* blanks = " \t\r";
    std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    std::size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::optional<float> parseFloat(std::string_view text)
{
    float value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<std::string> readSmallFile(const std::filesystem::path& path, std::string& error)
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        error = "no brush package " + path.string();
        return std::nullopt;
    }
    std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (ec || size > BrushPackage::kMaxFileBytes) {
        error = "brush package too large or unreadable: " + path.string();
        return std::nullopt;
    }
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in) {
        error = "cannot read brush package " + path.string();
        return std::nullopt;
    }
    return text.str();
}

} // namespace

bool BrushPackage::isSafeName(std::string_view fileName)
{
    if (fileName.empty() || fileName.size() > kMaxNameBytes || fileName == ".")
        return false;
    if (fileName.find('/') != std::string_view::npos || fileName.find("..") != std::string_view::npos)
        return false;
    for (char c : fileName) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            return false;
    }
    return true;
}

std::optional<BrushSettings> BrushPackage::load(
    const std::filesystem::path& directory, std::string_view fileName, std::string& error)
{
    if (!isSafeName(fileName)) {
        error = "brush package name is not a plain file name";
        return std::nullopt;
    }
    std::optional<std::string> text = readSmallFile(directory / fileName, error);
    if (!text)
        return std::nullopt;
    std::optional<BrushSettings> settings = parse(*text, error);
    if (!settings)
        error = std::string(fileName) + ": " + error;
    return settings;
}

std::optional<BrushSettings> BrushPackage::parse(std::string_view text, std::string& error)
{
    BrushSettings settings;
    bool sawMode = false;
    std::size_t lineNumber = 0;
    while (!text.empty()) {
        ++lineNumber;
        std::string_view line = takeLine(text);
        if (!applyLine(line, settings, sawMode, error)) {
            error = "line " + std::to_string(lineNumber) + ": " + error;
            return std::nullopt;
        }
    }
    if (!validate(settings, sawMode, error))
        return std::nullopt;
    return settings;
}

bool BrushPackage::applyLine(std::string_view line, BrushSettings& settings, bool& sawMode, std::string& error)
{
    line = trimmed(line);
    if (line.empty() || line.front() == '#')
        return true;
    std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        error = "expected key = value";
        return false;
    }
    std::string_view key = trimmed(line.substr(0, equals));
    std::string_view value = trimmed(line.substr(equals + 1));
    if (key.empty()) {
        error = "missing key before '='";
        return false;
    }
    return applyValue(key, value, settings, sawMode, error);
}

bool BrushPackage::applyValue(
    std::string_view key, std::string_view value, BrushSettings& settings, bool& sawMode, std::string& error)
{
    if (key == "name") {
        settings.name = std::string(value);
        return true;
    }
    if (key == "mode") {
        sawMode = value == "paint" || value == "erase";
        settings.mode = value == "erase" ? BrushMode::erase : BrushMode::paint;
        if (!sawMode)
            error = "mode must be paint or erase";
        return sawMode;
    }
    float* target = key == "radius" ? &settings.radius
        : key == "radius_curve"     ? &settings.radiusCurve
        : key == "hardness"         ? &settings.hardness
        : key == "spacing"          ? &settings.spacing
                                    : nullptr;
    if (!target)
        return true;
    std::optional<float> number = parseFloat(value);
    if (!number) {
        error = std::string(key) + " is not a finite number";
        return false;
    }
    *target = *number;
    return true;
}

bool BrushPackage::validate(const BrushSettings& settings, bool sawMode, std::string& error)
{
    if (!sawMode)
        error = "missing mode";
    else if (!(settings.radiusCurve > 0.01f))
        error = "radius_curve must be above 0.01";
    else if (settings.hardness < 0 || settings.hardness > 1)
        error = "hardness must be between 0 and 1";
    else if (!(settings.spacing >= 0.01f && settings.spacing <= 10))
        error = "spacing must be between 0.01 and 10";
    else
        return true;
    return false;
}

} // namespace engine
