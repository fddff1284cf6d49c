// make_images: draws the plug-in's images into a resource folder, so that the pictures are
// made from source at build time rather than kept as opaque binaries.
#include "kit/Image.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Rgba {
    std::uint8_t r, g, b, a;
};

class Canvas {
public:
    Canvas(int width, int height) : m_width(width), m_height(height), m_pixels(std::size_t(width) * height * 4, 0) {}

    void fill(int x0, int y0, int x1, int y1, Rgba c)
    {
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x)
                set(x, y, c);
    }
    /// A dashed square outline: the marquee that stands for the selection tool.
    void dashedFrame(int x0, int y0, int x1, int y1, int width, Rgba c)
    {
        for (int x = x0; x < x1; ++x) {
            if ((x - x0) % 6 < 4) {
                fill(x, y0, x + 1, y0 + width, c);
                fill(x, y1 - width, x + 1, y1, c);
            }
        }
        for (int y = y0; y < y1; ++y) {
            if ((y - y0) % 6 < 4) {
                fill(x0, y, x0 + width, y + 1, c);
                fill(x1 - width, y, x1, y + 1, c);
            }
        }
    }
    bool write(const std::string& path) const
    {
        auto image = kit::Image::imageWithRGBA(m_width, m_height, m_pixels.data());
        std::string error;
        if (!image || !image->writePNG(path, &error)) {
            std::fprintf(stderr, "make_images: %s\n", error.c_str());
            return false;
        }
        return true;
    }

private:
    void set(int x, int y, Rgba c)
    {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height)
            return;
        std::uint8_t* p = &m_pixels[(std::size_t(y) * m_width + x) * 4];
        // Premultiplied, as the image type stores it.
        p[0] = std::uint8_t(c.r * c.a / 255);
        p[1] = std::uint8_t(c.g * c.a / 255);
        p[2] = std::uint8_t(c.b * c.a / 255);
        p[3] = c.a;
    }

    int m_width, m_height;
    std::vector<std::uint8_t> m_pixels;
};

bool toolIcon(const std::string& path, bool selected)
{
    Canvas icon(32, 32);
    if (selected)
        icon.fill(1, 1, 31, 31, { 60, 120, 215, 255 });
    icon.dashedFrame(6, 6, 26, 26, 2, selected ? Rgba { 255, 255, 255, 255 } : Rgba { 70, 70, 70, 255 });
    return icon.write(path);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_images RESOURCE_FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    const bool ok = toolIcon(folder + "/normalIcon.png", false) && toolIcon(folder + "/selectedIcon.png", true);
    return ok ? 0 : 1;
}
