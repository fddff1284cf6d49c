// GraphicsToBuffer: rectangles, ellipses and polygons rasterised into feathered RGBA mask buffers.
#pragma once

#include "kit/Geometry.h"

/// A mask: nHeight rows of nWidth pixels, R, G, B, A premultiplied, no row padding. pData comes
/// from the rasteriser and goes back only through DestroyImageBuffer.
struct IMAGE_BUFFER {
    int nWidth;
    int nHeight;
    unsigned char* pData;
};

/// A colour of four bytes in the order r, g, b, a; v stands for v / 255.
struct COLOR_STRUCT {
    unsigned char r;
    unsigned char g;
    unsigned char b;
    unsigned char a;
};

/// Results of the rasteriser. Every negative result leaves the buffer and the origin as they
/// were and nothing allocated: the caller has nothing to commit.
enum : int {
    kGraphicsToBufferDone = 0,
    /// Fewer than three vertices.
    kGraphicsToBufferTooFewVertices = -1,
    /// No bitmap context: the pixel block or the blur's scratch memory could not be had.
    kGraphicsToBufferNoContext = -2,
    /// Input outside what the rasteriser takes (see docs/rasteriser.md): a coordinate or size
    /// that is NaN or infinite, a negative size, a feather that is negative, NaN or above 1000,
    /// more than 1,000,000 vertices or none given, an origin that does not fit a 32-bit int, a
    /// buffer above 2^28 pixels, a feathered buffer with a side above 2^20 pixels.
    kGraphicsToBufferRefused = -3,
};

/// The largest feather, vertex count and buffer the rasteriser takes.
inline constexpr float kGraphicsToBufferMaxFeather = 1000;
inline constexpr int kGraphicsToBufferMaxVertices = 1000000;
inline constexpr long long kGraphicsToBufferMaxPixels = 1LL << 28;
/// The longest side of a feathered buffer.
inline constexpr long long kGraphicsToBufferMaxBlurSide = 1LL << 20;

/// Fills the closed polygon through `vertices` (selection-layer pixels, y down) with
/// `fillColor`, antialiased and, for a feather above 0.0001, blurred with a Gaussian of that
/// standard deviation. The buffer spans the vertices' bounds truncated toward zero plus a margin
/// of 1 + feather before them and 2 + feather after them on each axis; `origin` is its first
/// pixel's corner, and memory row j and column i cover the layer pixel (origin.x + i,
/// origin.y + j), so the mask lands exactly where the shape was given. `firstColor` and `flag`
/// are not read.
int CreateImageBufferFromPolygon(IMAGE_BUFFER& buffer, kit::Point& origin, const kit::Point* vertices, int count,
    COLOR_STRUCT firstColor, bool flag, COLOR_STRUCT fillColor, float feather);
/// The polygon (x, y), (x, y + height), (x + width, y + height), (x + width, y).
int CreateImageBufferFromRect(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect rect, COLOR_STRUCT firstColor,
    bool flag, COLOR_STRUCT fillColor, float feather);
/// The ellipse inscribed in `rect`; the origin is (x - 1 - feather, y - 1 - feather), not truncated.
int CreateImageBufferFromEllipse(IMAGE_BUFFER& buffer, kit::Point& origin, kit::Rect rect, COLOR_STRUCT firstColor,
    bool flag, COLOR_STRUCT fillColor, float feather);
/// Gives the buffer's pixels back; a null pData is fine.
void DestroyImageBuffer(IMAGE_BUFFER buffer);
