// HostPicture: opening, filtering and saving the picture, and the records that replay them.
#include "hostapp/HostPicture.h"

#include "kit/Image.h"

#include <array>
#include <cstring>
#include <fstream>

namespace hostapp {

namespace {

struct SelectionCommand {
    const char* name;
    std::int32_t kind;
    void (engine::Document::*apply)();
};

constexpr std::array<SelectionCommand, 3> kSelectionCommands { {
    { "select-all", HostPicture::kSelectAllKind, &engine::Document::selectAll },
    { "select-none", HostPicture::kSelectNoneKind, &engine::Document::selectNone },
    { "invert-selection", HostPicture::kInvertSelectionKind, &engine::Document::invertSelection },
} };

// Why a file is no picture of ours, before the decoder is asked: the decoder's failure alone
// would not tell a person a missing file from a JPEG.
std::string unusableReason(const std::filesystem::path& path, const std::string& decoderProblem)
{
    std::error_code ec;
    if (!std::filesystem::exists(path, ec))
        return "there is no such file";
    if (!std::filesystem::is_regular_file(path, ec))
        return "it is not a file";
    std::ifstream in(path, std::ios::binary);
    char signature[8] = {};
    if (!in.read(signature, sizeof signature))
        return in.is_open() ? "it is too short for a PNG" : "it cannot be read";
    if (std::memcmp(signature, "\x89PNG\r\n\x1a\n", sizeof signature) != 0)
        return "it is not a PNG file";
    return "its PNG data cannot be decoded (" + decoderProblem + ")";
}

} // namespace

bool HostPicture::isHostRecord(const SelectionEventRecord& record)
{
    return record.kind >= kOpenKind && record.kind <= kInvertSelectionKind && record.name == kRecordName;
}

bool HostPicture::open(const std::filesystem::path& path, std::string& problem)
{
    std::string why;
    auto image = kit::Image::imageWithContentsOfFile(path.string(), &why);
    if (!image) {
        problem = "cannot open the picture " + path.string() + ": " + unusableReason(path, why);
        return false;
    }
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

bool HostPicture::changeSelection(const std::string& command)
{
    for (const SelectionCommand& each : kSelectionCommands) {
        if (command == each.name) {
            (m_document.*each.apply)();
            record(each.kind, {});
            return true;
        }
    }
    return false;
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
    for (const SelectionCommand& each : kSelectionCommands) {
        if (record.kind == each.kind)
            return changeSelection(each.name);
    }
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
