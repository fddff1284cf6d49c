// Filters applied to an opened picture through the selection in scripted sessions, undone,
// replayed from the log, chosen from the host's pop-up, and refused when the script is wrong.
#include "tests/hostapp/SessionFixture.h"

#include "kit/Image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

double decode(double c)
{
    c /= 255;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double encode(double linear)
{
    linear = std::clamp(linear, 0.0, 1.0);
    return 255 * (linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055);
}

constexpr int kWidth = 200;
constexpr int kHeight = 160;

using Pixels = std::vector<std::uint8_t>;

/// An opaque picture whose pixel (x, y) has the colour colour(x, y).
Pixels picture(const std::function<std::array<std::uint8_t, 3>(int, int)>& colour)
{
    Pixels rgba(std::size_t(kWidth) * kHeight * 4, 255);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const auto c = colour(x, y);
            std::copy(c.begin(), c.end(), rgba.begin() + (std::ptrdiff_t(y) * kWidth + x) * 4);
        }
    return rgba;
}

Pixels colourful()
{
    return picture([](int x, int y) {
        return std::array<std::uint8_t, 3> { std::uint8_t(x), std::uint8_t(y + 40), std::uint8_t((x * 3 + y) % 256) };
    });
}

/// The colour filter's result in double: linear light, inverted, back to sRGB.
double inverted(std::uint8_t c) { return encode(1 - decode(c)); }

class FilterSessionTest : public SessionFixture {
protected:
    /// Opens the picture with the plug-in on screen and its bar ready.
    void openPicture(const Pixels& rgba)
    {
        ASSERT_TRUE(
            kit::Image::imageWithRGBA(kWidth, kHeight, rgba.data())->writePNG((dir.path() / "in.png").string()));
        expectRuns("run\nwait 1.1\nopen in.png\n");
    }
    void expectRuns(const std::string& text)
    {
        std::string error;
        EXPECT_TRUE(run(text, error)) << error;
    }
    std::string failure(const std::string& text)
    {
        std::string error;
        EXPECT_FALSE(run(text, error));
        return error;
    }
    Pixels paint() { return runner->document().paintPixels(); }
    static std::uint8_t at(const Pixels& rgba, int x, int y, int c)
    {
        return rgba[(std::size_t(y) * kWidth + x) * 4 + c];
    }
};

// At zoom one the 1200 x 900 window shows canvas pixel (x, y) at window point (100 + x, 850 - y):
// this drag selects canvas columns 50 to 149 and rows 40 to 119, exactly the box dragged over.
const char* kBoxDrag = "down 150 810\ndrag 250 730\nup 250 730\n";

TEST_F(FilterSessionTest, AnInvertChangesOnlyTheSelectionAndUndoesInOneStep)
{
    const Pixels original = colourful();
    openPicture(original);
    EXPECT_EQ(runner->document().canvasWidth(), kWidth);
    EXPECT_EQ(runner->document().canvasHeight(), kHeight);
    EXPECT_EQ(paint(), original);
    expectRuns(std::string(kBoxDrag) + "filter CIColorInvert\nsave-picture out.png\n");
    const Pixels filtered = paint();
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const bool inside = x >= 50 && x < 150 && y >= 40 && y < 120;
            for (int c = 0; c < 3; ++c) {
                const double want = inside ? inverted(at(original, x, y, c)) : at(original, x, y, c);
                ASSERT_NEAR(at(filtered, x, y, c), want, 1) << x << "," << y << " channel " << c;
            }
            ASSERT_EQ(at(filtered, x, y, 3), 255);
        }
    auto saved = kit::Image::imageWithContentsOfFile((dir.path() / "out.png").string());
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->rgba(), filtered);
    expectRuns("undo\n");
    EXPECT_EQ(paint(), original);
    EXPECT_EQ(runner->document().maskAlpha()[std::size_t(60) * kWidth + 60], 255) << "the selection stays";
}

TEST_F(FilterSessionTest, AGaussianBlurMeetsABlackAndWhiteEdgeHalfWayInLinearLightAndKeepsItsBorders)
{
    openPicture(picture([](int x, int) {
        const std::uint8_t v = x < kWidth / 2 ? 0 : 255;
        return std::array<std::uint8_t, 3> { v, v, v };
    }));
    expectRuns("filter CIGaussianBlur inputRadius=4\n");
    // The reference: the exact normalised Gaussian across columns, the picture's edges repeated.
    const double sigma = 4;
    std::vector<double> linear(kWidth, 0);
    double total = 0;
    for (int n = -40; n <= 40; ++n)
        total += std::exp(-n * n / (2 * sigma * sigma));
    for (int x = 0; x < kWidth; ++x)
        for (int n = -40; n <= 40; ++n)
            linear[std::size_t(x)]
                += std::exp(-n * n / (2 * sigma * sigma)) / total * (std::clamp(x + n, 0, kWidth - 1) >= kWidth / 2);
    const Pixels blurred = paint();
    for (int y = 0; y < kHeight; ++y) // every row alike: no fading at the top or bottom
        for (int x = 0; x < kWidth; ++x)
            ASSERT_NEAR(at(blurred, x, y, 1), encode(linear[std::size_t(x)]), 1) << x << "," << y;
    // Half way in linear light is 188 in sRGB, not 128: the two pixels at the edge straddle it.
    EXPECT_LT(at(blurred, 99, 80, 0), 188);
    EXPECT_GT(at(blurred, 100, 80, 0), 188);
    EXPECT_GT(at(blurred, 99, 80, 0), 160);
    EXPECT_EQ(at(blurred, 0, 0, 0), 0);
    EXPECT_EQ(at(blurred, kWidth - 1, kHeight - 1, 0), 255);
}

TEST_F(FilterSessionTest, AFeatheredSelectionBlendsTheResultByItsAlpha)
{
    const Pixels original = colourful();
    openPicture(original);
    // A feather of 6 typed into the marquee panel, then the box.
    expectRuns(std::string("click 470 876\ntype 6\nkey return\n") + kBoxDrag + "filter CIColorInvert\n");
    const Pixels mask = runner->document().maskAlpha();
    const Pixels filtered = paint();
    int partial = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const double a = mask[std::size_t(y) * kWidth + x] / 255.0;
            partial += a > 0.1 && a < 0.9;
            for (int c = 0; c < 3; ++c) {
                const double old = at(original, x, y, c);
                ASSERT_NEAR(at(filtered, x, y, c), old + (inverted(at(original, x, y, c)) - old) * a, 2)
                    << x << "," << y << " alpha " << a;
            }
        }
    EXPECT_GT(partial, 500) << "the feather leaves a wide band of partial selection";
}

TEST_F(FilterSessionTest, ReplayingTheLogGivesTheSamePictureBitForBit)
{
    openPicture(colourful());
    expectRuns(std::string("click 470 876\ntype 3.5\nkey return\n") + kBoxDrag
        + "filter CIGaussianBlur inputRadius=2.75\nfilter CIHueAdjust inputAngle=1.1\nsave-log log.jsonl\n");
    const Pixels original = paint();

    std::ostringstream report;
    hostapp::SessionRunner fresh(plugin->table(), dir.path(), report);
    std::string error;
    auto script = hostapp::SessionScript::parse("run\nwait 1.1\nreplay log.jsonl\n", "r", error);
    ASSERT_TRUE(script && fresh.run(*script, error)) << error;
    EXPECT_EQ(fresh.document().canvasWidth(), kWidth);
    EXPECT_EQ(fresh.document().paintPixels(), original);
    EXPECT_NE(fresh.document().paintPixels(), colourful());
    EXPECT_EQ(fresh.document().actionLog().toJsonLines(), runner->document().actionLog().toJsonLines());
}

TEST_F(FilterSessionTest, ThePopUpListsTheCatalogueAndTheSliderAppliesAtItsRelease)
{
    const Pixels original = colourful();
    openPicture(original);
    hostapp::FilterControls& filters = *runner->canvas().canvasView().filterControls();
    ASSERT_EQ(filters.popUp().numberOfItems(), 22);
    EXPECT_EQ(filters.popUp().itemTitleAtIndex(2), "Gaussian Blur");
    // A click on the pop-up passes through the overlay and opens its menu.
    expectRuns("click 200 24\n");
    ASSERT_TRUE(filters.popUp().isMenuOpen());
    filters.popUp().menuDidPick(2);
    EXPECT_EQ(filters.slider().minValue(), 0);
    EXPECT_EQ(filters.slider().maxValue(), 20);
    EXPECT_EQ(filters.slider().doubleValue(), 10);
    EXPECT_EQ(paint(), original) << "choosing a filter with a number does not apply it yet";
    // A press and release at the slider's right end: the widest blur, once, at the release.
    const kit::Rect slider = filters.slider().frame();
    const std::string end = std::to_string(int(slider.maxX()) - 1) + " " + std::to_string(int(slider.y() + 14));
    expectRuns("down " + end + "\nup " + end + "\n");
    EXPECT_GT(filters.slider().doubleValue(), 19);
    EXPECT_NE(paint(), original);
    const auto& records = runner->document().actionLog().records();
    ASSERT_EQ(records.size(), 2u); // open, filter
    EXPECT_EQ(records.back().text.rfind("CIGaussianBlur inputRadius=", 0), 0u) << records.back().text;
    expectRuns("undo\n");
    EXPECT_EQ(paint(), original);
    // A filter without a number acts as soon as it is chosen.
    filters.popUp().menuDidPick(10);
    EXPECT_FALSE(filters.slider().isEnabled());
    EXPECT_NEAR(at(paint(), 10, 10, 0), inverted(at(original, 10, 10, 0)), 1);
}

TEST_F(FilterSessionTest, BadFiltersAndPicturesStopTheScriptNamingTheCulprit)
{
    EXPECT_EQ(failure("filter CIFrobnicate\n"), "t.session:1: filter: unknown filter 'CIFrobnicate'");
    EXPECT_EQ(failure("run\nfilter CIGaussianBlur inputSigma=3\n"),
        "t.session:2: filter: CIGaussianBlur has no input 'inputSigma'");
    EXPECT_EQ(failure("filter CIGaussianBlur inputRadius=nan\n"),
        "t.session:1: filter: 'inputRadius=nan': inputRadius must be a finite number within +-100000");
    EXPECT_EQ(failure("filter CIBumpDistortion inputCenter=4\n"),
        "t.session:1: filter: 'inputCenter=4': inputCenter takes a point X,Y");
    EXPECT_EQ(failure("filter CIBumpDistortion inputScale=1,2\n"),
        "t.session:1: filter: 'inputScale=1,2': inputScale takes one number");
    EXPECT_EQ(failure("filter CIGaussianBlur inputRadius=1 inputRadius=2\n"),
        "t.session:1: filter: 'inputRadius' is set twice");
    EXPECT_EQ(failure("filter\n"), "t.session:1: usage: filter NAME [KEY=VALUE ...]");
    // A file that cannot be used is named with the reason.
    dir.write("text.png", "not a picture\n");
    dir.write("short.png", "\x89PNG");
    dir.write("broken.png", std::string("\x89PNG\r\n\x1a\n", 8) + "garbage after the signature");
    const std::pair<const char*, const char*> unusable[] = {
        { "nothing-here.png", "there is no such file" },
        { "text.png", "it is not a PNG file" },
        { "short.png", "it is too short for a PNG" },
        { "broken.png", "its PNG data cannot be decoded" },
        { ".", "it is not a file" },
    };
    for (const auto& [name, reason] : unusable) {
        const std::string message = failure("open " + std::string(name) + "\n");
        EXPECT_EQ(message.rfind("t.session:1: open: cannot open the picture ", 0), 0u) << message;
        EXPECT_NE(message.find(std::string(name) + ": " + reason), std::string::npos) << message;
    }
    EXPECT_EQ(runner->document().actionLog().size(), 0u);
    // A host record that no longer makes sense stops the replay, naming the record.
    dir.write("bad.jsonl",
        R"({"kind":201,"param0":0,"param1":0,"param2":0,"param3":0,"param4":0,"param5":0,)"
        R"("param6":0,"param7":0,"param8":0,"text":"CINope","name":"Host"})"
        "\n");
    const std::string replayed = failure("run\nreplay bad.jsonl\n");
    EXPECT_NE(replayed.find("bad.jsonl: record 1: unknown filter 'CINope'"), std::string::npos) << replayed;
}

} // namespace
