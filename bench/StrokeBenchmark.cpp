// StrokeBenchmark: the engine's brush strokes and their undo against one memcpy of the canvas.
//
// On a 3200 x 3200 canvas a straight 3000-pixel stroke of 300 events goes into the selection
// mask with the pen at radius values 2.5 (11.9 px) and 5 (141 px), as the brush tool sends it,
// then is undone. Each run times a memcpy of a 3200 x 3200 RGBA buffer first, so that both see
// the same load. "first touch" runs use a fresh document, so the stroke's cells come from new
// memory and its page faults count; "warm" runs reuse one document, whose next stroke finds the
// memory the last one freed. Figures are medians over the runs, ratios the median of the runs'
// ratios. Single thread.
#include "bench/BenchTiming.h"
#include "engine/Document.h"
#include "host/HostEngine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <vector>

namespace {

constexpr int kSide = 3200;
constexpr int kEvents = 300;
constexpr int kLength = 3000;
constexpr int kRuns = 21;

using bench::Clock;
using bench::median;
using bench::memcpyMs;
using bench::milliseconds;

struct Timing {
    double stroke;
    double undo;
};

/// A 3200 x 3200 document with the pen at the radius value, routed to the selection mask.
class StrokeScene {
public:
    StrokeScene(const std::filesystem::path& brushes, float radius)
    {
        m_document.setBrushDirectory(brushes);
        m_document.setCanvasSize(kSide, kSide);
        m_pen = IPD_CreateBrushFromPackage(context(), "pen_1.bru");
        IPD_SetBrushParam(context(), m_pen, 3, radius);
        IPD_EnableSeletionLayerOperation(context(), 1);
    }
    ~StrokeScene() { IPD_DestroyBursh(context(), m_pen); }

    /// The stroke as the brush tool sends it, then its undo, each timed.
    Timing strokeAndUndo()
    {
        const int y = kSide / 2;
        const int x0 = (kSide - kLength) / 2;
        const auto start = Clock::now();
        IPD_BeginOneStroke(context());
        for (int i = 0; i <= kEvents; ++i) {
            const float time = i == 0 ? 5.1f : i == kEvents ? -1.0f : 0.008f;
            IPD_StrokeTo(context(), m_pen, 0xffffff, x0 + i * kLength / kEvents, y, 1.0f, time);
        }
        IPD_EndOneStroke(context());
        const double stroke = milliseconds(start);
        const auto undoStart = Clock::now();
        IPD_UndoStroke(context());
        const double undo = milliseconds(undoStart);
        if (m_document.undoDepth() != 0 || m_document.redoDepth() != 1)
            std::fprintf(stderr, "the stroke did not undo as one step\n");
        return { stroke, undo };
    }

private:
    void* context() { return m_document.context(); }

    engine::Document m_document;
    void* m_pen = nullptr;
};

void report(const char* label, float radius, std::vector<unsigned char>& from, std::vector<unsigned char>& to,
    const std::function<Timing()>& once)
{
    std::vector<double> copies, strokes, undos, strokeRatios, undoRatios;
    for (int run = 0; run < kRuns; ++run) {
        const double copy = memcpyMs(from, to);
        const Timing t = once();
        copies.push_back(copy);
        strokes.push_back(t.stroke);
        undos.push_back(t.undo);
        strokeRatios.push_back(t.stroke / copy);
        undoRatios.push_back(t.undo / copy);
    }
    std::printf("%-6.1f %-12s %10.2f %10.2f %10.2f %12.2f %10.2f\n", radius, label, median(copies), median(strokes),
        median(undos), median(strokeRatios), median(undoRatios));
}

} // namespace

int main(int argc, char** argv)
{
    const std::filesystem::path brushes = argc > 1 ? argv[1] : engine::Document::defaultBrushDirectory();
    if (!std::filesystem::is_directory(brushes)) {
        std::fprintf(stderr, "stroke_benchmark: no brush folder at %s (usage: stroke_benchmark [BRUSH FOLDER])\n",
            brushes.string().c_str());
        return 2;
    }
    std::vector<unsigned char> from(std::size_t(kSide) * kSide * 4, 1), to(from.size(), 2);
    std::printf("canvas %d x %d, %d-px stroke of %d events, %d runs, medians\n", kSide, kSide, kLength, kEvents, kRuns);
    std::printf("%-6s %-12s %10s %10s %10s %12s %10s\n", "radius", "cells", "memcpy ms", "stroke ms", "undo ms",
        "stroke/copy", "undo/copy");
    for (float radius : { 2.5f, 5.0f }) {
        // A fresh document a run: the stroke makes its cells from new memory.
        report("first touch", radius, from, to, [&] { return StrokeScene(brushes, radius).strokeAndUndo(); });
        // One document: every stroke after the first finds the memory the last one freed.
        StrokeScene scene(brushes, radius);
        scene.strokeAndUndo();
        report("warm", radius, from, to, [&] { return scene.strokeAndUndo(); });
    }
    return 0;
}
