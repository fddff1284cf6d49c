// Rendering view trees: order, clipping, hidden and flipped views, labels and whole windows.
#include "kit/ImageView.h"
#include "kit/TextField.h"
#include "kit/Window.h"
#include "tests/kit/UiTestSupport.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace {

using kit::Color;
using kit::Rect;
using kit::RefPtr;
using uitest::ColorView;
using uitest::Pixel;
using uitest::pixelAtPoint;

const Pixel kRed { 255, 0, 0, 255 };
const Pixel kGreen { 0, 255, 0, 255 };
const Pixel kBlue { 0, 0, 255, 255 };
const Pixel kNone { 0, 0, 0, 0 };

RefPtr<ColorView> colorView(const Rect& frame, Color color)
{
    auto view = kit::make<ColorView>(frame);
    view->color = color;
    return view;
}

TEST(ViewRendering, SubviewsDrawBackToFrontEachClippedToItsFrame)
{
    auto root = kit::View::create({ 0, 0, 30, 20 });
    auto back = colorView({ 2, 2, 10, 10 }, Color::redColor());
    auto front = colorView({ 8, 4, 10, 10 }, Color::greenColor());
    root->addSubview(back.get());
    root->addSubview(front.get());
    auto image = root->renderImage();
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelsWide(), 30);
    EXPECT_EQ(image->pixelsHigh(), 20);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 30; ++x) {
            const bool inFront = x >= 8 && x < 18 && y >= 4 && y < 14;
            const bool inBack = x >= 2 && x < 12 && y >= 2 && y < 12;
            const Pixel expected = inFront ? kGreen : inBack ? kRed : kNone;
            ASSERT_EQ(pixelAtPoint(*image, x, y), expected) << x << "," << y;
        }
    }
}

TEST(ViewRendering, AGrandchildIsClippedByEveryAncestorsFrame)
{
    auto root = kit::View::create({ 0, 0, 20, 20 });
    auto parent = colorView({ 5, 5, 6, 6 }, Color::redColor());
    auto child = colorView({ 3, 3, 10, 10 }, Color::blueColor()); // reaches past the parent
    parent->addSubview(child.get());
    root->addSubview(parent.get());
    auto image = root->renderImage();
    EXPECT_EQ(pixelAtPoint(*image, 9, 9), kBlue);
    EXPECT_EQ(pixelAtPoint(*image, 10, 10), kBlue);
    EXPECT_EQ(pixelAtPoint(*image, 11, 11), kNone); // inside the child, outside the parent
    EXPECT_EQ(pixelAtPoint(*image, 6, 6), kRed);
    EXPECT_EQ(child->dirtyRects.back(), (Rect { 0, 0, 3, 3 })); // only the visible part is dirty
}

TEST(ViewRendering, HiddenViewsAndTheirSubviewsAreNotDrawn)
{
    auto root = kit::View::create({ 0, 0, 20, 20 });
    auto hidden = colorView({ 0, 0, 10, 10 }, Color::redColor());
    auto inside = colorView({ 1, 1, 4, 4 }, Color::greenColor());
    hidden->addSubview(inside.get());
    root->addSubview(hidden.get());
    hidden->setHidden(true);
    auto image = root->renderImage();
    EXPECT_EQ(pixelAtPoint(*image, 2, 2), kNone);
    EXPECT_EQ(pixelAtPoint(*image, 8, 8), kNone);
    EXPECT_TRUE(hidden->dirtyRects.empty());
    EXPECT_TRUE(inside->dirtyRects.empty());
    hidden->setHidden(false);
    EXPECT_EQ(pixelAtPoint(*root->renderImage(), 2, 2), kGreen);
}

TEST(ViewRendering, AFlippedSuperviewPlacesSubviewsFromItsTop)
{
    for (bool flipped : { false, true }) {
        auto root = kit::View::create({ 0, 0, 20, 20 });
        auto parent = colorView({ 0, 0, 20, 20 }, Color::clearColor());
        parent->flipped = flipped;
        auto square = colorView({ 0, 0, 5, 5 }, Color::redColor());
        parent->addSubview(square.get());
        root->addSubview(parent.get());
        auto image = root->renderImage();
        EXPECT_EQ(pixelAtPoint(*image, 2, flipped ? 17 : 2), kRed) << flipped;
        EXPECT_EQ(pixelAtPoint(*image, 2, flipped ? 2 : 17), kNone) << flipped;
    }
}

TEST(ViewRendering, AFlippedViewDrawsItsOwnContentFromItsTop)
{
    auto root = kit::View::create({ 0, 0, 20, 20 });
    auto view = colorView({ 5, 5, 10, 10 }, Color::clearColor());
    view->flipped = true;
    view->extraRect = { 0, 0, 10, 2 }; // the top two rows of a flipped view
    root->addSubview(view.get());
    auto image = root->renderImage();
    EXPECT_EQ(pixelAtPoint(*image, 6, 14), kBlue);
    EXPECT_EQ(pixelAtPoint(*image, 6, 13), kBlue);
    EXPECT_EQ(pixelAtPoint(*image, 6, 12), kNone);
    EXPECT_EQ(pixelAtPoint(*image, 6, 5), kNone);
}

TEST(ViewRendering, ANestedViewRendersAtTheImageOrigin)
{
    auto root = kit::View::create({ 0, 0, 50, 50 });
    auto nested = colorView({ 20, 20, 8, 6 }, Color::greenColor());
    root->addSubview(nested.get());
    auto image = nested->renderImage();
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelsWide(), 8);
    EXPECT_EQ(image->pixelsHigh(), 6);
    EXPECT_EQ(pixelAtPoint(*image, 0, 0), kGreen);
    EXPECT_EQ(pixelAtPoint(*image, 7, 5), kGreen);
    EXPECT_EQ(kit::View::create({ 0, 0, 0, 10 })->renderImage(), nullptr);
}

TEST(ViewRendering, ImageViewsScaleAsAsked)
{
    const std::uint8_t red[4 * 4 * 4] = { 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0,
        255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0,
        255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255 };
    auto picture = kit::Image::imageWithRGBA(4, 4, red);
    const struct {
        kit::ImageScaling scaling;
        uitest::Box box;
    } cases[] = {
        { kit::ImageScaleAxesIndependently, { 0, 0, 20, 10, false } },
        { kit::ImageScaleProportionallyUpOrDown, { 5, 0, 15, 10, false } },
        { kit::ImageScaleProportionallyDown, { 8, 3, 12, 7, false } },
        { kit::ImageScaleNone, { 8, 3, 12, 7, false } },
    };
    for (const auto& c : cases) {
        auto view = kit::ImageView::create({ 0, 0, 20, 10 });
        view->setImage(picture);
        view->setImageScaling(c.scaling);
        const uitest::Box ink = uitest::boxWhere(*view->renderImage(), [](Pixel p) { return p.a > 128; });
        EXPECT_EQ(ink.minX, c.box.minX) << c.scaling;
        EXPECT_EQ(ink.minY, c.box.minY) << c.scaling;
        EXPECT_EQ(ink.maxX, c.box.maxX) << c.scaling;
        EXPECT_EQ(ink.maxY, c.box.maxY) << c.scaling;
    }
}

// A borderless label on a clear background, as the panels and the size read-out use.
RefPtr<kit::TextField> label(const Rect& frame, const std::string& text, kit::TextAlignment alignment)
{
    auto field = kit::TextField::create(frame);
    field->setStringValue(text);
    field->setEditable(false);
    field->setBordered(false);
    field->setDrawsBackground(false);
    field->setAlignment(alignment);
    field->setTextColor(Color::whiteColor());
    return field;
}

TEST(LabelRendering, TextIsInkedInsideTheFieldOnTheAlignedSide)
{
    auto root = colorView({ 0, 0, 140, 30 }, Color::blackColor());
    auto right = label({ 10, 5, 100, 17.5f }, "250 Pixels", kit::TextAlignmentRight);
    root->addSubview(right.get());
    const auto white = [](Pixel p) { return p.r > 100; };
    const uitest::Box ink = uitest::boxWhere(*root->renderImage(), white);
    ASSERT_FALSE(ink.empty);
    const float width = right->font().widthOfString("250 Pixels");
    EXPECT_GE(ink.minX, 10);
    EXPECT_LE(ink.maxX, 110);
    EXPECT_GE(ink.maxX, 110 - 4); // right edge against the field's right margin
    EXPECT_NEAR(ink.minX, 110 - 2 - width, 2.5);
    EXPECT_GE(ink.minY, 5);
    EXPECT_LE(ink.maxY, 23);

    right->setAlignment(kit::TextAlignmentLeft);
    const uitest::Box left = uitest::boxWhere(*root->renderImage(), white);
    EXPECT_LE(left.minX, 10 + 4);
    EXPECT_LT(left.maxX, ink.maxX - 10);
}

TEST(LabelRendering, DisabledAndEmptyFieldsDrawNoBlackText)
{
    auto field = kit::TextField::create({ 0, 0, 80, 22 });
    field->setStringValue("text");
    field->setEnabled(false);
    const auto black = [](Pixel p) { return p.a > 200 && p.r < 60; };
    EXPECT_TRUE(uitest::boxWhere(*field->renderImage(), black).empty); // grey, not black
    field->setEnabled(true);
    EXPECT_FALSE(uitest::boxWhere(*field->renderImage(), black).empty);
}

TEST(WindowRendering, TheWholeContentRendersOverTheBackgroundAndSurvivesAPngRoundTrip)
{
    auto window = kit::Window::create({ 100, 100, 64, 40 });
    window->setBackgroundColor(Color::colorWithRGBA8(200, 200, 200));
    auto square = colorView({ 4, 4, 10, 10 }, Color::blueColor());
    window->contentView()->addSubview(square.get());
    window->contentView()->addSubview(label({ 20, 10, 40, 20 }, "Hi", kit::TextAlignmentLeft).get());
    auto image = window->renderImage();
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelsWide(), 64);
    EXPECT_EQ(image->pixelsHigh(), 40); // the content area, without the title bar
    EXPECT_EQ(pixelAtPoint(*image, 0, 39), (Pixel { 200, 200, 200, 255 }));
    EXPECT_EQ(pixelAtPoint(*image, 5, 5), kBlue);

    TempDir dir;
    const std::string path = (dir.path() / "window.png").string();
    std::string error;
    ASSERT_TRUE(image->writePNG(path, &error)) << error;
    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->pixelsWide(), 64);
    ASSERT_EQ(back->pixelsHigh(), 40);
    EXPECT_EQ(back->rgba(), image->rgba()); // opaque pixels come back bit for bit
}

} // namespace
