// The on-screen window: the window system's events reach the plug-in the right way up.
#include "hostapp/InteractiveWindow.h"
#include "hostapp/PluginHost.h"
#include "hostapp/SessionRunner.h"
#include "kit/RunLoop.h"
#include "tests/support/BuiltPlugin.h"

#include <gtest/gtest.h>

#include <SDL.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

void push(SDL_Event e) { SDL_PushEvent(&e); }

void pushButton(Uint32 type, int x, int y)
{
    SDL_Event e {};
    e.type = type;
    e.button.button = SDL_BUTTON_LEFT;
    e.button.clicks = 1;
    e.button.x = x;
    e.button.y = y;
    push(e);
}

void pushMotion(int x, int y)
{
    SDL_Event e {};
    e.type = SDL_MOUSEMOTION;
    e.motion.x = x;
    e.motion.y = y;
    push(e);
}

void pushKey(SDL_Keycode key, Uint16 mod)
{
    SDL_Event e {};
    e.type = SDL_KEYDOWN;
    e.key.keysym.sym = key;
    e.key.keysym.mod = mod;
    push(e);
}

// Lets the overlay come on screen and the bar make its first switch (wall clock).
void waitForTheOverlay()
{
    const double until = kit::RunLoop::main().now() + 1.2;
    while (kit::RunLoop::main().now() < until) {
        kit::RunLoop::main().runDue();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void pushQuit()
{
    SDL_Event quit {};
    quit.type = SDL_QUIT;
    push(quit);
}

TEST(InteractiveWindow, ADragInTheWindowSelectsAndCtrlZUndoes)
{
    // A window system without a screen, so the test runs anywhere.
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    std::string error;
    auto plugin = loadBuiltPlugin(error);
    ASSERT_TRUE(plugin) << error;

    std::size_t recorded = 0;
    float x = -1, y = -1;
    int selectedAfterUndo = -1;
    std::size_t redoSteps = 0;
    hostapp::InteractiveWindow window(plugin->table());
    const bool ran = window.run(
        error,
        [](hostapp::SessionRunner&) {
            waitForTheOverlay();
            // Rows run down from the top of the 900-point window.
            pushButton(SDL_MOUSEBUTTONDOWN, 200, 600);
            pushMotion(300, 500);
            pushButton(SDL_MOUSEBUTTONUP, 300, 500);
            pushKey(SDLK_z, KMOD_LCTRL); // the host's undo
            pushQuit();
        },
        [&](hostapp::SessionRunner& runner) {
            auto& doc = runner.document();
            recorded = doc.actionLog().size();
            if (recorded) {
                x = doc.actionLog().records()[0].param3;
                y = doc.actionLog().records()[0].param4;
            }
            selectedAfterUndo = doc.maskAlpha()[500 * 1000 + 150];
            redoSteps = doc.redoDepth();
        });
    ASSERT_TRUE(ran) << error;
    EXPECT_EQ(recorded, 1u);
    EXPECT_EQ(x, 100); // the box (200, 300)-(300, 400) in the kit's y-up points
    EXPECT_EQ(y, 450);
    EXPECT_EQ(selectedAfterUndo, 0);
    EXPECT_EQ(redoSteps, 1u);
}

TEST(InteractiveWindow, TheLassosRubberBandFollowsThePointerBetweenClicks)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    std::string error;
    auto plugin = loadBuiltPlugin(error);
    ASSERT_TRUE(plugin) << error;

    int dashPixels = -1, offLinePixels = -1;
    hostapp::InteractiveWindow window(plugin->table());
    const bool ran = window.run(
        error,
        [](hostapp::SessionRunner&) {
            waitForTheOverlay();
            pushButton(SDL_MOUSEBUTTONDOWN, 161, 21); // the lasso's button in the bar
            pushButton(SDL_MOUSEBUTTONUP, 161, 21);
            pushButton(SDL_MOUSEBUTTONDOWN, 300, 600);
            pushButton(SDL_MOUSEBUTTONUP, 300, 600);
            pushMotion(500, 600);
            pushQuit();
        },
        [&](hostapp::SessionRunner& runner) {
            // What the window shows: a dashed line from the click to the pointer, black spread
            // over the two pixel rows that the line at y 300 runs between.
            auto picture = runner.canvas().window().renderImage();
            if (!picture)
                return;
            auto dark
                = [&](int x, int y) { return picture->rgba()[(std::size_t(y) * 1200 + std::size_t(x)) * 4] < 200; };
            dashPixels = offLinePixels = 0;
            for (int x = 305; x < 495; ++x) {
                dashPixels += dark(x, 600) || dark(x, 599);
                offLinePixels += dark(x, 590) || dark(x, 610);
            }
        });
    ASSERT_TRUE(ran) << error;
    EXPECT_GT(dashPixels, 190 * 4 / 7 - 10); // 4 points drawn in every 7
    EXPECT_LT(dashPixels, 190);
    EXPECT_EQ(offLinePixels, 0);
}

} // namespace
