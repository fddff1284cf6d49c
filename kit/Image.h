// Image: premultiplied RGBA pixels, read from and written to PNG files.
#pragma once

#include "kit/Geometry.h"
#include "kit/Object.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kit {

class Image final : public Object {
public:
    /// Sides and pixel count an image may have, a canvas's bounds: a file whose header asks for
    /// more is refused before anything is allocated.
    static constexpr std::uint32_t kMaxSide = 65536;
    static constexpr std::uint64_t kMaxPixels = std::uint64_t { 1 } << 28;

    /// Reads a PNG file; null when it cannot be read, with `error` saying which file and why.
    static RefPtr<Image> imageWithContentsOfFile(const std::string& path, std::string* error = nullptr);
    /// An image over a copy of `width` x `height` premultiplied RGBA pixels, top row first.
    static RefPtr<Image> imageWithRGBA(int width, int height, const std::uint8_t* pixels);
    /// An image taking over `pixels` (width x height x 4 bytes), without a copy.
    static RefPtr<Image> imageWithRGBA(int width, int height, std::vector<std::uint8_t> pixels);

    int pixelsWide() const { return m_width; }
    int pixelsHigh() const { return m_height; }
    /// The size in points: one point per pixel.
    Size size() const { return { float(m_width), float(m_height) }; }
    /// Premultiplied RGBA, rows of 4 x width bytes, top row first.
    const std::vector<std::uint8_t>& rgba() const { return m_rgba; }

    /// Writes the image as an RGBA PNG; false with a message when that fails.
    bool writePNG(const std::string& path, std::string* error = nullptr) const;
    /// Writes 8-bit grey pixels (rows of `width` bytes, top row first) as a grey PNG.
    static bool writeGrayPNG(
        const std::string& path, int width, int height, const std::uint8_t* gray, std::string* error = nullptr);

private:
    Image(int width, int height, std::vector<std::uint8_t> rgba)
        : m_width(width), m_height(height), m_rgba(std::move(rgba))
    {
    }
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_rgba;
};

} // namespace kit
