// PngWriter: encodes 8-bit rows into a PNG file as they are made, written whole or not at all.
#pragma once

#include "kit/AtomicFile.h"

#include <png.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kit {

/// Writes a grey or RGBA PNG a row at a time, straight into a file beside the destination that
/// replaces it once complete: a picture costs one row beyond its pixels, whatever its size.
class PngWriter {
public:
    /// Fills `row` (width x channels bytes) with row `y`, top row first.
    using RowSource = std::function<void(int y, std::uint8_t* row)>;

    PngWriter(std::string path, int width, int height, int channels);
    /// False with problem() naming the file and the reason when the picture could not be written.
    bool write(const RowSource& source);
    const std::string& problem() const { return m_problem; }

private:
    bool encode(png_structp png, png_infop info);
    static void onError(png_structp png, png_const_charp message);
    static void onWarning(png_structp, png_const_charp) {}
    static void onWrite(png_structp png, png_bytep bytes, png_size_t length);
    static void onFlush(png_structp) {}

    std::string m_path;
    int m_width;
    int m_height;
    int m_channels;
    AtomicFile m_file;
    const RowSource* m_source = nullptr;
    std::vector<std::uint8_t> m_row;
    std::string m_problem;
};

} // namespace kit
