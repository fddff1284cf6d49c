// PictureFilter: one kit filter with its settings, applied to the canvas picture through the selection.
#pragma once

#include "engine/Document.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostapp {

/// A filter named as the kit names it ("CIGaussianBlur") with the inputs a person set; the rest
/// keep the filter's defaults. Applying it renders the picture clamped to its extent (edges
/// repeat, so the borders do not fade), then mixes the result into the paint layer in
/// proportion to the selection mask's alpha (everywhere when nothing is selected).
class PictureFilter {
public:
    /// The largest magnitude a setting may have: far beyond any useful radius, angle or
    /// position, small enough that no filter works without bound.
    static constexpr double kMaxValue = 100000;

    struct Setting {
        std::string key;
        std::vector<double> values; ///< one number, or a point's x and y
    };

    /// From "NAME [KEY=VALUE ...]" with numbers, and points as X,Y. Nothing, with `error`
    /// naming the word at fault, for an unknown filter or input, a value that is not a finite
    /// number within kMaxValue, a number where a point belongs or the reverse, or a key twice.
    static std::optional<PictureFilter> parse(std::string_view text, std::string& error);
    /// A filter with no settings, or nothing for a name the kit does not know.
    static std::optional<PictureFilter> named(const std::string& name);

    const std::string& name() const { return m_name; }
    const std::vector<Setting>& settings() const { return m_settings; }
    /// Sets or replaces a number input; the key must be one of the filter's number inputs.
    void setNumber(const std::string& key, double value);
    /// The settings as text that parse reads back to the same bits.
    std::string text() const;

    /// Filters the document's picture as one undo step. False, with nothing changed, when the
    /// kit cannot render it (its scratch memory cannot be had).
    bool apply(engine::Document& document, std::string& problem) const;

private:
    explicit PictureFilter(std::string name) : m_name(std::move(name)) {}
    /// The filtered canvas picture, premultiplied RGBA, or nothing when it cannot be rendered.
    std::optional<std::vector<std::uint8_t>> render(
        const std::vector<std::uint8_t>& picture, int width, int height) const;

    std::string m_name;
    std::vector<Setting> m_settings;
};

} // namespace hostapp
