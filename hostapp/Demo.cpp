// Demo: a rectangle and an ellipse selected with feathers typed into the option bar and a lasso
// triangle added, the window seen mid-drag, mid-polygon and with each panel, a picture blurred
// through the selection, a brush and an eraser stroke, and the action log replayed onto a
// second document.
#include "hostapp/Demo.h"

#include "hostapp/SessionRunner.h"
#include "kit/Image.h"

#include <vector>

namespace hostapp {

std::string_view demoScript()
{
    // The bar lies along the top of the 1200 x 900 window (y 850 to 903); its tool buttons
    // are at x 80 (rectangle), 113 (ellipse), 146 (lasso) and 179 (brush); the panel starts at
    // x 262, with its New and Add buttons at 272 and 305 and the feather field at 422 to 522.
    return R"(window 1200 900
canvas 1000 800
open demo-picture.png
run
# The overlay shows half a second after the first run; the bar makes its first switch and
# the overlay mirrors the host's controls within a second.
wait 1.1
# A feather of 10 typed into the marquee panel.
click 470 876
type 10
key return
# A rectangle, seen mid-drag with its outline and size read-out.
down 200 300
drag 420 450
save-window demo-rectangle-drag.png
up 420 450
# The ellipse tool: a fresh panel, so the feather is typed again, and Add keeps the rectangle.
click 128 879
click 320 879
click 470 876
type 25
key return
down 520 220
drag 760 520
save-window demo-ellipse-drag.png
up 760 520
save-window demo-marquee-panel.png
# The lasso and brush panels.
click 161 879
save-window demo-lasso-panel.png
# The lasso, still in Add mode: two corners clicked, the rubber band seen following the
# pointer, and a double click closing a triangle that points down.
click 840 720
move 1080 720
click 1080 720
move 1010 580
save-window demo-lasso-drawing.png
move 960 480
doubleclick 960 480
wait 0.1
click 194 879
save-window demo-brush-panel.png
# The picture blurred through the feathered selection.
filter CIGaussianBlur inputRadius=8
save-picture demo-filtered-picture.png
save-window demo-filtered-window.png
save-mask demo-mask.png
save-log demo-log.jsonl
# The brush tool, still in Add mode, paints a wavy band across both shapes; its cursor is the
# brush's footprint. The eraser (tool button at 212) then cuts a band across it. Strokes are
# the host's own and are not logged, so they come after the log is saved.
move 640 560
save-cursor demo-brush-cursor.png
down 150 380
drag 300 420
drag 450 380
drag 600 420
drag 750 380
up 900 420
click 227 879
down 640 760
drag 640 600
drag 660 450
up 680 250
save-window demo-brush-strokes.png
save-mask demo-brush-mask.png
)";
}

std::string_view demoReplayScript()
{
    return R"(window 1200 900
canvas 1000 800
run
wait 1.1
replay demo-log.jsonl
save-mask demo-replayed-mask.png
save-picture demo-replayed-picture.png
save-window demo-replayed-window.png
)";
}

namespace {

/// Colour ramps under a checkerboard, so that a blur shows on every edge it softens.
bool writeDemoPicture(const std::filesystem::path& path, std::string& error)
{
    constexpr int kWidth = 1000;
    constexpr int kHeight = 800;
    constexpr int kSquare = 40;
    std::vector<std::uint8_t> rgba(std::size_t(kWidth) * kHeight * 4, 255);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            std::uint8_t* p = &rgba[(std::size_t(y) * kWidth + x) * 4];
            p[0] = std::uint8_t(x * 255 / (kWidth - 1));
            p[1] = std::uint8_t(y * 255 / (kHeight - 1));
            p[2] = (x / kSquare + y / kSquare) % 2 ? 230 : 40;
        }
    return kit::Image::imageWithRGBA(kWidth, kHeight, rgba.data())->writePNG(path.string(), &error);
}

/// Whether two PNG files hold the same pixels.
bool samePixels(const std::filesystem::path& a, const std::filesystem::path& b)
{
    auto first = kit::Image::imageWithContentsOfFile(a.string());
    auto second = kit::Image::imageWithContentsOfFile(b.string());
    return first && second && first->rgba() == second->rgba();
}

bool runScript(const PluginModule& table, std::string_view text, const char* name, const std::filesystem::path& outDir,
    std::ostream& report, std::string& error)
{
    auto script = SessionScript::parse(text, name, error);
    if (!script)
        return false;
    SessionRunner runner(table, outDir, report);
    return runner.run(*script, error);
}

} // namespace

bool runDemo(const PluginModule& table, const std::filesystem::path& outDir, std::ostream& report, std::string& error)
{
    if (!writeDemoPicture(outDir / "demo-picture.png", error)
        || !runScript(table, demoScript(), "demo", outDir, report, error)
        || !runScript(table, demoReplayScript(), "demo-replay", outDir, report, error))
        return false;
    if (!samePixels(outDir / "demo-mask.png", outDir / "demo-replayed-mask.png")) {
        error = "demo: the replayed mask differs from the original";
        return false;
    }
    report << "the replayed mask equals the original pixel for pixel\n";
    if (!samePixels(outDir / "demo-filtered-picture.png", outDir / "demo-replayed-picture.png")) {
        error = "demo: the replayed picture differs from the filtered one";
        return false;
    }
    report << "the replayed picture equals the filtered one pixel for pixel\n";
    return true;
}

} // namespace hostapp
