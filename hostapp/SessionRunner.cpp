// SessionRunner: one handler per command, the module table driven as a real host drives it.
#include "hostapp/SessionRunner.h"

#include "engine/ActionLog.h"
#include "engine/Document.h"
#include "hostapp/HostPicture.h"
#include "kit/AutoreleasePool.h"
#include "kit/Cursor.h"
#include "kit/Data.h"
#include "kit/Event.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace hostapp {

namespace {

constexpr float kDefaultWindowWidth = 1200;
constexpr float kDefaultWindowHeight = 900;
// Pending calls get up to ten seconds of run-loop time at the end of a session.
constexpr int kSettleSteps = 100;
constexpr double kSettleStepSeconds = 0.1;
// A window's screenshot is its width x height in RGBA: 8192 a side keeps it at 256 MiB.
constexpr double kMaxWindowSide = 8192;

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
        if (n[0] > kMaxWindowSide || n[1] > kMaxWindowSide) {
            problem = "a window of " + std::to_string(asInt(n[0])) + " x " + std::to_string(asInt(n[1]))
                + " points is refused: at most " + std::to_string(asInt(kMaxWindowSide)) + " a side";
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
    if (handleInput(command))
        return true;
    if (name == "host-area") {
        const auto& n = command.numbers;
        m_canvas->canvasView().addHostArea({ float(n[0]), float(n[1]), float(n[2]), float(n[3]) });
    } else if (name == "run") {
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
    } else if (name == "save-window") {
        return saveWindow(outputPath(command.text), problem);
    } else if (name == "save-cursor") {
        return saveCursor(outputPath(command.text), problem);
    } else if (name == "replay") {
        if (!m_everRun) {
            problem = "the plug-in is not running yet, so nothing would take the records (put run first)";
            return false;
        }
        return replayLog(outputPath(command.text), problem) >= 0;
    } else if (name == "open" || name == "filter" || name == "save-picture") {
        return editPicture(command, problem);
    } else if (HostPicture(document()).changeSelection(name)) {
        return true;
    } else {
        problem = "not a command of this host";
        return false;
    }
    return true;
}

bool SessionRunner::editPicture(const SessionCommand& command, std::string& problem)
{
    HostPicture picture(document());
    if (command.name == "open")
        return picture.open(outputPath(command.text), problem);
    if (command.name == "filter") {
        auto filter = PictureFilter::parse(command.text, problem);
        return filter && picture.applyFilter(*filter, problem);
    }
    const std::filesystem::path path = outputPath(command.text);
    if (!picture.save(path, problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

void SessionRunner::sendMouse(kit::EventType type, const std::vector<double>& n, int clicks)
{
    const kit::Point at { float(n[0]), float(n[1]) };
    m_canvas->sendEvent(kit::Event::mouse(type, at, clicks, kit::RunLoop::main().now()));
}

void SessionRunner::sendKey(const std::string& characters, unsigned short keyCode)
{
    const double now = kit::RunLoop::main().now();
    m_canvas->sendEvent(kit::Event::key(kit::EventType::KeyDown, characters, keyCode, now));
    m_canvas->sendEvent(kit::Event::key(kit::EventType::KeyUp, characters, keyCode, now));
}

bool SessionRunner::handleInput(const SessionCommand& command)
{
    using kit::EventType;
    const std::string& name = command.name;
    const auto& n = command.numbers;
    if (name == "down") {
        m_clickCount = n.size() > 2 ? int(n[2]) : 1;
        sendMouse(EventType::LeftMouseDown, n, m_clickCount);
    } else if (name == "drag") {
        sendMouse(EventType::LeftMouseDragged, n, m_clickCount);
    } else if (name == "up") {
        sendMouse(EventType::LeftMouseUp, n, n.size() > 2 ? int(n[2]) : m_clickCount);
    } else if (name == "move") {
        sendMouse(EventType::MouseMoved, n, 0);
        m_canvas->refreshCursor({ float(n[0]), float(n[1]) }, kit::RunLoop::main().now());
    } else if (name == "rightdown") {
        sendMouse(EventType::RightMouseDown, n, 1);
    } else if (name == "rightup") {
        sendMouse(EventType::RightMouseUp, n, 1);
    } else if (name == "click" || name == "doubleclick") {
        const int presses = name == "click" ? 1 : 2;
        for (int count = 1; count <= presses; ++count) {
            sendMouse(EventType::LeftMouseDown, n, count);
            sendMouse(EventType::LeftMouseUp, n, count);
        }
        m_clickCount = presses;
    } else if (name == "key") {
        const auto [characters, code] = keyFor(command.text);
        sendKey(characters, code);
    } else if (name == "type") {
        for (const std::string& character : splitCharacters(command.text))
            sendKey(character, kit::KeyCodeNone);
    } else {
        return false;
    }
    return true;
}

std::pair<std::string, unsigned short> SessionRunner::keyFor(const std::string& name)
{
    if (name == "delete")
        return { "\x7f", kit::KeyCodeDelete };
    if (name == "return")
        return { "\r", kit::KeyCodeReturn };
    if (name == "escape")
        return { "\x1b", kit::KeyCodeEscape };
    if (name == "tab")
        return { "\t", kit::KeyCodeTab };
    return { name, kit::KeyCodeNone };
}

std::vector<std::string> SessionRunner::splitCharacters(const std::string& text)
{
    std::vector<std::string> out;
    for (char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) == 0x80 && !out.empty())
            out.back() += c; // a continuation byte of a UTF-8 character
        else
            out.emplace_back(1, c);
    }
    return out;
}

namespace {

// Why a selection record the plug-in did not record again changed nothing, as far as the host
// can tell from the record alone.
std::string unplayedReason(const SelectionEventRecord& record)
{
    if (record.kind != kSelectionEventKind)
        return "not a selection event";
    if (record.param2 == 3.0f || record.param2 == 4.0f)
        return "brush and erase records replay as nothing";
    if (!(record.param2 == 0.0f || record.param2 == 1.0f || record.param2 == 2.0f))
        return "no tool has that number";
    if (record.param2 != 2.0f) {
        // A box's mask spans its size plus 3 + 2 x feather pixels each way.
        const double width = std::trunc(double(record.param5) + 3 + 2 * double(record.param8));
        const double height = std::trunc(double(record.param6) + 3 + 2 * double(record.param8));
        if (width * height > double(engine::Document::kMaxImportPixels)) {
            std::ostringstream reason;
            reason << std::fixed << std::setprecision(0) << "its mask of " << width << " x " << height << " = "
                   << width * height << " pixels is beyond the import limit of " << engine::Document::kMaxImportPixels;
            return reason.str();
        }
    }
    return "the plug-in refused its shape";
}

} // namespace

int SessionRunner::replayLog(const std::filesystem::path& path, std::string& problem)
{
    engine::ActionLog log;
    if (!log.load(path, problem))
        return -1;
    int count = 0;
    std::vector<std::string> unplayed;
    for (const SelectionEventRecord& saved : log.records()) {
        SelectionEventRecord record = saved;
        if (HostPicture::isHostRecord(record)) {
            if (!HostPicture(document()).play(record, problem)) {
                problem = path.string() + ": record " + std::to_string(count + 1) + ": " + problem;
                return -1;
            }
        } else {
            // A shape the plug-in takes, it records again.
            const std::size_t before = document().actionLog().size();
            m_table.play(m_handle, &record);
            if (document().actionLog().size() == before)
                unplayed.push_back("record " + std::to_string(count + 1) + " (" + unplayedReason(saved) + ")");
        }
        kit::AutoreleasePool::current().drain();
        ++count;
    }
    m_report << "replayed " << count << (count == 1 ? " record" : " records") << " from " << path.string();
    if (!unplayed.empty()) {
        constexpr std::size_t kListed = 10;
        m_report << "; " << unplayed.size() << " changed nothing:";
        for (std::size_t i = 0; i < std::min(unplayed.size(), kListed); ++i)
            m_report << (i ? ", " : " ") << unplayed[i];
        if (unplayed.size() > kListed)
            m_report << ", ...";
    }
    m_report << "\n";
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

bool SessionRunner::saveWindow(const std::filesystem::path& path, std::string& problem)
{
    auto picture = m_canvas->window().renderImage();
    if (!picture) {
        problem = "cannot render the window";
        return false;
    }
    if (!picture->writePNG(path.string(), &problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

bool SessionRunner::saveCursor(const std::filesystem::path& path, std::string& problem)
{
    const kit::Cursor* cursor = kit::Cursor::currentCursor();
    if (!cursor->image()) {
        problem = "the current cursor, the " + cursor->name() + ", has no image";
        return false;
    }
    if (!cursor->image()->writePNG(path.string(), &problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

bool SessionRunner::saveLog(const std::filesystem::path& path, std::string& problem)
{
    const std::string text = document().actionLog().toJsonLines();
    auto data = kit::Data::dataWithBytes(text.data(), text.size());
    if (!data->writeToFileAtomically(path.string(), &problem))
        return false;
    m_report << "wrote " << path.string() << "\n";
    return true;
}

} // namespace hostapp
