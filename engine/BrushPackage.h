// BrushPackage: reads a brush package, a small text file of "key = value" lines.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace engine {

enum class BrushMode {
    paint,
    erase
};

/// What a package sets. radius is the logarithmic radius (brush parameter 3); the pixel radius is
/// e^(radius / radiusCurve).
struct BrushSettings {
    std::string name;
    BrushMode mode = BrushMode::paint;
    float radius = 2.0f;
    float radiusCurve = 1.0f;
    float hardness = 0.5f;
    float spacing = 0.25f;
};

/// Packages are found by bare file name in one brush directory. Lines are "key = value", blank,
/// or comments starting with '#'. Known keys: name, mode (paint | erase), radius, radius_curve,
/// hardness (0 to 1, where the soft edge begins), spacing (dab distance relative to the radius).
/// Unknown keys are ignored so that newer packages still load; malformed lines are refused.
class BrushPackage {
public:
    static constexpr std::size_t kMaxFileBytes = 64 * 1024;
    static constexpr std::size_t kMaxNameBytes = 255;

    /// True for a plain file name: not empty, no '/', no "..", no control characters.
    static bool isSafeName(std::string_view fileName);
    /// Loads the named package from the directory, or gives nothing and the reason in error.
    static std::optional<BrushSettings> load(
        const std::filesystem::path& directory, std::string_view fileName, std::string& error);
    /// Parses a package's text, or gives nothing and "line N: reason" in error.
    static std::optional<BrushSettings> parse(std::string_view text, std::string& error);

private:
    static bool applyLine(std::string_view line, BrushSettings& settings, bool& sawMode, std::string& error);
    static bool applyValue(
        std::string_view key, std::string_view value, BrushSettings& settings, bool& sawMode, std::string& error);
    static bool validate(const BrushSettings& settings, bool sawMode, std::string& error);
};

} // namespace engine
