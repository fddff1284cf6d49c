// ColorMapRecipe: the input rendered, then mapped row by row.
#include "kit/ColorMapRecipe.h"

#include "kit/LinearLight.h"
#include "kit/LinearLightKernels.h"

namespace kit {

ColorMapRecipe::ColorMapRecipe(RefPtr<CIImage> input, const std::array<float, 9>& matrix)
    : ColorMapRecipe(std::move(input), [matrix](float* rgba, std::size_t count, long long, long long) {
        const float* m = matrix.data();
        for (std::size_t i = linearlightkernels::mapMatrix(m, rgba, count); i < count; ++i) {
            float* p = rgba + 4 * i;
            const float r = p[0], g = p[1], b = p[2];
            for (int c = 0; c < 3; ++c)
                p[c] = m[3 * c] * r + m[3 * c + 1] * g + m[3 * c + 2] * b;
        }
    })
{
    m_isMatrix = true;
    m_matrix = matrix;
}

bool ColorMapRecipe::render(const PixelArea& area, const FloatPixels& out) const
{
    if (!m_input->renderArea(area, out))
        return false;
    for (long long r = 0; r < area.height; ++r)
        m_map(out.row(r), std::size_t(area.width), area.x, area.maxY() - 1 - r);
    return true;
}

const std::vector<std::uint8_t>& ColorMapRecipe::byteTable(bool srgb) const
{
    std::call_once(m_baked[srgb], [&] {
        std::vector<std::uint8_t>& table = m_tables[srgb];
        table.resize(256 * 256);
        std::vector<std::uint8_t> bytes(256 * 4), encoded(256 * 4);
        std::vector<float> floats(256 * 4);
        for (int a = 0; a < 256; ++a) {
            for (int v = 0; v < 256; ++v) {
                std::uint8_t* p = &bytes[std::size_t(4 * v)];
                p[0] = p[1] = p[2] = std::uint8_t(v);
                p[3] = std::uint8_t(a);
            }
            // The float path itself over every value under this alpha.
            linearlight::decodeRow(bytes.data(), false, srgb, 256, floats.data());
            m_map(floats.data(), 256, 0, 0);
            linearlight::encodeRow(floats.data(), srgb, 256, encoded.data());
            for (int v = 0; v < 256; ++v)
                table[std::size_t(a * 256 + v)] = encoded[std::size_t(4 * v)];
        }
    });
    return m_tables[srgb];
}

bool ColorMapRecipe::drawBytes(const PixelArea& area, std::uint8_t* rgba, std::ptrdiff_t stride, bool srgb) const
{
    const bool matrixOverSRGB = m_isMatrix && srgb;
    if (!(m_channelsAlone || matrixOverSRGB) || !m_input->isBitmapEncoded(srgb))
        return false;
    static const RefPtr<ColorSpace> spaces[2] = { ColorSpace::createDeviceRGB(), ColorSpace::createSRGB() };
    if (matrixOverSRGB) {
        // A row inside the bitmap is mapped from the bitmap's own bytes: copying them first cost a
        // sixth of the time.
        for (long long r = 0; r < area.height; ++r) {
            std::uint8_t* row = rgba + r * stride;
            const long long y = area.maxY() - 1 - r;
            const std::uint8_t* source
                = m_input->bitmapPixel(area.maxX() - 1, y) ? m_input->bitmapPixel(area.x, y) : nullptr;
            if (!source) {
                if (!m_input->drawArea(int(area.x), int(y), int(area.width), 1, row, stride, true, spaces[1].get()))
                    return false;
                source = row;
            }
            linearlight::mapMatrixRow(m_matrix.data(), source, row, std::size_t(area.width));
        }
        return true;
    }
    if (!m_input->drawArea(
            int(area.x), int(area.y), int(area.width), int(area.height), rgba, stride, true, spaces[srgb].get()))
        return false;
    const std::uint8_t* table = byteTable(srgb).data();
    for (long long r = 0; r < area.height; ++r) {
        std::uint8_t* p = rgba + r * stride;
        for (long long i = 0; i < area.width; ++i, p += 4) {
            const std::uint8_t* values = table + std::size_t(p[3]) * 256;
            p[0] = values[p[0]], p[1] = values[p[1]], p[2] = values[p[2]];
        }
    }
    return true;
}

} // namespace kit
