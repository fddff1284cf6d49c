// TextAttributes: text alignment and line-break modes, with the original platform's values.
#pragma once

namespace kit {

enum TextAlignment : int {
    TextAlignmentLeft = 0,
    TextAlignmentRight = 1,
    TextAlignmentCenter = 2,
    TextAlignmentJustified = 3,
    TextAlignmentNatural = 4,
    // The older spellings of the same values.
    LeftTextAlignment = 0,
    RightTextAlignment = 1,
    CenterTextAlignment = 2,
    JustifiedTextAlignment = 3,
    NaturalTextAlignment = 4,
};

enum LineBreakMode : int {
    LineBreakByWordWrapping = 0,
    LineBreakByCharWrapping = 1,
    LineBreakByClipping = 2,
    LineBreakByTruncatingHead = 3,
    LineBreakByTruncatingTail = 4,
    LineBreakByTruncatingMiddle = 5,
};

} // namespace kit
