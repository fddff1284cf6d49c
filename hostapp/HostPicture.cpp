// HostPicture: opening, filtering and saving the picture, and the records that replay them.
#include "hostapp/HostPicture.h"

#include "kit/Image.h"

namespace hostapp {

bool HostPicture::isHostRecord(const SelectionEventRecord& record)
{
    return (record.kind == kOpenKind || record.kind == kFilterKind) && record.name == kRecordName;
}

bool HostPicture::open(const std::filesystem::path& path, std::string& problem)
{
    auto image = kit::Image::imageWithContentsOfFile(path.string(), &problem);
    if (!image)
        return false;
    if (!m_document.openPicture(image->pixelsWide(), image->pixelsHigh(), image->rgba())) {
        problem = path.string() + " is " + std::to_string(image->pixelsWide()) + " x "
            + std::to_string(image->pixelsHigh()) + " pixels, more than a canvas may have (sides up to "
            + std::to_string(engine::Document::kMaxCanvasSide) + ", "
            + std::to_string(engine::Document::kMaxCanvasPixels) + " pixels)";
        return false;
    }
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    record(kOpenKind, (ec ? path : absolute).lexically_normal().string());
    return true;
}

bool HostPicture::applyFilter(const PictureFilter& filter, std::string& problem)
{
    if (!filter.apply(m_document, problem))
        return false;
    record(kFilterKind, filter.text());
    return true;
}

bool HostPicture::save(const std::filesystem::path& path, std::string& problem) const
{
    const std::vector<std::uint8_t> pixels = m_document.paintPixels();
    auto image = kit::Image::imageWithRGBA(m_document.canvasWidth(), m_document.canvasHeight(), pixels.data());
    if (!image) {
        problem = "cannot make a picture of the canvas";
        return false;
    }
    return image->writePNG(path.string(), &problem);
}

bool HostPicture::play(const SelectionEventRecord& record, std::string& problem)
{
    if (record.kind == kOpenKind)
        return open(record.text, problem);
    auto filter = PictureFilter::parse(record.text, problem);
    return filter && applyFilter(*filter, problem);
}

void HostPicture::record(std::int32_t kind, const std::string& text)
{
    SelectionEventRecord record;
    record.kind = kind;
    record.text = text;
    record.name = kRecordName;
    m_document.actionLog().append(record);
}

} // namespace hostapp
