// SessionRunner: one handler per command, the module table driven as a real host drives it.
#include "hostapp/SessionRunner.h"

#include "engine/ActionLog.h"
#include "kit/AutoreleasePool.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"

namespace hostapp {

namespace {

constexpr float kDefaultWindowWidth = 1200;
constexpr float kDefaultWindowHeight = 900;
// Pending calls get up to ten seconds of run-loop time at the end of a session.
constexpr int kSettleSteps = 100;
constexpr double kSettleStepSeconds = 0.1;

int asInt(double value) { return static_cast<int>(value); }

} // namespace

SessionRunner::SessionRunner(const PluginModule& table, std::filesystem::path outDir, std::ostream& report)
    : m_table(table)
    , m_outDir(std::move(outDir))
    , m_report(report)
    , m_canvas(std::make_unique<CanvasWindow>(kit::Size { kDefaultWindowWidth, kDefaultWindowHeight }))
{
}

SessionRunner::~SessionRunner()
{
    destroyController();
    // Calls that the plug-in scheduled may still refer to the window (a controller destroyed
    // within half a second of its first run adds its overlay when its call comes), so let them
    // run before the window closes, as a real host's window outlives its run loop's pass.
    auto& loop = kit::RunLoop::main();
    for (int step = 0; step < kSettleSteps && loop.pendingCount() > 0; ++step)
        loop.advance(kSettleStepSeconds);
}

void SessionRunner::destroyController()
{
    if (!m_handle)
        return;
    m_table.destroy(m_handle);
    m_handle = nullptr;
    kit::AutoreleasePool::current().drain();
}

std::filesystem::path SessionRunner::outputPath(const std::string& name) const
{
    const std::filesystem::path path(name);
    return path.is_absolute() ? path : m_outDir / path;
}

bool SessionRunner::run(const SessionScript& script, std::string& error)
{
    for (const SessionCommand& command : script.commands()) {
        std::string problem;
        if (!execute(command, problem)) {
            error = script.source() + ":" + std::to_string(command.line) + ": " + command.name + ": " + problem;
            return false;
        }
        kit::AutoreleasePool::current().drain();
    }
    return true;
}

bool SessionRunner::applySetting(const SessionCommand& command, std::string& problem)
{
    const auto& n = command.numbers;
    engine::Document& doc = document();
    bool ok = true;
    if (command.name == "window") {
        if (m_everRun) {
            problem = "the window size is fixed once the plug-in has run";
            return false;
        }
        m_canvas->setContentSize({ float(n[0]), float(n[1]) });
    } else if (command.name == "canvas") {
        ok = doc.setCanvasSize(asInt(n[0]), asInt(n[1]));
    } else if (command.name == "view") {
        ok = doc.setViewRect({ asInt(n[0]), asInt(n[1]), asInt(n[2]), asInt(n[3]) });
    } else if (command.name == "viewsize") {
        ok = doc.setViewSize({ asInt(n[0]), asInt(n[1]) });
    } else if (command.name == "layer-offset") {
        ok = doc.setLayerOffset(engine::Document::kSelectionMaskLayerId, asInt(n[0]), asInt(n[1]));
    }
    if (!ok)
        problem = doc.lastError();
    return ok;
}

bool SessionRunner::execute(const SessionCommand& command, std::string& problem)
{
    const std::string& name = command.name;
    if (name == "window" || name == "canvas" || name == "view" || name == "viewsize" || name == "layer-offset")
        return applySetting(command, problem);
    if (name == "run") {
        if (!m_handle)
            m_handle = m_table.create(document().context(), &m_canvas->window());
        m_everRun = true;
        m_table.run(m_handle);
    } else if (name == "stop") {
        m_table.stop(m_handle);
    } else if (name == "destroy") {
        destroyController();
    } else if (name == "wait") {
        kit::RunLoop::main().advance(command.numbers[0]);
    } else if (name == "undo") {
        m_table.undo(m_handle, nullptr);
    } else if (name == "redo") {
        m_table.redo(m_handle, nullptr);
    } else if (name == "save-mask") {
        return saveMask(outputPath(command.text), problem);
    } else if (name == "save-log") {
        return saveLog(outputPath(command.text), problem);
    } else if (name == "replay") {
        return replayLog(outputPath(command.text), problem) >= 0;
    } else {
        problem = "not a command of this host";
        return false;
    }
    return true;
}

int SessionRunner::replayLog(const std::filesystem::path& path, std::string& problem)
{
    engine::ActionLog log;
    if (!log.load(path, problem))
        return -1;
    int count = 0;
    for (const SelectionEventRecord& saved : log.records()) {
        SelectionEventRecord record = saved;
        m_table.play(m_handle, &record);
        kit::AutoreleasePool::current().drain();
        ++count;
    }
    m_report << "replayed " << count << (count == 1 ? " record" : " records") << " from " << path.string() << "\n";
    return count;
}

bool SessionRunner::saveMask(const std::filesystem::path& path, std::string& problem)
{
    engine::Document& doc = document();
    const std::vector<std::uint8_t> alpha = doc.maskAlpha();
    if (!kit::Image::writeGrayPNG(path.string(), doc.canvasWidth(), doc.canvasHeight(), alpha.data(), &problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

bool SessionRunner::saveLog(const std::filesystem::path& path, std::string& problem)
{
    if (!document().actionLog().save(path, problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

} // namespace hostapp
