// ImageImporter: merges an RGBA image into a layer, keeping per pixel the one with more alpha.
#pragma once

#include "engine/Layer.h"
#include "engine/PixelRect.h"

#include <cstdint>
#include <functional>

namespace engine {

/// Keeping the larger alpha makes an import the union of the layer's selection and the image's.
/// Only canvas pixels inside the clip are read or written, and cells that would not change are
/// neither created nor handed to replaceCell. A cell that changes is written whole, once, into
/// the cell replaceCell gives (see UndoHistory::replaceCell).
class ImageImporter {
public:
    using ReplaceCell = std::function<CellWrite(CellKey)>;

    ImageImporter(Layer& layer, const PixelRect& clip, ReplaceCell replaceCell);

    /// Merges width x height premultiplied RGBA pixels whose top-left pixel goes to layer pixel
    /// (x, y). The caller has checked that the image is non-empty and of bounded size. Returns
    /// whether any pixel changed.
    bool import(const std::uint8_t* data, int width, int height, int x, int y);

private:
    struct Image {
        const std::uint8_t* data;
        std::int64_t rowBytes;
        PixelRect canvasRect;
    };

    bool importIntoCell(const Image& image, CellKey key, const PixelRect& area);
    static void writeCell(const Image& image, const CellWrite& write, const PixelRect& cellRect, const PixelRect& part);
    static bool wouldChange(
        const Image& image, const CellPixels* cell, const PixelRect& cellRect, const PixelRect& area);
    static const std::uint8_t* sourcePixel(const Image& image, std::int64_t x, std::int64_t y);

    Layer& m_layer;
    PixelRect m_clip;
    ReplaceCell m_replaceCell;
};

} // namespace engine
