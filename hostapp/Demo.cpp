// Demo: a rectangle and an ellipse selected with feathers typed into the option bar, the window
// seen mid-drag and with each panel, and the action log replayed onto a second document.
#include "hostapp/Demo.h"

#include "hostapp/SessionRunner.h"
#include "kit/Image.h"

namespace hostapp {

std::string_view demoScript()
{
    // The bar lies along the top of the 1200 x 900 window (y 850 to 903); its tool buttons
    // are at x 80 (rectangle), 113 (ellipse), 146 (lasso) and 179 (brush); the panel starts at
    // x 262, with its New and Add buttons at 272 and 305 and the feather field at 422 to 522.
    return R"(window 1200 900
canvas 1000 800
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
click 194 879
save-window demo-brush-panel.png
save-mask demo-mask.png
save-log demo-log.jsonl
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
save-window demo-replayed-window.png
)";
}

namespace {

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
    if (!runScript(table, demoScript(), "demo", outDir, report, error) ||
        !runScript(table, demoReplayScript(), "demo-replay", outDir, report, error))
        return false;
    auto original = kit::Image::imageWithContentsOfFile((outDir / "demo-mask.png").string());
    auto replayed = kit::Image::imageWithContentsOfFile((outDir / "demo-replayed-mask.png").string());
    if (!original || !replayed || original->rgba() != replayed->rgba()) {
        error = "demo: the replayed mask differs from the original";
        return false;
    }
    report << "the replayed mask equals the original pixel for pixel\n";
    return true;
}

} // namespace hostapp
