// Image: premultiplied RGBA pixels, read from and written to PNG files a row at a time.
#include "kit/Image.h"

#include "kit/PngReader.h"
#include "kit/PngWriter.h"

#include <algorithm>

namespace kit {

namespace {

void premultiply(std::vector<std::uint8_t>& rgba)
{
    for (std::size_t i = 0; i + 3 < rgba.size(); i += 4) {
        const unsigned a = rgba[i + 3];
        for (int c = 0; c < 3; ++c)
            rgba[i + c] = std::uint8_t((rgba[i + c] * a + 127) / 255);
    }
}

} // namespace

RefPtr<Image> Image::imageWithContentsOfFile(const std::string& path, std::string* error)
{
    PngReader reader(kMaxPixels, kMaxSide);
    if (!reader.read(path)) {
        if (error)
            *error = "cannot read the picture " + path + ": " + reader.problem();
        return nullptr;
    }
    premultiply(reader.pixels());
    return adoptRef(new Image(int(reader.width()), int(reader.height()), std::move(reader.pixels())));
}

RefPtr<Image> Image::imageWithRGBA(int width, int height, const std::uint8_t* pixels)
{
    if (width <= 0 || height <= 0 || !pixels || std::uint64_t(width) * std::uint64_t(height) > kMaxPixels)
        return nullptr;
    const std::size_t bytes = std::size_t(width) * std::size_t(height) * 4;
    return adoptRef(new Image(width, height, std::vector<std::uint8_t>(pixels, pixels + bytes)));
}

RefPtr<Image> Image::imageWithRGBA(int width, int height, std::vector<std::uint8_t> pixels)
{
    if (width <= 0 || height <= 0 || std::uint64_t(width) * std::uint64_t(height) > kMaxPixels
        || pixels.size() != std::size_t(width) * std::size_t(height) * 4)
        return nullptr;
    return adoptRef(new Image(width, height, std::move(pixels)));
}

bool Image::writePNG(const std::string& path, std::string* error) const
{
    PngWriter writer(path, m_width, m_height, 4);
    const std::size_t rowBytes = std::size_t(m_width) * 4;
    const bool wrote = writer.write([this, rowBytes](int y, std::uint8_t* row) {
        const std::uint8_t* in = m_rgba.data() + rowBytes * std::size_t(y);
        for (std::size_t i = 0; i < rowBytes; i += 4) {
            const unsigned a = in[i + 3];
            for (int c = 0; c < 3; ++c)
                row[i + c] = a == 0 ? 0 : std::uint8_t(std::min(255u, (in[i + c] * 255 + a / 2) / a));
            row[i + 3] = std::uint8_t(a);
        }
    });
    if (!wrote && error)
        *error = writer.problem();
    return wrote;
}

bool Image::writeGrayPNG(const std::string& path, int width, int height, const std::uint8_t* gray, std::string* error)
{
    PngWriter writer(path, width, height, 1);
    const bool wrote = gray && writer.write([gray, width](int y, std::uint8_t* row) {
        std::copy_n(gray + std::size_t(width) * std::size_t(y), width, row);
    });
    if (!wrote && error)
        *error = gray ? writer.problem() : "cannot write an empty image to " + path;
    return wrote;
}

} // namespace kit
