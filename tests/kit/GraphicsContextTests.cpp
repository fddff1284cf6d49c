// The drawing layer: fills and strokes against computed pixels, dashes, flips, images, text and
// the current-context stack.
#include "kit/BezierPath.h"
#include "kit/Font.h"
#include "kit/GraphicsContext.h"
#include "kit/TextLayout.h"
#include "tests/kit/UiTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using kit::BezierPath;
using kit::Color;
using kit::GraphicsContext;
using kit::Rect;
using kit::RefPtr;
using uitest::Pixel;
using uitest::pixelAtPoint;

// Makes a context current for the length of a test.
class Current {
public:
    explicit Current(GraphicsContext* context)
    {
        GraphicsContext::saveGraphicsState();
        GraphicsContext::setCurrentContext(context);
    }
    ~Current() { GraphicsContext::restoreGraphicsState(); }
};

TEST(GraphicsContextFill, ARectangleOnWholePointsCoversExactlyItsPixels)
{
    auto context = GraphicsContext::create(20, 10);
    context->setFillColor(Color::redColor());
    context->fillRect({ 2, 3, 5, 4 });
    auto image = context->makeImage();
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 20; ++x) {
            const bool inside = x >= 2 && x < 7 && y >= 3 && y < 7;
            const Pixel expected = inside ? Pixel { 255, 0, 0, 255 } : Pixel { 0, 0, 0, 0 };
            EXPECT_EQ(pixelAtPoint(*image, x, y), expected) << x << "," << y;
        }
    }
    // y up: the rectangle's rows are the image's rows 3 to 6 counted from the top of a
    // 10-row image (10 - 7 to 10 - 4).
    EXPECT_EQ(uitest::pixelAt(*image, 2, 3).a, 255);
    EXPECT_EQ(uitest::pixelAt(*image, 2, 2).a, 0);
    EXPECT_EQ(uitest::pixelAt(*image, 2, 7).a, 0);
}

TEST(GraphicsContextFill, EdgesOnHalfPointsAreHalfCoveredAndColourIsPremultiplied)
{
    auto context = GraphicsContext::create(10, 10);
    context->setFillColor(Color::colorWithCalibratedRedGreenBlueAlpha(0, 0, 1, 0.5f));
    context->fillRect({ 2.5f, 2, 5, 5 });
    auto image = context->makeImage();
    // Within one 8-bit step of the exact area times alpha (0.5 x 0.5 and 0.5 x 1).
    const Pixel edge = pixelAtPoint(*image, 2, 4);
    EXPECT_NEAR(edge.a, 64, 1);
    EXPECT_NEAR(edge.b, 64, 1);
    const Pixel inside = pixelAtPoint(*image, 4, 4);
    EXPECT_NEAR(inside.a, 128, 1);
    EXPECT_EQ(inside.b, inside.a);
    EXPECT_EQ(inside.r, 0);
}

TEST(GraphicsContextFill, EvenOddLeavesTheHoleOfNestedRectanglesThatNonZeroFills)
{
    for (auto rule : { kit::NonZeroWindingRule, kit::EvenOddWindingRule }) {
        auto context = GraphicsContext::create(12, 12);
        auto path = BezierPath::bezierPathWithRect({ 1, 1, 10, 10 });
        path->appendBezierPathWithRect({ 4, 4, 4, 4 }); // same direction
        path->setWindingRule(rule);
        context->fillPath(*path);
        auto image = context->makeImage();
        EXPECT_EQ(pixelAtPoint(*image, 5, 5).a, rule == kit::EvenOddWindingRule ? 0 : 255);
        EXPECT_EQ(pixelAtPoint(*image, 2, 2).a, 255);
    }
}

TEST(GraphicsContextFill, AnOvalCoversThePixelsInsideItsEllipse)
{
    auto context = GraphicsContext::create(40, 30);
    const Rect oval { 4, 3, 30, 20 };
    context->fillPath(*BezierPath::bezierPathWithOvalInRect(oval));
    auto image = context->makeImage();
    const double cx = 19, cy = 13, rx = 15, ry = 10;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            // Normalised distance of the pixel centre; pixels within about a pixel of the
            // edge may be partly covered (the curve approximation is within 0.03% of a circle).
            const double d = std::hypot((x + 0.5 - cx) / rx, (y + 0.5 - cy) / ry);
            const int alpha = pixelAtPoint(*image, x, y).a;
            if (d < 1 - 1.5 / ry) {
                EXPECT_EQ(alpha, 255) << x << "," << y;
            } else if (d > 1 + 1.5 / ry) {
                EXPECT_EQ(alpha, 0) << x << "," << y;
            }
        }
    }
}

// The alpha of each column of a 2-point-thick horizontal line stroked at y = 5.
std::vector<int> dashedRow(const std::vector<float>& dash, float phase)
{
    auto context = GraphicsContext::create(40, 10);
    auto path = BezierPath::bezierPath();
    path->moveToPoint({ 0, 5 });
    path->lineToPoint({ 40, 5 });
    path->setLineWidth(2);
    path->setLineDash(dash, phase);
    context->strokePath(*path);
    auto image = context->makeImage();
    std::vector<int> alphas;
    for (int x = 0; x < 40; ++x) {
        EXPECT_EQ(pixelAtPoint(*image, x, 4).a, pixelAtPoint(*image, x, 5).a);
        alphas.push_back(pixelAtPoint(*image, x, 5).a);
    }
    return alphas;
}

TEST(GraphicsContextStroke, DashesRunFourOnThreeOffFromPhaseZero)
{
    const std::vector<int> alphas = dashedRow({ 4, 3 }, 0);
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(alphas[std::size_t(x)], x % 7 < 4 ? 255 : 0) << "column " << x;
}

TEST(GraphicsContextStroke, ThePhaseStartsThePatternPartWay)
{
    const std::vector<int> alphas = dashedRow({ 4, 3 }, 2);
    for (int x = 0; x < 40; ++x)
        EXPECT_EQ(alphas[std::size_t(x)], (x + 2) % 7 < 4 ? 255 : 0) << "column " << x;
}

TEST(GraphicsContextStroke, AnUnusableDashDrawsASolidLine)
{
    for (const std::vector<float>& dash : { std::vector<float> { 4, -1 }, std::vector<float> { 0, 0 },
             std::vector<float> { std::numeric_limits<float>::quiet_NaN(), 2 } }) {
        const std::vector<int> alphas = dashedRow(dash, 0);
        for (int alpha : alphas)
            EXPECT_EQ(alpha, 255);
    }
}

TEST(GraphicsContextStroke, PathsWithNonFiniteCoordinatesDrawNothingAndHarmNothing)
{
    auto context = GraphicsContext::create(10, 10);
    auto bad = BezierPath::bezierPath();
    bad->moveToPoint({ 1, 1 });
    bad->lineToPoint({ std::numeric_limits<float>::infinity(), 5 });
    bad->lineToPoint({ 5, 9 });
    context->fillPath(*bad);
    context->strokePath(*bad);
    context->fillRect({ 0, 0, 2, 2 }); // the context still draws afterwards
    auto image = context->makeImage();
    EXPECT_EQ(pixelAtPoint(*image, 1, 1).a, 255);
    EXPECT_EQ(pixelAtPoint(*image, 4, 5).a, 0);
}

TEST(GraphicsContextFlip, FlippingWithinABandMirrorsPlacement)
{
    auto context = GraphicsContext::create(10, 20);
    EXPECT_FALSE(context->isFlipped());
    context->saveGState();
    context->flipVertically(0, 20);
    EXPECT_TRUE(context->isFlipped());
    context->fillRect({ 0, 0, 10, 2 }); // the top two rows now
    context->restoreGState();
    EXPECT_FALSE(context->isFlipped());
    context->fillRect({ 0, 0, 10, 1 }); // the bottom row again
    auto image = context->makeImage();
    EXPECT_EQ(uitest::pixelAt(*image, 0, 0).a, 255);
    EXPECT_EQ(uitest::pixelAt(*image, 0, 1).a, 255);
    EXPECT_EQ(uitest::pixelAt(*image, 0, 2).a, 0);
    EXPECT_EQ(uitest::pixelAt(*image, 0, 19).a, 255);
    EXPECT_EQ(uitest::pixelAt(*image, 0, 18).a, 0);
}

// A 2 x 2 image: red top left, green top right, blue bottom left, white bottom right.
RefPtr<kit::Image> quadrants()
{
    const std::uint8_t pixels[] = { 255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255 };
    return kit::Image::imageWithRGBA(2, 2, pixels);
}

TEST(GraphicsContextImage, AnImageLandsUprightInYUpAndInFlippedSpace)
{
    for (bool flip : { false, true }) {
        auto context = GraphicsContext::create(4, 4);
        if (flip)
            context->flipVertically(0, 4);
        context->drawImage(*quadrants(), { 1, 1, 2, 2 });
        auto image = context->makeImage();
        // Whatever user space does, the picture reads the same on the surface.
        EXPECT_EQ(pixelAtPoint(*image, 1, 2), (Pixel { 255, 0, 0, 255 })) << flip;
        EXPECT_EQ(pixelAtPoint(*image, 2, 2), (Pixel { 0, 255, 0, 255 })) << flip;
        EXPECT_EQ(pixelAtPoint(*image, 1, 1), (Pixel { 0, 0, 255, 255 })) << flip;
        EXPECT_EQ(pixelAtPoint(*image, 2, 1), (Pixel { 255, 255, 255, 255 })) << flip;
        EXPECT_EQ(pixelAtPoint(*image, 0, 0).a, 0);
    }
}

TEST(GraphicsContextImage, ASourceRectangleCountsFromTheImagesBottomLeft)
{
    auto context = GraphicsContext::create(6, 6);
    context->drawImage(*quadrants(), { 0, 0, 6, 6 }, { 1, 0, 1, 1 }); // the white pixel, stretched
    auto image = context->makeImage();
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(pixelAtPoint(*image, x, y), (Pixel { 255, 255, 255, 255 }));
}

TEST(GraphicsContextImage, FractionAndCopyDecideHowPixelsCombine)
{
    auto context = GraphicsContext::create(2, 2);
    context->setFillColor(Color::blueColor());
    context->fillRect({ 0, 0, 2, 2 });
    const std::uint8_t clear[16] = {};
    auto hole = kit::Image::imageWithRGBA(2, 2, clear);
    context->drawImage(*hole, { 0, 0, 1, 2 }); // source over: nothing changes
    context->drawImage(*hole, { 1, 0, 1, 2 }, {}, kit::CompositeCopy); // copy: a hole
    auto image = context->makeImage();
    EXPECT_EQ(pixelAtPoint(*image, 0, 0), (Pixel { 0, 0, 255, 255 }));
    EXPECT_EQ(pixelAtPoint(*image, 1, 0).a, 0);

    auto faded = GraphicsContext::create(2, 2);
    faded->drawImage(*quadrants(), { 0, 0, 2, 2 }, {}, kit::CompositeSourceOver, 0.5f);
    EXPECT_NEAR(pixelAtPoint(*faded->makeImage(), 0, 1).a, 128, 1);
}

TEST(GraphicsContextText, ALineOfTextInksItsBoxAndNothingElse)
{
    auto font = kit::Font::systemFontOfSize(20);
    auto context = GraphicsContext::create(200, 50);
    const float width = font->widthOfString("Hello");
    context->drawTextLine("Hello", { 10, 20 }, *font, Color::blackColor());
    auto image = context->makeImage();
    const uitest::Box ink = uitest::boxWhere(*image, [](Pixel p) { return p.a > 40; });
    ASSERT_FALSE(ink.empty);
    EXPECT_GE(ink.minX, 10);
    EXPECT_LE(ink.maxX, int(std::ceil(10 + width)) + 1);
    EXPECT_GT(ink.maxX - ink.minX, width * 0.8); // the whole word, not one letter
    EXPECT_LE(ink.maxY, int(std::ceil(20 + font->ascender())));
    EXPECT_GE(ink.minY, int(std::floor(20 + font->descender())));
    EXPECT_GE(ink.maxY, 20 + 10); // capitals stand well above the baseline
    EXPECT_LE(ink.minY, 21); // and sit on it
}

// Columns inked in the top and the bottom ink row of a "T": the bar is wide, the stem narrow.
std::pair<int, int> barAndStem(const kit::Image& image)
{
    const uitest::Box ink = uitest::boxWhere(image, [](Pixel p) { return p.a > 128; });
    int top = 0, bottom = 0;
    for (int x = 0; x < image.pixelsWide(); ++x) {
        top += pixelAtPoint(image, x, ink.maxY - 1).a > 128;
        bottom += pixelAtPoint(image, x, ink.minY).a > 128;
    }
    return { top, bottom };
}

TEST(GraphicsContextText, GlyphsStandUprightWhicheverWayUserSpacePoints)
{
    auto font = kit::Font::systemFontOfSize(30);
    auto upright = GraphicsContext::create(40, 40);
    upright->drawTextLine("T", { 5, 8 }, *font, Color::blackColor());
    auto flipped = GraphicsContext::create(40, 40);
    flipped->flipVertically(0, 40);
    flipped->drawTextLine("T", { 5, 32 }, *font, Color::blackColor());
    for (auto& context : { upright, flipped }) {
        const auto [bar, stem] = barAndStem(*context->makeImage());
        EXPECT_GT(bar, 2 * stem);
    }
}

TEST(GraphicsContextText, RightAlignmentPutsTheInkAtTheRightOfTheBox)
{
    auto font = kit::Font::systemFontOfSize(13);
    const Rect box { 10, 5, 150, 20 };
    for (auto alignment : { kit::TextAlignmentLeft, kit::TextAlignmentCenter, kit::TextAlignmentRight }) {
        auto context = GraphicsContext::create(170, 30);
        kit::TextLayout layout("250 Pixels", *font, box.width(), kit::LineBreakByClipping, true);
        layout.draw(*context, box, alignment, Color::blackColor());
        const uitest::Box ink = uitest::boxWhere(*context->makeImage(), [](Pixel p) { return p.a > 40; });
        ASSERT_FALSE(ink.empty);
        const float width = font->widthOfString("250 Pixels");
        const float expectedLeft = alignment == kit::TextAlignmentLeft ? box.minX()
            : alignment == kit::TextAlignmentRight                     ? box.maxX() - width
                                                                       : box.minX() + (box.width() - width) / 2;
        EXPECT_NEAR(ink.minX, expectedLeft, 2.5) << alignment;
        EXPECT_LE(ink.maxX, box.maxX());
        EXPECT_GE(ink.maxY, box.maxY() - font->ascender() + 5); // from the top of the box
    }
}

TEST(TextLayoutLines, WrapsAtWordsOrCharactersAndTruncatesWithAnEllipsis)
{
    auto font = kit::Font::systemFontOfSize(13);
    const float word = font->widthOfString("alpha beta");
    kit::TextLayout words("alpha beta gamma", *font, word + 1, kit::LineBreakByWordWrapping, false);
    ASSERT_EQ(words.lines().size(), 2u);
    EXPECT_EQ(words.lines()[0].text, "alpha beta");
    EXPECT_EQ(words.lines()[1].text, "gamma");

    kit::TextLayout chars("abcdef", *font, font->widthOfString("abcd") + 0.5f, kit::LineBreakByCharWrapping, false);
    ASSERT_EQ(chars.lines().size(), 2u);
    EXPECT_EQ(chars.lines()[0].text, "abcd");

    kit::TextLayout single("alpha beta gamma", *font, word + 1, kit::LineBreakByWordWrapping, true);
    EXPECT_EQ(single.lines().size(), 1u); // single-line mode clips instead

    kit::TextLayout tail("alpha beta gamma", *font, word, kit::LineBreakByTruncatingTail, true);
    ASSERT_EQ(tail.lines().size(), 1u);
    EXPECT_EQ(tail.lines()[0].text.substr(0, 5), "alpha");
    EXPECT_EQ(tail.lines()[0].text.substr(tail.lines()[0].text.size() - 3), "\xE2\x80\xA6");
    EXPECT_LE(tail.lines()[0].width, word);
}

TEST(FontLookup, FindsDejaVuSansThroughFontconfigAndRefusesUnknownFamilies)
{
    auto font = kit::Font::systemFontOfSize(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(font->familyName(), "DejaVu Sans");
    EXPECT_EQ(font->pointSize(), kit::Font::kSystemFontSize);
    EXPECT_GT(font->ascender(), 0);
    EXPECT_LT(font->descender(), 0);
    EXPECT_EQ(kit::Font::fontWithNameSize("No Such Family Anywhere", 12), nullptr);
}

TEST(FontLookup, WidthsAddUpAndBadTextDoesNotSpoilTheFont)
{
    auto font = kit::Font::systemFontOfSize(13);
    const float a = font->widthOfString("A");
    EXPECT_GT(font->widthOfString("WW"), font->widthOfString("ii"));
    EXPECT_NEAR(font->widthOfString("AAA"), 3 * a, 0.01);
    EXPECT_GT(font->widthOfString("\xff\xfe"), 0); // measured as replacement characters
    EXPECT_FLOAT_EQ(font->widthOfString("A"), a);
}

TEST(GraphicsContextStack, SavingAndRestoringSwitchesTheCurrentContextBack)
{
    auto first = GraphicsContext::create(2, 2);
    auto second = GraphicsContext::create(2, 2);
    Current outer(first.get());
    EXPECT_EQ(GraphicsContext::currentContext(), first.get());
    {
        Current inner(second.get());
        Color::greenColor().setFill();
        BezierPath::fillRect({ 0, 0, 2, 2 });
        EXPECT_EQ(GraphicsContext::currentContext(), second.get());
    }
    EXPECT_EQ(GraphicsContext::currentContext(), first.get());
    EXPECT_EQ(first->fillColor(), Color::blackColor()); // the colour went to the other one
    EXPECT_EQ(pixelAtPoint(*second->makeImage(), 0, 0), (Pixel { 0, 255, 0, 255 }));
    EXPECT_EQ(pixelAtPoint(*first->makeImage(), 0, 0).a, 0);
}

TEST(GraphicsContextStack, GraphicsStateKeepsColoursAndClipUntilRestored)
{
    auto context = GraphicsContext::create(4, 1);
    context->saveGState();
    context->setFillColor(Color::redColor());
    context->clipToRect({ 0, 0, 2, 1 });
    context->fillRect({ 0, 0, 4, 1 });
    context->restoreGState();
    context->restoreGState(); // more restores than saves are ignored
    EXPECT_EQ(context->fillColor(), Color::blackColor());
    context->fillRect({ 3, 0, 1, 1 });
    auto image = context->makeImage();
    EXPECT_EQ(pixelAtPoint(*image, 1, 0), (Pixel { 255, 0, 0, 255 }));
    EXPECT_EQ(pixelAtPoint(*image, 2, 0).a, 0);
    EXPECT_EQ(pixelAtPoint(*image, 3, 0), (Pixel { 0, 0, 0, 255 }));
}

TEST(GraphicsContextStack, ClearingInATransparencyLayerClearsOnlyTheLayer)
{
    auto context = GraphicsContext::create(4, 1);
    context->setFillColor(Color::redColor());
    context->fillRect({ 0, 0, 4, 1 });
    context->beginTransparencyLayer();
    context->clearRect({ 0, 0, 4, 1 });
    context->setFillColor(Color::blueColor());
    context->fillRect({ 2, 0, 1, 1 });
    context->endTransparencyLayer();
    EXPECT_EQ(context->fillColor(), Color::redColor()); // the layer's state ended with it
    auto image = context->makeImage();
    EXPECT_EQ(pixelAtPoint(*image, 1, 0), (Pixel { 255, 0, 0, 255 }));
    EXPECT_EQ(pixelAtPoint(*image, 2, 0), (Pixel { 0, 0, 255, 255 }));
}

TEST(GraphicsContextLimits, RefusesEmptyAndOversizedSurfaces)
{
    EXPECT_EQ(GraphicsContext::create(0, 10), nullptr);
    EXPECT_EQ(GraphicsContext::create(10, -1), nullptr);
    EXPECT_EQ(GraphicsContext::create(40000, 1), nullptr);
    EXPECT_EQ(GraphicsContext::create(30000, 30000), nullptr);
    EXPECT_NE(GraphicsContext::create(1, 1), nullptr);
}

TEST(ColorValues, ComponentsAreClampedAndNaNIsZero)
{
    const Color c = Color::colorWithCalibratedRedGreenBlueAlpha(2, -1, std::numeric_limits<float>::quiet_NaN(), 0.5f);
    EXPECT_EQ(c.redComponent(), 1);
    EXPECT_EQ(c.greenComponent(), 0);
    EXPECT_EQ(c.blueComponent(), 0);
    EXPECT_EQ(c.alphaComponent(), 0.5f);
    EXPECT_EQ(Color::colorWithRGBA8(255, 0, 0), Color::redColor());
}

} // namespace
