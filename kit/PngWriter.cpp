// PngWriter: encodes 8-bit rows into a PNG file as they are made, written whole or not at all.
#include "kit/PngWriter.h"

#include <csetjmp>

namespace kit {

PngWriter::PngWriter(std::string path, int width, int height, int channels)
    : m_path(std::move(path)), m_width(width), m_height(height), m_channels(channels), m_file(m_path)
{
}

bool PngWriter::write(const RowSource& source)
{
    if (m_width <= 0 || m_height <= 0) {
        m_problem = "cannot write an empty image to " + m_path;
        return false;
    }
    m_source = &source;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const bool encoded = info && encode(png, info);
    png_destroy_write_struct(&png, &info);
    m_row = {};
    if (encoded && m_file.commit())
        return true;
    if (m_problem.empty())
        m_problem = m_file.error().empty() ? "cannot encode " + m_path : m_file.error();
    return false;
}

// Everything with a destructor lives in the writer, not in this frame, so that the jump back
// from libpng's error handler skips nothing.
bool PngWriter::encode(png_structp png, png_infop info)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_set_write_fn(png, this, onWrite, onFlush);
    png_set_IHDR(png, info, png_uint_32(m_width), png_uint_32(m_height), 8,
        m_channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    m_row.resize(std::size_t(m_width) * std::size_t(m_channels));
    for (int y = 0; y < m_height; ++y) {
        (*m_source)(y, m_row.data());
        png_write_row(png, m_row.data());
    }
    png_write_end(png, nullptr);
    return true;
}

void PngWriter::onError(png_structp png, png_const_charp message)
{
    auto* writer = static_cast<PngWriter*>(png_get_error_ptr(png));
    if (writer->m_problem.empty())
        writer->m_problem = "cannot encode " + writer->m_path + ": " + message;
    png_longjmp(png, 1);
}

void PngWriter::onWrite(png_structp png, png_bytep bytes, png_size_t length)
{
    auto* writer = static_cast<PngWriter*>(png_get_io_ptr(png));
    if (!writer->m_file.write(bytes, length)) {
        writer->m_problem = writer->m_file.error();
        png_error(png, "write failed");
    }
}

} // namespace kit
