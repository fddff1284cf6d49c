// GraphicsToBufferInternals: the rasteriser unit's own helpers, open to its tests only.
#pragma once

#include "kit/BitmapContext.h"
#include "kit/CIImage.h"

#include <utility>

/// A bitmap context over `memory` (width x 4 bytes a row, RGBA premultiplied last). Null
/// memory, or a context that cannot be made, is a broken invariant: the program stops.
kit::RefPtr<kit::BitmapContext> MyCreateBitmapContext(int width, int height, unsigned char* memory, int unused);

/// A filter image of the RGBA pixels, from an A, R, G, B copy of them, blurred by `radius`
/// unless it is below 0.0001. The copy is the second result; it must outlive the image's
/// drawing and then go back through kit::MemoryRecycler::release. Null image and block when the
/// copy cannot be had.
std::pair<kit::RefPtr<kit::CIImage>, unsigned char*> CICreateCIImage(const unsigned char* bytes, int width, int height,
                                                                     float radius);
