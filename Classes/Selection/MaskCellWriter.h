// MaskCellWriter: merging a mask into the selection-mask layer cell by cell, beside the import commit.
#pragma once

/// Where a mask goes in the selection-mask layer: its first pixel at layer pixel (x, y), and
/// its size in pixels.
struct SelectionMaskRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// Merges an RGBA mask (rect.width x rect.height pixels, first row first) into the 64 x 64
/// cells of the selection-mask layer in place, row of cells by row of cells, each cell updated
/// and saved after its merge: a mask pixel with alpha selects an unselected cell pixel and can
/// lower the alpha of a selected one, never raise it. A null mask or one of more than 2^28
/// pixels visits nothing.
void MergeSelectionMaskIntoCells(void* context, const unsigned char* mask, SelectionMaskRect rect);
