// ColorMapRecipe: a filter that maps each pixel's colour on its own, in place over rows.
#pragma once

#include "kit/CIImage.h"
#include "kit/ImageRecipe.h"

#include <array>
#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace kit {

/// Renders its input and maps every row of premultiplied floats in place; the extent is the
/// input's (a transparent pixel stays transparent). A map is handed a row of `count` pixels
/// whose first pixel is (x, y) in drawing space.
class ColorMapRecipe final : public ImageRecipe {
public:
    using RowMap = std::function<void(float* rgba, std::size_t count, long long x, long long y)>;

    /// `channelsAlone` says that each output channel depends only on the same input channel and
    /// alpha, and alike for all three: over bitmap bytes the map is then a table of alpha and
    /// value, baked once per encoding from this very map.
    ColorMapRecipe(RefPtr<CIImage> input, RowMap map, bool channelsAlone = false)
        : m_input(std::move(input)), m_map(std::move(map)), m_channelsAlone(channelsAlone)
    {
    }

    /// A linear map of colour, rgb' = m rgb (m row major): it commutes with premultiplying, so it
    /// works on premultiplied colour. Over sRGB bitmap bytes drawn into sRGB it runs byte to
    /// byte, a vector of pixels at a time.
    ColorMapRecipe(RefPtr<CIImage> input, const std::array<float, 9>& matrix);

    /// A row map that un-premultiplies each pixel with alpha above 0, hands `f` its colour
    /// (float rgb[3]) to change, and premultiplies again; alpha is kept.
    template <typename F> static RowMap unpremultiplied(F f)
    {
        return [f](float* rgba, std::size_t count, long long, long long) {
            for (std::size_t i = 0; i < count; ++i) {
                float* p = rgba + 4 * i;
                const float a = p[3];
                if (!(a > 0))
                    continue;
                float rgb[3] = { p[0] / a, p[1] / a, p[2] / a };
                f(rgb);
                p[0] = rgb[0] * a;
                p[1] = rgb[1] * a;
                p[2] = rgb[2] * a;
            }
        };
    }

    Rect extent() const override { return m_input->extent(); }
    Rect placementExtent() const override { return m_input->placementExtent(); }
    bool rendersRowsAlone() const override { return m_input->rendersRowsAlone(); }
    bool render(const PixelArea& area, const FloatPixels& out) const override;
    bool drawBytes(const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride, bool srgb) const override;

private:
    const std::vector<std::uint8_t>& byteTable(bool srgb) const;

    RefPtr<CIImage> m_input;
    RowMap m_map;
    bool m_channelsAlone;
    bool m_isMatrix = false;
    std::array<float, 9> m_matrix {};
    mutable std::once_flag m_baked[2];
    mutable std::vector<std::uint8_t> m_tables[2]; // 256 x 256: [alpha][value], device and sRGB
};

} // namespace kit
