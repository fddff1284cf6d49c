// Font: fontconfig matching, cairo's FreeType faces and text measuring.
#include "kit/Font.h"

#include "kit/Utf8.h"

#include <cairo-ft.h>
#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <mutex>
#include <stdexcept>
#include <strings.h>

namespace kit {

namespace {

std::mutex& faceMutex()
{
    static std::mutex mutex;
    return mutex;
}

// Whether fontconfig's match really is of `family`: it answers every request with its best
// guess, so a missing font would otherwise turn silently into another one.
bool matchIsFamily(FcPattern* match, const std::string& family)
{
    FcChar8* name = nullptr;
    for (int i = 0; FcPatternGetString(match, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
        if (strcasecmp(reinterpret_cast<const char*>(name), family.c_str()) == 0)
            return true;
    }
    return false;
}

// The cairo face for a family and weight, made once and kept for the life of the process
// (faces are shared by every font of every size); null when fontconfig has no such family.
cairo_font_face_t* faceFor(const std::string& family, bool bold)
{
    std::lock_guard lock(faceMutex());
    static std::map<std::pair<std::string, bool>, cairo_font_face_t*> faces;
    const auto key = std::make_pair(family, bold);
    if (auto it = faces.find(key); it != faces.end())
        return it->second;
    if (!FcInit())
        return nullptr;
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddInteger(pattern, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern, FC_SLANT, FC_SLANT_ROMAN);
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    FcPatternDestroy(pattern);
    cairo_font_face_t* face = nullptr;
    if (match && matchIsFamily(match, family)) {
        face = cairo_ft_font_face_create_for_pattern(match);
        if (cairo_font_face_status(face) != CAIRO_STATUS_SUCCESS) {
            cairo_font_face_destroy(face);
            face = nullptr;
        }
    }
    if (match)
        FcPatternDestroy(match);
    faces[key] = face;
    return face;
}

cairo_font_options_t* unhintedOptions()
{
    static cairo_font_options_t* options = [] {
        cairo_font_options_t* o = cairo_font_options_create();
        cairo_font_options_set_hint_style(o, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(o, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_antialias(o, CAIRO_ANTIALIAS_GRAY);
        return o;
    }();
    return options;
}

float usableSize(float size)
{
    if (!(size > 0) || !std::isfinite(size))
        return Font::kSystemFontSize;
    return size < 1000 ? size : 1000;
}

} // namespace

Font::Font(std::string family, bool bold, float size, void* face)
    : m_family(std::move(family)), m_bold(bold), m_size(size), m_face(face)
{
    cairo_matrix_t fontMatrix, ctm;
    cairo_matrix_init_scale(&fontMatrix, size, size);
    cairo_matrix_init_identity(&ctm);
    m_scaled = cairo_scaled_font_create(static_cast<cairo_font_face_t*>(face), &fontMatrix, &ctm, unhintedOptions());
    cairo_font_extents_t extents;
    cairo_scaled_font_extents(m_scaled, &extents);
    m_ascender = float(extents.ascent);
    m_descender = -float(extents.descent);
}

Font::~Font() { cairo_scaled_font_destroy(m_scaled); }

RefPtr<Font> Font::lookUp(const std::string& family, bool bold, float size)
{
    cairo_font_face_t* face = faceFor(family, bold);
    if (!face)
        return nullptr;
    return adoptRef(new Font(family, bold, usableSize(size), face));
}

RefPtr<Font> Font::systemFontOfSize(float size)
{
    RefPtr<Font> font = lookUp(kSystemFontFamily, false, size);
    if (!font)
        throw std::runtime_error("font \"DejaVu Sans\" not found through fontconfig (install fonts-dejavu-core)");
    return font;
}

RefPtr<Font> Font::boldSystemFontOfSize(float size)
{
    RefPtr<Font> font = lookUp(kSystemFontFamily, true, size);
    return font ? font : systemFontOfSize(size);
}

RefPtr<Font> Font::condensedSystemFontOfSize(float size)
{
    if (RefPtr<Font> font = lookUp(kCondensedSystemFontFamily, false, size))
        return font;
    static std::once_flag noted;
    std::call_once(noted, [] {
        std::fprintf(stderr,
            "font \"DejaVu Sans Condensed\" not found through fontconfig (install "
            "fonts-dejavu-extra); narrow fields use \"DejaVu Sans\" and may clip\n");
    });
    return systemFontOfSize(size);
}

RefPtr<Font> Font::fontWithNameSize(const std::string& name, float size) { return lookUp(name, false, size); }

float Font::widthOfString(std::string_view utf8) const
{
    if (utf8.empty())
        return 0;
    m_bytesMeasured += utf8.size();
    const std::string text = sanitizedUtf8(utf8);
    cairo_text_extents_t extents;
    cairo_scaled_font_text_extents(m_scaled, text.c_str(), &extents);
    return float(extents.x_advance);
}

float Font::advanceOfCharacter(std::string_view character) const
{
    const std::string key(character);
    if (auto it = m_advances.find(key); it != m_advances.end()) {
        m_bytesMeasured += key.size();
        return it->second;
    }
    const float advance = widthOfString(key);
    // Only a bounded set of characters is remembered, whatever text passes through.
    if (m_advances.size() < 4096)
        m_advances.emplace(key, advance);
    return advance;
}

void Font::applyTo(cairo_t* cairo) const
{
    cairo_set_font_face(cairo, static_cast<cairo_font_face_t*>(m_face));
    cairo_set_font_size(cairo, m_size);
    cairo_set_font_options(cairo, unhintedOptions());
}

} // namespace kit
