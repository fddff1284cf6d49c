// Event delivery: presses, drags, keys, the responder chain, tracking areas, cursors and drags.
#include "kit/Application.h"
#include "kit/Cursor.h"
#include "kit/Window.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kit::Event;
using kit::EventType;
using kit::Point;
using kit::Rect;

/// A view that writes down what reaches it; with `take` false it passes everything on.
class Recorder : public kit::View {
    KIT_MAKEABLE
public:
    std::vector<std::string>* log = nullptr;
    std::string name;
    bool take = true;
    bool acceptsFirst = false;
    kit::DragOperation answer = kit::DragOperationNone;

    bool acceptsFirstResponder() const override { return acceptsFirst; }
    void mouseDown(const Event& e) override
    {
        if (passOn("down"))
            kit::View::mouseDown(e);
    }
    void mouseDragged(const Event& e) override
    {
        if (passOn("drag"))
            kit::View::mouseDragged(e);
    }
    void mouseUp(const Event& e) override
    {
        if (passOn("up"))
            kit::View::mouseUp(e);
    }
    void rightMouseDown(const Event& e) override
    {
        if (passOn("rightdown"))
            kit::View::rightMouseDown(e);
    }
    void mouseMoved(const Event& e) override
    {
        if (passOn("moved"))
            kit::View::mouseMoved(e);
    }
    void mouseEntered(const Event& e) override
    {
        if (passOn("entered"))
            kit::View::mouseEntered(e);
    }
    void mouseExited(const Event& e) override
    {
        if (passOn("exited"))
            kit::View::mouseExited(e);
    }
    void keyDown(const Event& e) override
    {
        if (passOn("key:" + e.characters()))
            kit::View::keyDown(e);
    }
    void cursorUpdate(const Event& e) override
    {
        if (passOn("cursor"))
            kit::View::cursorUpdate(e);
    }
    kit::DragOperation draggingEntered(const kit::DraggingInfo&) override
    {
        log->push_back(name + ":dragEntered");
        return answer;
    }
    kit::DragOperation draggingUpdated(const kit::DraggingInfo&) override
    {
        log->push_back(name + ":dragUpdated");
        return answer;
    }
    void draggingExited(const kit::DraggingInfo&) override { log->push_back(name + ":dragExited"); }
    void draggingEnded(const kit::DraggingInfo&) override { log->push_back(name + ":dragEnded"); }
    bool performDragOperation(const kit::DraggingInfo& info) override
    {
        log->push_back(name + ":drop " + info.filenames.at(0));
        return true;
    }

private:
    explicit Recorder(const Rect& frame) : kit::View(frame) {}
    /// Notes the event; true when it is to be passed on.
    bool passOn(const std::string& what)
    {
        log->push_back(name + ":" + what);
        return !take;
    }
};

class EventTest : public testing::Test {
protected:
    kit::RefPtr<Recorder> recorder(const std::string& name, Rect frame)
    {
        auto r = kit::make<Recorder>(frame);
        r->log = &log;
        r->name = name;
        return r;
    }
    void send(EventType type, float x, float y) { window->sendEvent(Event::mouse(type, { x, y })); }

    std::vector<std::string> log;
    kit::RefPtr<kit::Window> window = kit::Window::create({ 0, 0, 400, 300 });
    kit::RefPtr<Recorder> content = recorder("content", { 0, 0, 400, 300 });
    void SetUp() override { window->setContentView(content.get()); }
};

TEST_F(EventTest, APressGoesToTheDeepestVisibleViewAndItsDragsFollowIt)
{
    auto panel = recorder("panel", { 100, 100, 200, 100 });
    auto button = recorder("button", { 10, 10, 50, 30 });
    auto hiddenTop = recorder("hidden", { 0, 0, 400, 300 });
    hiddenTop->setHidden(true);
    panel->addSubview(button.get());
    content->addSubview(panel.get());
    content->addSubview(hiddenTop.get());

    send(EventType::LeftMouseDown, 120, 120); // inside the button
    send(EventType::LeftMouseDragged, 390, 290); // far outside it
    send(EventType::LeftMouseUp, 5, 5);
    send(EventType::LeftMouseDown, 250, 150); // on the panel only
    EXPECT_EQ(log, (std::vector<std::string> { "button:down", "button:drag", "button:up", "panel:down" }));
}

TEST_F(EventTest, DragsAndReleasesFollowOnlyAPressOfTheSameButton)
{
    auto tool = recorder("tool", { 0, 0, 400, 300 });
    content->addSubview(tool.get());
    send(EventType::RightMouseDown, 50, 50);
    send(EventType::LeftMouseDragged, 60, 60); // a left drag after a right press: nobody's
    send(EventType::LeftMouseUp, 60, 60);
    send(EventType::LeftMouseDown, 50, 50);
    send(EventType::RightMouseUp, 50, 50); // a right release during a left press: nobody's
    send(EventType::LeftMouseUp, 70, 70);
    EXPECT_EQ(log, (std::vector<std::string> { "tool:rightdown", "tool:down", "tool:up" }));
}

TEST_F(EventTest, HidingTheFirstResponderGivesTheKeysBackToTheWindow)
{
    auto overlay = recorder("overlay", { 0, 0, 400, 300 });
    auto field = recorder("field", { 0, 0, 100, 100 });
    field->acceptsFirst = true;
    overlay->addSubview(field.get());
    content->addSubview(overlay.get());
    send(EventType::LeftMouseDown, 50, 50);
    ASSERT_EQ(window->firstResponder(), field.get());
    overlay->setHidden(true);
    EXPECT_EQ(window->firstResponder(), window.get());
    window->sendEvent(Event::key(EventType::KeyDown, "x"));
    EXPECT_EQ(log, (std::vector<std::string> { "field:down" }));
}

TEST_F(EventTest, UnhandledEventsRunUpTheChainToTheContentView)
{
    auto overlay = recorder("overlay", { 0, 0, 400, 300 });
    auto tool = recorder("tool", { 0, 0, 400, 250 });
    overlay->take = false;
    tool->take = false;
    overlay->addSubview(tool.get());
    content->addSubview(overlay.get());
    send(EventType::LeftMouseDown, 50, 50);
    send(EventType::LeftMouseUp, 50, 50);
    EXPECT_EQ(log,
        (std::vector<std::string> {
            "tool:down", "overlay:down", "content:down", "tool:up", "overlay:up", "content:up" }));
    // Past the content view the window and the application drop it quietly.
    content->take = false;
    log.clear();
    send(EventType::RightMouseDown, 50, 50);
    EXPECT_EQ(log, (std::vector<std::string> { "tool:rightdown", "overlay:rightdown", "content:rightdown" }));
}

TEST_F(EventTest, KeysGoToTheViewThatTookThePressIfItAcceptsFirstResponder)
{
    auto field = recorder("field", { 0, 0, 100, 100 });
    auto label = recorder("label", { 200, 0, 100, 100 });
    field->acceptsFirst = true;
    content->addSubview(field.get());
    content->addSubview(label.get());

    window->sendEvent(Event::key(EventType::KeyDown, "a")); // no first responder yet: nobody
    send(EventType::LeftMouseDown, 50, 50);
    window->sendEvent(Event::key(EventType::KeyDown, "b"));
    send(EventType::LeftMouseDown, 250, 50); // the label refuses: the field keeps the keys
    window->sendEvent(Event::key(EventType::KeyDown, "c"));
    EXPECT_EQ(log, (std::vector<std::string> { "field:down", "field:key:b", "label:down", "field:key:c" }));

    field->removeFromSuperview(); // a view that leaves the window stops being first responder
    EXPECT_EQ(window->firstResponder(), window.get());
}

TEST_F(EventTest, TrackingAreasReportEnteringLeavingAndMovingToTheirOwner)
{
    auto owner = recorder("owner", {});
    // 0x23: entered and exited, moved, active in the key window.
    auto area = kit::TrackingArea::create({ 100, 100, 50, 50 }, 0x23, owner.get());
    content->addTrackingArea(area.get());
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 10, 10 }));
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 120, 120 }));
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 125, 125 }));
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 200, 200 }));
    EXPECT_EQ(log, (std::vector<std::string> { "owner:entered", "owner:moved", "owner:moved", "owner:exited" }));
}

TEST_F(EventTest, OnlyAreasEnabledDuringDragFollowADrag)
{
    auto dragAware = recorder("aware", {});
    auto plain = recorder("plain", {});
    content->addTrackingArea(kit::TrackingArea::create({ 100, 100, 50, 50 }, 0x441, dragAware.get()).get());
    content->addTrackingArea(kit::TrackingArea::create({ 100, 100, 50, 50 }, 0x21, plain.get()).get());
    send(EventType::LeftMouseDown, 10, 10);
    send(EventType::LeftMouseDragged, 120, 120);
    EXPECT_EQ(log, (std::vector<std::string> { "content:down", "content:drag", "aware:entered" }));
    send(EventType::LeftMouseUp, 120, 120);
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 121, 121 }));
    EXPECT_EQ(log.back(), "plain:entered");
}

TEST_F(EventTest, AreaOptionsDecideWhenAnAreaIsActive)
{
    auto owner = recorder("owner", { 0, 0, 400, 300 });
    owner->acceptsFirst = true;
    content->addSubview(owner.get());
    // No activity option: never active. First-responder option: only while the owner is.
    owner->addTrackingArea(kit::TrackingArea::create({ 0, 0, 50, 50 }, 0x01, owner.get()).get());
    owner->addTrackingArea(kit::TrackingArea::create({ 0, 0, 50, 50 }, 0x11, owner.get()).get());
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 10, 10 }));
    EXPECT_TRUE(log.empty());
    window->makeFirstResponder(owner.get());
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 300, 200 }));
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 10, 10 }));
    EXPECT_EQ(log, (std::vector<std::string> { "owner:entered" }));
    // A hidden view's areas are silent.
    owner->setHidden(true);
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 300, 200 }));
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(EventTest, CursorUpdatesComeOnEntering)
{
    auto owner = recorder("owner", {});
    content->addTrackingArea(kit::TrackingArea::create({ 0, 0, 50, 50 }, 0x44, owner.get()).get());
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 10, 10 }));
    window->sendEvent(Event::mouse(EventType::MouseMoved, { 11, 10 }));
    EXPECT_EQ(log, (std::vector<std::string> { "owner:cursor" }));
}

TEST(PointTests, EdgesFollowTheOriginalPlatform)
{
    const Rect r { 10, 20, 30, 40 }; // x 10..40, y 20..60
    EXPECT_TRUE(kit::PointInRect({ 10, 20 }, r));
    EXPECT_FALSE(kit::PointInRect({ 40, 30 }, r));
    EXPECT_FALSE(kit::PointInRect({ 20, 60 }, r));
    // Unflipped: the top edge is in, the bottom edge out.
    EXPECT_TRUE(kit::MouseInRect({ 20, 60 }, r, false));
    EXPECT_FALSE(kit::MouseInRect({ 20, 20 }, r, false));
    EXPECT_TRUE(kit::MouseInRect({ 20, 20 }, r, true));
    EXPECT_FALSE(kit::MouseInRect({ 20, 60 }, r, true));
    EXPECT_TRUE(kit::MouseInRect({ 10, 30 }, r, false));
    EXPECT_FALSE(kit::MouseInRect({ 40, 30 }, r, false));
}

TEST(Cursors, TheLastOneSetIsCurrent)
{
    kit::Cursor::crosshairCursor()->set();
    EXPECT_EQ(kit::Cursor::currentCursor()->name(), "crosshair");
    auto custom = kit::Cursor::create(nullptr, { 3, 4 });
    custom->set();
    EXPECT_EQ(kit::Cursor::currentCursor(), custom.get());
    EXPECT_EQ(custom->hotSpot(), (Point { 3, 4 }));
    kit::Cursor::arrowCursor()->set();
    EXPECT_EQ(kit::Cursor::currentCursor()->name(), "arrow");
}

TEST_F(EventTest, DragsReachTheDeepestViewRegisteredForFileNames)
{
    auto target = recorder("target", { 0, 0, 200, 300 });
    auto unregistered = recorder("plain", { 0, 0, 100, 100 });
    target->registerForDraggedTypes({ kit::FilenamesPboardType });
    target->addSubview(unregistered.get());
    content->addSubview(target.get());
    target->answer = kit::DragOperationCopy;

    kit::DraggingInfo info { { "/tmp/picture.png" }, { 50, 50 }, kit::DragOperationEvery };
    EXPECT_EQ(window->dragMoved(info), kit::DragOperationCopy); // over the plain child: its parent takes it
    info.location = { 60, 60 };
    EXPECT_EQ(window->dragMoved(info), kit::DragOperationCopy);
    info.location = { 300, 60 }; // off the target: no destination
    EXPECT_EQ(window->dragMoved(info), kit::DragOperationNone);
    info.location = { 150, 60 };
    EXPECT_TRUE(window->dragDropped(info));
    EXPECT_EQ(log,
        (std::vector<std::string> { "target:dragEntered", "target:dragUpdated", "target:dragExited",
            "target:dragEntered", "target:drop /tmp/picture.png", "target:dragEnded" }));
}

} // namespace
