// PngReader: decodes a PNG file row by row, refusing oversized images from their header.
#pragma once

#include <png.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace kit {

/// Reads a PNG file into straight 8-bit RGBA. The header's size is checked against the limits
/// before anything is allocated, and a plain image's rows are kept only as the file yields them,
/// so a header promising a huge image over a cut-off body costs what the body holds. An
/// interlaced image is decoded once to check it before its rows are kept.
class PngReader {
public:
    PngReader(std::uint64_t maxPixels, std::uint32_t maxSide) : m_maxPixels(maxPixels), m_maxSide(maxSide) {}

    /// False with problem() saying why when the file is not a PNG this reader can use.
    bool read(const std::string& path);
    /// The same from an open file, read from its start.
    bool read(std::FILE* file);

    std::uint32_t width() const { return m_width; }
    std::uint32_t height() const { return m_height; }
    /// Straight RGBA, rows of 4 x width bytes, top row first; valid after a successful read.
    std::vector<std::uint8_t>& pixels() { return m_pixels; }
    const std::string& problem() const { return m_problem; }

private:
    enum class Pass {
        Check,
        Keep
    };
    bool decode(std::FILE* file, Pass pass);
    bool readHeader(png_structp png, png_infop info);
    void keepRows(png_structp png);
    void checkRows(png_structp png, int passes);
    static void onError(png_structp png, png_const_charp message);
    static void onWarning(png_structp, png_const_charp) {}

    std::uint64_t m_maxPixels;
    std::uint32_t m_maxSide;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    bool m_interlaced = false;
    std::vector<std::uint8_t> m_pixels;
    std::vector<std::uint8_t> m_row;
    std::vector<png_bytep> m_rows;
    std::string m_problem;
};

} // namespace kit
