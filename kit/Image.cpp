// Image: PNG reading and writing through libpng's simplified interface.
#include "kit/Image.h"

#include "kit/Data.h"
#include "kit/PngReader.h"

#include <png.h>

#include <algorithm>
#include <cstring>

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

std::vector<std::uint8_t> unpremultiplied(const std::vector<std::uint8_t>& rgba)
{
    std::vector<std::uint8_t> out(rgba);
    for (std::size_t i = 0; i + 3 < out.size(); i += 4) {
        const unsigned a = out[i + 3];
        for (int c = 0; c < 3; ++c)
            out[i + c] = a == 0 ? 0 : std::uint8_t(std::min(255u, (out[i + c] * 255 + a / 2) / a));
    }
    return out;
}

bool writePng(const std::string& path, int width, int height, png_uint_32 format, const void* pixels,
              std::string* error)
{
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(width);
    image.height = png_uint_32(height);
    image.format = format;
    if (width <= 0 || height <= 0 || !pixels) {
        if (error)
            *error = "cannot write an empty image to " + path;
        return false;
    }
    // Encoded in memory first, so that a failed write never leaves half a picture on disk.
    png_alloc_size_t size = 0;
    std::vector<std::uint8_t> encoded;
    if (png_image_write_get_memory_size(image, size, 0, pixels, 0, nullptr)) {
        encoded.resize(size);
        if (!png_image_write_to_memory(&image, encoded.data(), &size, 0, pixels, 0, nullptr))
            size = 0;
    }
    if (size == 0) {
        if (error)
            *error = "cannot encode " + path + ": " + image.message;
        return false;
    }
    auto data = Data::dataWithBytesNoCopy(encoded.data(), size, false);
    return data->writeToFileAtomically(path, error);
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

bool Image::writePNG(const std::string& path, std::string* error) const
{
    const std::vector<std::uint8_t> straight = unpremultiplied(m_rgba);
    return writePng(path, m_width, m_height, PNG_FORMAT_RGBA, straight.data(), error);
}

bool Image::writeGrayPNG(const std::string& path, int width, int height, const std::uint8_t* gray, std::string* error)
{
    return writePng(path, width, height, PNG_FORMAT_GRAY, gray, error);
}

} // namespace kit
