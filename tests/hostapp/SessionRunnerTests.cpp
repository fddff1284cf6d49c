// Sessions run against the real plug-in bundle and engine, in-process and as the host program.
#include "host/HostEngine.h"
#include "hostapp/PluginHost.h"
#include "hostapp/SessionRunner.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"
#include "tests/hostapp/SessionFixture.h"
#include "tests/support/BuiltPlugin.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <limits>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using SessionTest = SessionFixture;

TEST_F(SessionTest, SettingsReachTheDocumentAndTheWindow)
{
    std::string error;
    ASSERT_TRUE(run("window 800 600\ncanvas 640 480\nview 10 20 320 240\nviewsize 640 480\nlayer-offset 5 -7\n", error))
        << error;
    auto& doc = runner->document();
    EXPECT_EQ(doc.canvasWidth(), 640);
    EXPECT_EQ(doc.viewRect(), (engine::ViewRect { 10, 20, 320, 240 }));
    EXPECT_EQ(doc.viewSize(), (engine::ViewSize { 640, 480 }));
    int x = 0, y = 0;
    doc.layerOffset(engine::Document::kSelectionMaskLayerId, x, y);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, -7);
    EXPECT_EQ(runner->canvas().window().contentView()->frame(), kit::Rect(0, 0, 800, 600));
}

TEST_F(SessionTest, RunPutsTheOverlayOverTheWindowAfterHalfASecond)
{
    std::string error;
    ASSERT_TRUE(run("window 800 600\nrun\nwait 0.4\n", error)) << error;
    kit::View* content = runner->canvas().window().contentView();
    const std::size_t hostViews = content->subviews().size(); // the filter pop-up and slider
    ASSERT_TRUE(run("wait 0.1\n", error)) << error;
    ASSERT_EQ(content->subviews().size(), hostViews + 1);
    EXPECT_EQ(content->subviews().back()->frame(), kit::Rect(0, 0, 800, 600));
    EXPECT_EQ(plugin->table().isActive(runner->handle()), 1);
    ASSERT_TRUE(run("stop\ndestroy\n", error)) << error;
    EXPECT_EQ(runner->handle(), nullptr);
    EXPECT_EQ(content->subviews().size(), hostViews);
}

TEST_F(SessionTest, EndingASessionWithinHalfASecondOfRunLetsTheDelayedAddFinishFirst)
{
    std::string error;
    ASSERT_TRUE(run("run\nwait 0.2\n", error)) << error;
    EXPECT_GT(kit::RunLoop::main().pendingCount(), 0u);
    runner.reset(); // the window goes only after the add that refers to it has run
    EXPECT_EQ(kit::RunLoop::main().pendingCount(), 0u);
}

TEST_F(SessionTest, UndoAndRedoThroughTheTableStepTheDocument)
{
    auto& doc = runner->document();
    const std::vector<unsigned char> white(16 * 16 * 4, 255);
    std::string error;
    ASSERT_TRUE(run("run\nwait 0.5\n", error)) << error;
    IPD_LayerPaint_ImportImageData(doc.context(), IPD_GetSelectionMaskID(doc.context()), white.data(), 16, 16, 100, 50);
    IPD_StartRefreshingActiveLayer(doc.context());
    ASSERT_TRUE(run("undo\n", error)) << error;
    EXPECT_EQ(doc.maskAlpha()[50 * 1000 + 100], 0);
    ASSERT_TRUE(run("redo\n", error)) << error;
    EXPECT_EQ(doc.maskAlpha()[50 * 1000 + 100], 255);
}

TEST_F(SessionTest, SaveMaskWritesTheCanvasAsGreyWithTheLayerOffset)
{
    auto& doc = runner->document();
    std::string error;
    ASSERT_TRUE(run("canvas 200 100\nlayer-offset 10 5\n", error)) << error;
    const std::vector<unsigned char> white(4 * 4 * 4, 255);
    IPD_LayerPaint_ImportImageData(doc.context(), IPD_GetSelectionMaskID(doc.context()), white.data(), 4, 4, 0, 0);
    ASSERT_TRUE(run("save-mask mask.png\n", error)) << error;
    auto image = kit::Image::imageWithContentsOfFile((dir.path() / "mask.png").string());
    ASSERT_TRUE(image);
    EXPECT_EQ(image->pixelsWide(), 200);
    EXPECT_EQ(image->pixelsHigh(), 100);
    auto grey = [&](int x, int y) { return image->rgba()[(std::size_t(y) * 200 + x) * 4]; };
    EXPECT_EQ(grey(10, 5), 255);
    EXPECT_EQ(grey(13, 8), 255);
    EXPECT_EQ(grey(9, 5), 0);
    EXPECT_EQ(grey(14, 8), 0);
    EXPECT_NE(report.str().find("wrote "), std::string::npos);
}

TEST_F(SessionTest, ALogSavedAndReplayedReachesThePlaySlot)
{
    auto& doc = runner->document();
    SelectionEventRecord record;
    record.kind = 90;
    record.param2 = 3; // a brush record: accepted, no effect
    record.name = "Selection";
    IPD_RecordEvent(doc.context(), &record);
    SelectionEventRecord flat = record; // a rectangle with no width: nothing to draw
    flat.param2 = 0;
    flat.param6 = std::numeric_limits<float>::quiet_NaN();
    IPD_RecordEvent(doc.context(), &flat);
    SelectionEventRecord other = record;
    other.kind = 7;
    IPD_RecordEvent(doc.context(), &other);
    SelectionEventRecord huge = record; // an ellipse whose mask the engine could not import
    huge.param2 = 1;
    huge.param5 = huge.param6 = 20000;
    huge.param8 = 100;
    IPD_RecordEvent(doc.context(), &huge);
    std::string error;
    ASSERT_TRUE(run("run\nsave-log log.jsonl\nreplay log.jsonl\n", error)) << error;
    // Each reached the play slot, and the host says which changed nothing and why.
    EXPECT_NE(report.str().find("replayed 4 records from " + (dir.path() / "log.jsonl").string()
                  + "; 4 changed nothing: record 1 (brush and erase records replay as nothing), record 2 (the "
                    "plug-in refused its shape), record 3 (not a selection event), record 4 (its mask of 20203 x "
                    "20203 = 408161209 pixels is beyond the import limit of 268435456)\n"),
        std::string::npos)
        << report.str();
    EXPECT_EQ(doc.actionLog().size(), 4u);
}

TEST_F(SessionTest, HostSelectionCommandsAreUndoStepsAndReplayFromTheLog)
{
    // A drag selects a 100 x 80 box; the host inverts it, then selects all, none, and inverts.
    std::string error;
    ASSERT_TRUE(run("run\nwait 1.1\ndown 300 300\ndrag 400 380\nup 400 380\ninvert-selection\n", error)) << error;
    auto& doc = runner->document();
    const std::vector<std::uint8_t> inverted = doc.maskAlpha();
    EXPECT_EQ(std::count(inverted.begin(), inverted.end(), std::uint8_t { 255 }), 1000 * 800 - 100 * 80);
    ASSERT_TRUE(run("select-all\nselect-none\ninvert-selection\nsave-log log.jsonl\n", error)) << error;
    const std::vector<std::uint8_t> last = doc.maskAlpha();
    EXPECT_EQ(std::count(last.begin(), last.end(), std::uint8_t { 255 }), 1000 * 800);
    std::vector<std::int32_t> kinds;
    for (const SelectionEventRecord& record : doc.actionLog().records())
        kinds.push_back(record.kind);
    EXPECT_EQ(kinds, (std::vector<std::int32_t> { 90, 204, 202, 203, 204 }));
    // One undo step each.
    ASSERT_TRUE(run("undo\nundo\nundo\n", error)) << error;
    EXPECT_EQ(doc.maskAlpha(), inverted);

    // A replay onto a fresh document applies the host's records itself.
    std::ostringstream replayReport;
    hostapp::SessionRunner fresh(plugin->table(), dir.path(), replayReport);
    auto script = hostapp::SessionScript::parse("run\nwait 0.6\nreplay log.jsonl\n", "r", error);
    ASSERT_TRUE(script && fresh.run(*script, error)) << error;
    EXPECT_EQ(fresh.document().maskAlpha(), last);
    EXPECT_EQ(fresh.document().actionLog().size(), 5u);
}

TEST_F(SessionTest, RuntimeFailuresNameTheLineAndKeepEarlierFiles)
{
    std::string error;
    EXPECT_FALSE(run("canvas 30000 30000\n", error));
    EXPECT_EQ(error,
        "t.session:1: canvas: a canvas of 30000 x 30000 pixels is refused: sides from 1 to 65536 and at "
        "most 268435456 pixels in all");
    EXPECT_FALSE(run("window 16384 16384\n", error));
    EXPECT_EQ(error, "t.session:1: window: a window of 16384 x 16384 points is refused: at most 8192 a side");
    EXPECT_FALSE(run("save-log first.jsonl\nreplay first.jsonl\n", error));
    EXPECT_EQ(error.rfind("t.session:2: replay: the plug-in is not running yet", 0), 0u) << error;
    EXPECT_FALSE(run("save-log first.jsonl\nrun\nreplay missing.jsonl\nsave-log second.jsonl\n", error));
    EXPECT_EQ(error.rfind("t.session:3: replay: ", 0), 0u) << error;
    EXPECT_TRUE(fs::exists(dir.path() / "first.jsonl"));
    EXPECT_FALSE(fs::exists(dir.path() / "second.jsonl"));

    EXPECT_FALSE(run("run\nwindow 10 10\n", error));
    EXPECT_EQ(error, "t.session:2: window: the window size is fixed once the plug-in has run");
    EXPECT_FALSE(run("save-mask no/such/folder/m.png\n", error));
    EXPECT_EQ(error.rfind("t.session:1: save-mask: cannot write ", 0), 0u) << error;
}

/// Runs the installed host program and returns its exit status, and the most memory it held.
int host(const std::string& arguments, const fs::path& cwd, long* peakKilobytes = nullptr)
{
    const fs::path program = builtTreeFolder() / "Quillmark.app/Contents/bin/quillmark-host";
    const std::string command
        = "cd '" + cwd.string() + "' && exec '" + program.string() + "' " + arguments + " >out.txt 2>err.txt";
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child)
        return -1;
    if (peakKilobytes)
        *peakKilobytes = usage.ru_maxrss;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string readFile(const fs::path& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(HostProgram, ReplayTakesItsArgumentsAsFileNamesOnly)
{
    TempDir dir;
    EXPECT_EQ(host("replay \"$(printf 'g.jsonl\\nsave-log injected.jsonl')\"", dir.path()), 2);
    EXPECT_FALSE(fs::exists(dir.path() / "out" / "injected.jsonl"));
    EXPECT_NE(readFile(dir.path() / "err.txt").find("g.jsonl\nsave-log injected.jsonl: cannot read"), std::string::npos)
        << readFile(dir.path() / "err.txt");
}

TEST(HostProgram, DemoWritesItsFilesIntoOut)
{
    TempDir dir;
    ASSERT_EQ(host("demo", dir.path()), 0) << readFile(dir.path() / "err.txt");
    for (const char* file : { "demo-mask.png", "demo-log.jsonl", "demo-replayed-mask.png", "demo-rectangle-drag.png",
             "demo-ellipse-drag.png", "demo-marquee-panel.png", "demo-lasso-panel.png", "demo-lasso-drawing.png",
             "demo-brush-panel.png", "demo-replayed-window.png", "demo-filtered-picture.png",
             "demo-replayed-picture.png" })
        EXPECT_TRUE(fs::exists(dir.path() / "out" / file)) << file;
    const std::string out = readFile(dir.path() / "out.txt");
    EXPECT_NE(out.find("wrote out/demo-mask.png"), std::string::npos);
    EXPECT_NE(out.find("the replayed mask equals the original pixel for pixel"), std::string::npos);
    EXPECT_NE(out.find("the replayed picture equals the filtered one pixel for pixel"), std::string::npos);
    // Three selections were made through the bar, two with the feathers typed into its panel and
    // a lasso triangle, between the host's opening and filtering of the picture.
    const std::string log = readFile(dir.path() / "out/demo-log.jsonl");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 5);
    EXPECT_NE(log.find("\"param8\":10"), std::string::npos) << log;
    EXPECT_NE(log.find("\"param8\":25"), std::string::npos) << log;
    EXPECT_NE(log.find("\"param2\":2,\"param3\":3"), std::string::npos) << log;
}

TEST(HostProgram, ABadScriptStopsWithStatusTwoAndTheLine)
{
    TempDir dir;
    dir.write("s.txt", "run\nwait 0.5\nfly away\n");
    EXPECT_EQ(host("session s.txt --out o", dir.path()), 2);
    EXPECT_EQ(readFile(dir.path() / "err.txt"), "s.txt:3: unknown command 'fly'\n");
    dir.write("f.txt", "run\nfilter CIGaussianBlur inputRadius=-nan\n");
    EXPECT_EQ(host("session f.txt", dir.path()), 2);
    EXPECT_NE(readFile(dir.path() / "err.txt").find("f.txt:2: filter: 'inputRadius=-nan'"), std::string::npos);
    EXPECT_EQ(host("bogus", dir.path()), 2);
    EXPECT_EQ(host("session", dir.path()), 2);
}

TEST(HostProgram, AShapeWhollyOffTheCanvasCostsItsMaskNotTheDistance)
{
    TempDir dir;
    dir.write("far.jsonl",
        R"({"kind":90,"param0":2,"param1":0,"param2":1,"param3":1e9,"param4":1e9,"param5":3000,)"
        R"("param6":3000,"param7":0,"param8":100,"text":"","name":"Selection"})"
        "\n");
    long peak = 0;
    ASSERT_EQ(host("replay far.jsonl --out r", dir.path(), &peak), 0) << readFile(dir.path() / "err.txt");
    EXPECT_NE(readFile(dir.path() / "out.txt").find("replayed 1 record"), std::string::npos);
#if !defined(__SANITIZE_ADDRESS__) // the sanitizer's shadow and quarantine are not the program's
    EXPECT_LT(peak, 200 * 1024) << "kilobytes";
#endif
}

TEST(HostProgram, ReplayCommandWritesTheReplayedMaskAndLog)
{
    TempDir dir;
    dir.write("log.jsonl", "");
    ASSERT_EQ(host("replay log.jsonl --out r", dir.path()), 0) << readFile(dir.path() / "err.txt");
    EXPECT_TRUE(fs::exists(dir.path() / "r/replay-mask.png"));
    EXPECT_TRUE(fs::exists(dir.path() / "r/replay-picture.png"));
    EXPECT_TRUE(fs::exists(dir.path() / "r/replay-log.jsonl"));
}

} // namespace
