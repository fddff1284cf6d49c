// Views and windows: the tree, tags, autoresizing, conversion and the responder chain.
#include "kit/Application.h"
#include "kit/View.h"
#include "kit/Window.h"

#include <gtest/gtest.h>

namespace {

using kit::Rect;

class FlippedView final : public kit::View {
    KIT_MAKEABLE
public:
    bool isFlipped() const override { return true; }

private:
    using kit::View::View;
};

TEST(ViewTree, AddSubviewPutsTheViewOnTopAndMovesItBetweenParents)
{
    auto parent = kit::View::create({ 0, 0, 100, 100 });
    auto other = kit::View::create({ 0, 0, 100, 100 });
    auto a = kit::View::create({});
    auto b = kit::View::create({});
    parent->addSubview(a.get());
    parent->addSubview(b.get());
    parent->addSubview(a.get()); // re-adding brings it to the top
    ASSERT_EQ(parent->subviews().size(), 2u);
    EXPECT_EQ(parent->subviews().back().get(), a.get());

    other->addSubview(a.get());
    EXPECT_EQ(parent->subviews().size(), 1u);
    EXPECT_EQ(a->superview(), other.get());

    a->removeFromSuperview();
    a->removeFromSuperview(); // outside any tree: nothing happens
    EXPECT_EQ(a->superview(), nullptr);
    EXPECT_TRUE(other->subviews().empty());
}

TEST(ViewTree, SuperviewKeepsItsSubviewsAlive)
{
    auto parent = kit::View::create({});
    kit::View* child;
    {
        auto made = kit::View::create({});
        child = made.get();
        parent->addSubview(child);
    }
    EXPECT_EQ(child->refCount(), 1);
    EXPECT_EQ(child->superview(), parent.get());
}

TEST(ViewTree, ANodeCannotBecomeItsOwnAncestor)
{
    auto a = kit::View::create({});
    auto b = kit::View::create({});
    a->addSubview(b.get());
    b->addSubview(a.get());
    b->addSubview(b.get());
    EXPECT_EQ(a->superview(), nullptr);
    EXPECT_TRUE(b->subviews().empty());
}

TEST(ViewTree, ViewWithTagLooksAtItselfFirstThenDepthFirst)
{
    auto root = kit::View::create({});
    auto first = kit::View::create({});
    auto deep = kit::View::create({});
    auto second = kit::View::create({});
    first->addSubview(deep.get());
    root->addSubview(first.get());
    root->addSubview(second.get());
    deep->setTag(7);
    second->setTag(7);
    EXPECT_EQ(root->viewWithTag(7), deep.get());
    root->setTag(7);
    EXPECT_EQ(root->viewWithTag(7), root.get());
    EXPECT_EQ(root->viewWithTag(99), nullptr);
    EXPECT_EQ(kit::View::create({})->tag(), -1);
}

TEST(ViewTree, HiddenAncestorHidesTheSubtree)
{
    auto root = kit::View::create({});
    auto child = kit::View::create({});
    root->addSubview(child.get());
    EXPECT_FALSE(child->isHiddenOrHasHiddenAncestor());
    root->setHidden(true);
    EXPECT_FALSE(child->isHidden());
    EXPECT_TRUE(child->isHiddenOrHasHiddenAncestor());
}

struct ResizeCase {
    unsigned mask;
    Rect before;
    Rect after;
};

class Autoresizing : public testing::TestWithParam<ResizeCase> {};

TEST_P(Autoresizing, FollowsTheSuperviewAsTheMaskSays)
{
    // The superview grows from 200 x 100 to 300 x 160.
    auto parent = kit::View::create({ 0, 0, 200, 100 });
    auto child = kit::View::create(GetParam().before);
    child->setAutoresizingMask(GetParam().mask);
    parent->addSubview(child.get());
    parent->setFrameSize({ 300, 160 });
    EXPECT_EQ(child->frame(), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(Masks, Autoresizing,
    testing::Values(ResizeCase { kit::ViewNotSizable, { 10, 10, 50, 20 }, { 10, 10, 50, 20 } },
        // The option bar's mask: width follows, the bottom margin takes the height change.
        ResizeCase { kit::ViewWidthSizable | kit::ViewMinYMargin, { 0, 50, 200, 53 }, { 0, 110, 300, 53 } },
        // The tool area's and overlay's mask.
        ResizeCase { kit::ViewWidthSizable | kit::ViewHeightSizable, { 0, 0, 200, 50 }, { 0, 0, 300, 110 } },
        ResizeCase { kit::ViewMinXMargin | kit::ViewMaxYMargin, { 10, 10, 50, 20 }, { 110, 10, 50, 20 } },
        // Several flexible parts share the change in proportion to their lengths:
        // margins 40 and 60 of 100 take 40 and 60 of the 100 extra points.
        ResizeCase { kit::ViewMinXMargin | kit::ViewMaxXMargin, { 40, 0, 100, 100 }, { 80, 0, 100, 100 } },
        // All flexible parts have zero length: the change is shared evenly.
        ResizeCase { kit::ViewMinXMargin | kit::ViewWidthSizable, { 0, 0, 0, 100 }, { 50, 0, 50, 100 } }));

TEST(Autoresizing, NothingMovesWhenTheSuperviewDoesNotAutoresize)
{
    auto parent = kit::View::create({ 0, 0, 200, 100 });
    auto child = kit::View::create({ 0, 0, 200, 100 });
    child->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
    parent->addSubview(child.get());
    parent->setAutoresizesSubviews(false);
    parent->setFrameSize({ 400, 400 });
    EXPECT_EQ(child->frame(), Rect(0, 0, 200, 100));
}

TEST(Conversion, PointsMoveBetweenNestedAndFlippedViews)
{
    auto window = kit::Window::create({ 0, 0, 400, 300 });
    kit::View* content = window->contentView();
    auto box = kit::View::create({ 100, 50, 200, 100 });
    auto flipped = kit::make<FlippedView>(Rect { 10, 20, 50, 40 });
    content->addSubview(box.get());
    box->addSubview(flipped.get());

    EXPECT_EQ(box->convertPointFromView({ 150, 70 }, nullptr), (kit::Point { 50, 20 }));
    EXPECT_EQ(box->convertPointToView({ 50, 20 }, nullptr), (kit::Point { 150, 70 }));
    // The flipped view's origin is its top-left corner: window (110, 110).
    EXPECT_EQ(flipped->convertPointFromView({ 110, 110 }, nullptr), (kit::Point { 0, 0 }));
    EXPECT_EQ(flipped->convertPointToView({ 5, 10 }, box.get()), (kit::Point { 15, 50 }));
    EXPECT_EQ(box->convertPointFromView({ 5, 10 }, flipped.get()), (kit::Point { 15, 50 }));
}

TEST(WindowGeometry, ContentAreaLiesBelowTheTitleBar)
{
    auto window = kit::Window::create({ 30, 40, 1200, 900 });
    EXPECT_EQ(window->frame(), Rect(30, 40, 1200, 900 + kit::Window::kTitleBarHeight));
    EXPECT_EQ(window->contentRectForFrameRect(window->frame()), Rect(30, 40, 1200, 900));
    EXPECT_EQ(window->frameRectForContentRect({ 0, 0, 10, 10 }), Rect(0, 0, 10, 10 + kit::Window::kTitleBarHeight));
    EXPECT_EQ(window->contentView()->frame(), Rect(0, 0, 1200, 900));

    auto overlay = kit::View::create({ 0, 0, 1200, 900 });
    overlay->setAutoresizingMask(kit::ViewWidthSizable | kit::ViewHeightSizable);
    window->contentView()->addSubview(overlay.get());
    window->setFrame(window->frameRectForContentRect({ 0, 0, 800, 600 }));
    EXPECT_EQ(overlay->frame(), Rect(0, 0, 800, 600));
    EXPECT_EQ(overlay->window(), window.get());
}

TEST(ResponderChain, RunsFromAViewUpToTheApplication)
{
    auto window = kit::Window::create({ 0, 0, 100, 100 });
    auto overlay = kit::View::create({});
    auto tool = kit::View::create({});
    overlay->addSubview(tool.get());
    window->contentView()->addSubview(overlay.get());

    EXPECT_EQ(tool->nextResponder(), overlay.get());
    EXPECT_EQ(overlay->nextResponder(), window->contentView());
    EXPECT_EQ(window->contentView()->nextResponder(), window.get());
    EXPECT_EQ(window->nextResponder(), &kit::Application::shared());
    EXPECT_EQ(kit::Application::shared().nextResponder(), nullptr);
    // A view outside any window ends its chain at its root.
    overlay->removeFromSuperview();
    EXPECT_EQ(overlay->nextResponder(), nullptr);
    EXPECT_EQ(tool->window(), nullptr);
}

TEST(ApplicationObject, ForgetsAMainWindowThatGoesAway)
{
    {
        auto window = kit::Window::create({ 0, 0, 10, 10 });
        kit::Application::shared().setMainWindow(window.get());
        EXPECT_EQ(kit::Application::shared().mainWindow(), window.get());
    }
    EXPECT_EQ(kit::Application::shared().mainWindow(), nullptr);
}

} // namespace
