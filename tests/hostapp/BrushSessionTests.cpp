// Brush and eraser strokes made in scripted sessions: bands of the brush's radius along the
// drag, one undo step a stroke, the modes, and the cursor saved as an image.
#include "kit/Image.h"
#include "tests/hostapp/SessionFixture.h"

#include <cmath>
#include <vector>

namespace {

// The 1200 x 900 window shows the whole 1000 x 800 canvas at zoom 1: window (x, y) is canvas
// (x - 100, 850 - y). The bar's brush and erase buttons are at x 179 and 212, 33 wide, and the
// brush panel's Add button at 305.
constexpr const char* kStart = "run\nwait 1.1\n";
constexpr const char* kBrushAdd = "click 194 879\nclick 320 879\n";
constexpr const char* kEraseAdd = "click 227 879\nclick 320 879\n";
// A rectangle over canvas x 100 to 499 and rows 200 to 399.
constexpr const char* kRectangle = "down 200 650\ndrag 600 450\nup 600 450\n";

class BrushSession : public SessionFixture {
protected:
    void SetUp() override
    {
        SessionFixture::SetUp();
        // The packages as the build ships them; the test program is not inside the tree.
        runner->document().setBrushDirectory(builtTreeFolder() / "Quillmark.app/Contents/Resources/Brushes");
    }
    void runOk(const std::string& text)
    {
        std::string error;
        ASSERT_TRUE(run(text, error)) << error;
    }
    void runOkAndRead(const std::string& text)
    {
        runOk(text);
        mask = runner->document().maskAlpha();
    }
    int at(int x, int y) const { return mask.at(std::size_t(y) * 1000 + std::size_t(x)); }
    /// The rows of canvas column x whose alpha passes the test.
    template <typename Test> int column(int x, Test test) const
    {
        int count = 0;
        for (int y = 0; y < 800; ++y)
            count += test(at(x, y)) ? 1 : 0;
        return count;
    }
    std::size_t selected() const
    {
        std::size_t n = 0;
        for (std::uint8_t a : runner->document().maskAlpha())
            n += a != 0;
        return n;
    }

    std::vector<std::uint8_t> mask;
};

TEST_F(BrushSession, AFastHorizontalDragLeavesAnEvenBandOfThePensRadiusAndUndoesWhole)
{
    // Events 50 points apart along canvas row 450, from x 100 to 600.
    std::string drag = std::string(kStart) + kBrushAdd + "down 200 400\n";
    for (int x = 250; x <= 700; x += 50)
        drag += "drag " + std::to_string(x) + " 400\n";
    runOkAndRead(drag + "up 700 400\n");
    // Radius 2.5: e^(2.5 / 1.01) = 11.9 pixels, fully covered within 0.6 of that.
    const double radius = std::exp(2.5 / 1.01);
    double least = 1e9, most = 0;
    for (int x = 110; x <= 590; ++x) {
        const int touched = column(x, [](int a) { return a > 0; });
        const int full = column(x, [](int a) { return a == 255; });
        ASSERT_NEAR(touched, 2 * radius, 1.5) << x;
        ASSERT_NEAR(full, 2 * 0.6 * radius, 1.5) << x;
        double sum = 0;
        for (int y = 430; y < 470; ++y)
            sum += at(x, y);
        least = std::min(least, sum);
        most = std::max(most, sum);
    }
    // No beads where the dabs fall: what is left is the sagitta of the dab spacing at the edge,
    // under a quarter of a pixel on each side.
    EXPECT_LT(most - least, 0.02 * most);
    EXPECT_EQ(column(400, [](int a) { return a > 0; }), column(300, [](int a) { return a > 0; }));
    EXPECT_EQ(at(100 - 12, 450), 0); // round ends of the radius, nothing beyond
    EXPECT_GT(at(100 - 6, 450), 200);

    runOk("undo\n");
    EXPECT_EQ(selected(), 0u);
    runOk("redo\n");
    EXPECT_GT(selected(), 500u * 20);
}

TEST_F(BrushSession, AnEraserDragInAddModeCutsABandOfItsRadiusOutOfARectangle)
{
    runOkAndRead(std::string(kStart) + kRectangle + kEraseAdd
        + "down 400 700\ndrag 400 600\ndrag 400 500\ndrag 400 400\nup 400 400\n");
    // Radius 2.5: e^(2.5 / 0.85) = 18.9 pixels, fully erased within 0.6 of that.
    const double radius = std::exp(2.5 / 0.85);
    int cleared = 0, partly = 0;
    for (int x = 250; x < 350; ++x) {
        cleared += at(x, 300) == 0;
        partly += at(x, 300) != 255;
    }
    EXPECT_NEAR(cleared, 2 * 0.6 * radius, 1.5);
    EXPECT_NEAR(partly, 2 * radius, 1.5);
    EXPECT_EQ(at(150, 300), 255); // the rest of the rectangle stays
    EXPECT_EQ(at(450, 300), 255);
    runOkAndRead("undo\n");
    EXPECT_EQ(at(300, 300), 255); // the cut undoes alone; the rectangle stays
}

TEST_F(BrushSession, InNewModeTheEraserStartsFromAnEmptySelection)
{
    runOk(std::string(kStart) + kRectangle + "click 227 879\ndown 400 700\ndrag 400 400\nup 400 400\n");
    EXPECT_EQ(selected(), 0u);
}

TEST_F(BrushSession, TheCursorIsSavedAsTheBrushFootprint)
{
    std::string error;
    EXPECT_FALSE(run(std::string(kStart) + "save-cursor early.png\n", error));
    EXPECT_EQ(error, "t.session:3: save-cursor: the current cursor, the arrow, has no image");
    runOk("click 194 879\nmove 600 400\nsave-cursor brush.png\nviewsize 2000 1600\nmove 610 400\nsave-cursor "
          "zoomed.png\n");
    auto brush = kit::Image::imageWithContentsOfFile((dir.path() / "brush.png").string());
    auto zoomed = kit::Image::imageWithContentsOfFile((dir.path() / "zoomed.png").string());
    ASSERT_TRUE(brush && zoomed);
    EXPECT_EQ(brush->pixelsWide(), 26); // 2 e^(2.5 / 1.01) + 2 = 25.77 points
    EXPECT_EQ(zoomed->pixelsWide(), 50);
}

} // namespace
