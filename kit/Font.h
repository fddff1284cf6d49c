// Font: a face of DejaVu Sans at a size, found through fontconfig, with its metrics.
#pragma once

#include "kit/Geometry.h"
#include "kit/Object.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

typedef struct _cairo cairo_t;
typedef struct _cairo_scaled_font cairo_scaled_font_t;

namespace kit {

/// A font at a size in points. Every font is looked up through fontconfig, never by a file
/// path; text is measured and drawn unhinted, so a measured width is where drawing ends.
class Font final : public Object {
public:
    /// The size that controls use when given none.
    static constexpr float kSystemFontSize = 13;
    static constexpr const char* kSystemFontFamily = "DejaVu Sans";
    static constexpr const char* kCondensedSystemFontFamily = "DejaVu Sans Condensed";

    /// DejaVu Sans at `size` (the system size when it is not a positive number, at most 1000).
    /// Throws std::runtime_error naming the missing font when fontconfig cannot find it.
    static RefPtr<Font> systemFontOfSize(float size);
    static RefPtr<Font> boldSystemFontOfSize(float size);
    /// DejaVu Sans Condensed at `size`, for values that must fit narrow fields; the regular face
    /// (with a note on stderr, once) when fonts-dejavu-extra is not installed.
    static RefPtr<Font> condensedSystemFontOfSize(float size);
    /// The family `name` at `size`; null when fontconfig has no face of that family.
    static RefPtr<Font> fontWithNameSize(const std::string& name, float size);

    const std::string& familyName() const { return m_family; }
    float pointSize() const { return m_size; }
    bool isBold() const { return m_bold; }
    /// Distance from the baseline to the top of the tallest glyphs.
    float ascender() const { return m_ascender; }
    /// Distance from the baseline to the bottom of the lowest glyphs, negative.
    float descender() const { return m_descender; }
    /// Ascender to descender.
    float lineHeight() const { return m_ascender - m_descender; }

    /// The advance of a line of text (invalid UTF-8 is measured as U+FFFD).
    float widthOfString(std::string_view utf8) const;
    /// The advance of one character, remembered per font; text is drawn without kerning, so a
    /// line's advance is the sum of its characters'.
    float advanceOfCharacter(std::string_view character) const;
    /// Its advance and the line height.
    Size sizeOfString(std::string_view utf8) const { return { widthOfString(utf8), lineHeight() }; }
    /// Bytes of text this font has measured or looked up so far: what editing and layout cost,
    /// for callers that must keep that in proportion to their text.
    std::uint64_t bytesMeasured() const { return m_bytesMeasured; }

    /// Selects this font, unhinted, on a cairo context (for the drawing layer).
    void applyTo(cairo_t* cairo) const;

protected:
    ~Font() override;

private:
    Font(std::string family, bool bold, float size, void* face);
    static RefPtr<Font> lookUp(const std::string& family, bool bold, float size);

    std::string m_family;
    bool m_bold;
    float m_size;
    void* m_face;
    cairo_scaled_font_t* m_scaled = nullptr;
    float m_ascender = 0;
    float m_descender = 0;
    mutable std::unordered_map<std::string, float> m_advances;
    mutable std::uint64_t m_bytesMeasured = 0;
};

} // namespace kit
