// CommitBenchmark: a selection gesture's commit into the engine, and its undo and redo, against one memcpy of its mask.
//
// A 3000-pixel ellipse feathered by 10 (a 3023 x 3023 mask) goes into the selection mask of a
// 3200 x 3200 canvas through the calls the tools make at mouse-up: import, refresh (which closes
// the undo step). "first" runs use a fresh document, so every cell is new memory; "new" runs
// repeat a New-mode gesture on one document (the press deletes the selection, the release
// imports); "add" runs import the ellipse moved by 37 pixels over the one before (New gestures alternate between two
// places 64 pixels apart, so that each changes the selection); then the New gesture's undo and redo. Each run times a
// memcpy of the mask first, so that both see the same load; figures are medians over the runs, ratios the median of the
// runs' ratios. Single thread.
#include "Classes/Selection/GraphicsToBuffer.h"
#include "bench/BenchTiming.h"
#include "engine/Document.h"
#include "host/HostEngine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kCanvas = 3200;
constexpr float kSide = 3000;
constexpr float kFeather = 10;
constexpr int kRuns = 15;

using bench::Clock;
using bench::median;
using bench::milliseconds;

struct Mask {
    IMAGE_BUFFER buffer {};
    kit::Point origin;
    Mask()
    {
        CreateImageBufferFromEllipse(
            buffer, origin, kit::Rect(100, 100, kSide, kSide), {}, true, { 255, 255, 255, 255 }, kFeather);
    }
    ~Mask() { DestroyImageBuffer(buffer); }
    std::size_t bytes() const { return std::size_t(buffer.nWidth) * std::size_t(buffer.nHeight) * 4; }
};

// Made once and kept to the end of the process.
const Mask& mask()
{
    static const Mask* shared = new Mask;
    return *shared;
}

double memcpyMs()
{
    static std::vector<unsigned char> from(mask().bytes(), 1), to(mask().bytes(), 2);
    return bench::memcpyMs(from, to);
}

std::unique_ptr<engine::Document> canvas()
{
    auto document = std::make_unique<engine::Document>();
    document->setCanvasSize(kCanvas, kCanvas);
    return document;
}

// The release of a gesture: the mask goes in and the step closes, as the tools commit it.
void commit(void* context, int dx)
{
    IPD_EnableSeletionLayerOperation(context, 1);
    const Mask& m = mask();
    IPD_LayerPaint_ImportImageData(context, IPD_GetSelectionMaskID(context), m.buffer.pData, m.buffer.nWidth,
        m.buffer.nHeight, int(m.origin.x) + dx, int(m.origin.y));
    IPD_StartRefreshingActiveLayer(context);
    IPD_EnableSeletionLayerOperation(context, 0);
}

// Each New gesture moves the ellipse, so that it changes the selection and keeps its step.
void newGesture(void* context)
{
    static int gesture = 0;
    IPD_Layer_Delete(context, IPD_GetSelectionMaskID(context), 0);
    commit(context, (gesture++ % 2) * 64);
}

struct Figures {
    double memcpy = 0, ms = 0, ratio = 0;
};
std::map<std::string, Figures> g_figures;

// Runs `prepare` untimed and `step` timed kRuns times, each after a memcpy.
void measure(benchmark::State& state, const std::string& name, const std::function<void()>& prepare,
    const std::function<void()>& step)
{
    std::vector<double> copies, times, ratios;
    for (auto _ : state) {
        prepare();
        copies.push_back(memcpyMs());
        const auto start = Clock::now();
        step();
        times.push_back(milliseconds(start));
        ratios.push_back(times.back() / copies.back());
    }
    g_figures[name] = { median(copies), median(times), median(ratios) };
    state.counters["x_memcpy"] = median(ratios);
}

void registerAll()
{
    // Kept to the end of the process, and made by whichever benchmark runs first.
    static std::unique_ptr<engine::Document>& document = *new std::unique_ptr<engine::Document>(canvas());
    auto add = [](const char* name, std::function<void()> prepare, std::function<void()> step) {
        benchmark::RegisterBenchmark(name, [=](benchmark::State& s) { measure(s, name, prepare, step); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(kRuns);
    };
    add(
        "commit/1 first gesture", [] { document = canvas(); }, [] { newGesture(document->context()); });
    add(
        "commit/2 later New gesture", [] { newGesture(document->context()); }, [] { newGesture(document->context()); });
    add(
        "commit/3 later Add gesture", [] { newGesture(document->context()); },
        [] { commit(document->context(), 37 + 64); });
    add(
        "commit/4 undo", [] { newGesture(document->context()); }, [] { IPD_UndoStroke(document->context()); });
    add(
        "commit/5 redo",
        [] {
            newGesture(document->context());
            IPD_UndoStroke(document->context());
        },
        [] { IPD_RedoStroke(document->context()); });
}

void printSummary()
{
    const Mask& m = mask();
    std::printf("\n%d x %d mask on a %d x %d canvas; medians of %d runs, ratios the median of each run's.\n",
        m.buffer.nWidth, m.buffer.nHeight, kCanvas, kCanvas, kRuns);
    std::printf("%-28s %10s %8s %9s\n", "step", "memcpy ms", "step ms", "x memcpy");
    for (const auto& [name, f] : g_figures)
        std::printf("%-28s %10.2f %8.2f %9.2f\n", name.c_str(), f.memcpy, f.ms, f.ratio);
}

} // namespace

int main(int argc, char** argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    printSummary();
    return 0;
}
