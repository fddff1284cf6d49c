// GraphicsToBufferInternals: the rasteriser unit's own helpers, open to its tests only.
#pragma once

#include "kit/BitmapContext.h"

/// A bitmap context over `memory` (width x 4 bytes a row, RGBA premultiplied last). Null
/// memory, or a context that cannot be made, is a broken invariant: the program stops.
kit::RefPtr<kit::BitmapContext> MyCreateBitmapContext(int width, int height, unsigned char* memory, int unused);
