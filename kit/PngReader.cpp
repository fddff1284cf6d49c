// PngReader: decodes a PNG file row by row, refusing oversized images from their header.
#include "kit/PngReader.h"

#include <csetjmp>
#include <memory>

namespace kit {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

bool PngReader::read(const std::string& path)
{
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        m_problem = "cannot open it";
        return false;
    }
    return read(file.get());
}

bool PngReader::read(std::FILE* file)
{
    if (!decode(file, Pass::Check))
        return false;
    if (!m_interlaced)
        return true;
    // The check pass kept nothing; the whole image is allocated only once it is known to decode.
    std::rewind(file);
    return decode(file, Pass::Keep);
}

void PngReader::onError(png_structp png, png_const_charp message)
{
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    if (reader->m_problem.empty())
        reader->m_problem = message;
    png_longjmp(png, 1);
}

// Everything with a destructor lives in the reader, not in this frame, so that the jump back
// from libpng's error handler skips nothing.
bool PngReader::decode(std::FILE* file, Pass pass)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        m_problem = "out of memory";
        return false;
    }
    volatile bool ok = false;
    if (setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, file);
        if (readHeader(png, info)) {
            const int passes = png_set_interlace_handling(png);
            png_read_update_info(png, info);
            m_interlaced = passes > 1;
            if (m_interlaced && pass == Pass::Check)
                checkRows(png, passes);
            else
                keepRows(png);
            png_read_end(png, nullptr);
            ok = true;
        }
    } else if (std::feof(file)) {
        m_problem = "the file ends before its image does";
    }
    png_destroy_read_struct(&png, &info, nullptr);
    if (!ok)
        m_pixels = {};
    return ok;
}

bool PngReader::readHeader(png_structp png, png_infop info)
{
    png_read_info(png, info);
    m_width = png_get_image_width(png, info);
    m_height = png_get_image_height(png, info);
    if (m_width > m_maxSide || m_height > m_maxSide || std::uint64_t { m_width } * m_height > m_maxPixels) {
        m_problem = std::to_string(m_width) + " x " + std::to_string(m_height)
            + " pixels is more than an image may have (sides up to " + std::to_string(m_maxSide) + ", "
            + std::to_string(m_maxPixels) + " pixels in all)";
        return false;
    }
    // Everything becomes 8-bit RGBA in sRGB, as the pictures and masks are kept.
    png_set_gamma(png, PNG_DEFAULT_sRGB, PNG_DEFAULT_sRGB);
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    return true;
}

void PngReader::keepRows(png_structp png)
{
    const std::size_t rowBytes = std::size_t { m_width } * 4;
    m_pixels.clear();
    if (m_interlaced) {
        m_pixels.resize(rowBytes * m_height);
        m_rows.resize(m_height);
        for (std::uint32_t y = 0; y < m_height; ++y)
            m_rows[y] = m_pixels.data() + rowBytes * y;
        png_read_image(png, m_rows.data());
        m_rows = {};
        return;
    }
    // Reserved, not filled: pages are touched only as rows arrive.
    m_pixels.reserve(rowBytes * m_height);
    m_row.resize(rowBytes);
    for (std::uint32_t y = 0; y < m_height; ++y) {
        png_read_row(png, m_row.data(), nullptr);
        m_pixels.insert(m_pixels.end(), m_row.begin(), m_row.end());
    }
    m_row = {};
}

void PngReader::checkRows(png_structp png, int passes)
{
    m_row.resize(std::size_t { m_width } * 4);
    for (int p = 0; p < passes; ++p)
        for (std::uint32_t y = 0; y < m_height; ++y)
            png_read_row(png, m_row.data(), nullptr);
    m_row = {};
}

} // namespace kit
