// InteractiveWindow: SDL2 events in, kit events out, and the window's picture back on screen.
#include "hostapp/InteractiveWindow.h"

#include "hostapp/HostPicture.h"
#include "hostapp/SessionRunner.h"
#include "kit/Cursor.h"
#include "kit/Event.h"
#include "kit/GraphicsContext.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>

namespace hostapp {

namespace {

// The ants step about eight times a second.
constexpr double kAntSeconds = 0.125;
// With nothing due the loop still looks round this often; it costs nothing worth measuring.
constexpr double kLongestSleepSeconds = 0.5;
// One notch of the mouse wheel zooms by this factor.
constexpr double kWheelZoom = 1.25;

struct SdlDeleter {
    void operator()(SDL_Window* w) const { SDL_DestroyWindow(w); }
    void operator()(SDL_Cursor* c) const { SDL_FreeCursor(c); }
};
template <typename T> using SdlPtr = std::unique_ptr<T, SdlDeleter>;

/// Keeps the system cursor in step with the kit's current cursor.
class CursorMirror {
public:
    void update()
    {
        kit::Cursor* current = kit::Cursor::currentCursor();
        if (current == m_shown.get())
            return;
        m_shown = current;
        if (current->name() == "image" && current->image()) {
            m_cursor.reset(imageCursor(*current));
        } else {
            const bool crosshair = current->name() == "crosshair";
            m_cursor.reset(SDL_CreateSystemCursor(crosshair ? SDL_SYSTEM_CURSOR_CROSSHAIR : SDL_SYSTEM_CURSOR_ARROW));
        }
        if (m_cursor)
            SDL_SetCursor(m_cursor.get());
    }

private:
    static SDL_Cursor* imageCursor(const kit::Cursor& cursor)
    {
        kit::Image& image = *cursor.image();
        SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormatFrom(const_cast<std::uint8_t*>(image.rgba().data()),
            image.pixelsWide(), image.pixelsHigh(), 32, image.pixelsWide() * 4, SDL_PIXELFORMAT_RGBA32);
        if (!surface)
            return nullptr;
        SDL_Cursor* made = SDL_CreateColorCursor(surface, int(cursor.hotSpot().x), int(cursor.hotSpot().y));
        SDL_FreeSurface(surface);
        return made;
    }

    // Held, so that a new cursor made at a freed one's address is still seen as new.
    kit::RefPtr<kit::Cursor> m_shown;
    SdlPtr<SDL_Cursor> m_cursor;
};

/// Turns the window system's events into the host's kit events and module-table calls.
class EventPump {
public:
    EventPump(SessionRunner& runner, const PluginModule& table) : m_runner(runner), m_table(table) {}

    /// False when the window is to close.
    bool handle(const SDL_Event& e)
    {
        switch (e.type) {
        case SDL_QUIT: return false;
        case SDL_MOUSEBUTTONDOWN: mouseButton(e.button, true); break;
        case SDL_MOUSEBUTTONUP: mouseButton(e.button, false); break;
        case SDL_MOUSEMOTION: mouseMotion(e.motion); break;
        case SDL_MOUSEWHEEL: wheel(e.wheel); break;
        case SDL_TEXTINPUT: typed(e.text.text); break;
        case SDL_KEYDOWN: keyDown(e.key); break;
        case SDL_KEYUP:
            if (e.key.keysym.sym == SDLK_SPACE)
                m_spaceDown = false;
            break;
        case SDL_DROPFILE: dropped(e.drop); break;
        case SDL_WINDOWEVENT:
            if (e.window.event == SDL_WINDOWEVENT_SIZE_CHANGED)
                m_runner.canvas().setContentSize({ float(e.window.data1), float(e.window.data2) });
            if (e.window.event == SDL_WINDOWEVENT_LEAVE)
                view().setPointer(std::nullopt);
            break;
        default: break;
        }
        return true;
    }

private:
    kit::Window& window() { return m_runner.canvas().window(); }
    CanvasView& view() { return m_runner.canvas().canvasView(); }
    /// Window-system coordinates run down from the top; the kit's run up from the bottom.
    kit::Point point(int x, int y) { return { float(x), window().contentView()->frame().height() - float(y) }; }
    double now() const { return kit::RunLoop::main().now(); }

    void mouseButton(const SDL_MouseButtonEvent& b, bool down)
    {
        using kit::EventType;
        m_last = point(b.x, b.y);
        // The middle button, and the left one with Space held, pan instead of reaching a tool.
        const bool panButton = b.button == SDL_BUTTON_MIDDLE || (b.button == SDL_BUTTON_LEFT && m_spaceDown);
        if (down && panButton && !m_leftDown) {
            m_panning = true;
            return;
        }
        if (!down && m_panning && (b.button == SDL_BUTTON_MIDDLE || b.button == SDL_BUTTON_LEFT)) {
            m_panning = false;
            return;
        }
        EventType type;
        if (b.button == SDL_BUTTON_LEFT)
            type = down ? EventType::LeftMouseDown : EventType::LeftMouseUp;
        else if (b.button == SDL_BUTTON_RIGHT)
            type = down ? EventType::RightMouseDown : EventType::RightMouseUp;
        else
            return;
        if (b.button == SDL_BUTTON_LEFT)
            m_leftDown = down;
        m_last = point(b.x, b.y);
        m_runner.canvas().sendEvent(kit::Event::mouse(type, m_last, b.clicks, now()));
        if (!down)
            m_runner.canvas().refreshCursor(m_last, now()); // a slider or zoom control may have changed the cursor
    }

    void mouseMotion(const SDL_MouseMotionEvent& m)
    {
        const kit::Point previous = m_last;
        m_last = point(m.x, m.y);
        view().setPointer(m_last);
        if (m_panning) {
            view().panBy(m_last.x - previous.x, m_last.y - previous.y);
            return;
        }
        const auto type = m_leftDown ? kit::EventType::LeftMouseDragged : kit::EventType::MouseMoved;
        m_runner.canvas().sendEvent(kit::Event::mouse(type, m_last, 1, now()));
        if (!m_leftDown)
            m_runner.canvas().refreshCursor(m_last, now());
    }

    void key(const std::string& characters, unsigned short code)
    {
        m_runner.canvas().sendEvent(kit::Event::key(kit::EventType::KeyDown, characters, code, now()));
        m_runner.canvas().sendEvent(kit::Event::key(kit::EventType::KeyUp, characters, code, now()));
    }

    void typed(const char* text)
    {
        // Space is the host's pan key, except in a field being edited.
        if (std::string(text) == " " && !view().editingText())
            return;
        key(text, kit::KeyCodeNone);
    }

    void wheel(const SDL_MouseWheelEvent& w)
    {
        const int notches = w.direction == SDL_MOUSEWHEEL_FLIPPED ? -w.y : w.y;
        if (notches != 0)
            view().zoomAbout(std::pow(kWheelZoom, std::clamp(notches, -8, 8)), m_last);
    }

    /// The host's own keys; false for any other key.
    bool hostKey(const SDL_Keysym& k)
    {
        if (k.sym == SDLK_SPACE) {
            m_spaceDown = true;
            return true;
        }
        if (!(k.mod & KMOD_CTRL))
            return false;
        const bool shift = (k.mod & KMOD_SHIFT) != 0;
        HostPicture edits(m_runner.document());
        switch (k.sym) {
        case SDLK_z: (shift ? m_table.redo : m_table.undo)(m_runner.handle(), nullptr); return true;
        case SDLK_y: m_table.redo(m_runner.handle(), nullptr); return true;
        case SDLK_a: return edits.changeSelection(shift ? "select-none" : "select-all");
        case SDLK_d: return edits.changeSelection("select-none");
        case SDLK_i: return shift && edits.changeSelection("invert-selection");
        case SDLK_s: save(); return true;
        case SDLK_0: view().fit(); return true;
        case SDLK_1: view().showActualSize(); return true;
        default: return false;
        }
    }

    /// The picture, the mask and the log beside the picture opened last, or in the current
    /// folder, named after it.
    void save()
    {
        namespace fs = std::filesystem;
        const fs::path picture = view().picturePath();
        const fs::path folder = picture.has_parent_path() ? picture.parent_path() : fs::path(".");
        const std::string stem = picture.empty() ? "untitled" : picture.stem().string();
        const fs::path names[3] = { stem + "-picture.png", stem + "-mask.png", stem + "-log.jsonl" };
        std::string problem;
        const bool saved = HostPicture(m_runner.document()).save(folder / names[0], problem)
            && m_runner.saveMask(folder / names[1], problem) && m_runner.saveLog(folder / names[2], problem);
        std::error_code ec;
        const fs::path where = fs::absolute(folder / names[0], ec).lexically_normal().parent_path();
        const std::string message = saved ? "saved " + names[0].string() + ", " + names[1].string() + " and "
                + names[2].string() + " in " + where.string()
                                          : "cannot save: " + problem;
        (saved ? std::cout : std::cerr) << "quillmark-host: " << message << std::endl;
        view().showMessage(message);
    }

    void keyDown(const SDL_KeyboardEvent& k)
    {
        // A field being edited has every key; the host's keys wait until it is done.
        if (!view().editingText() && hostKey(k.keysym))
            return;
        switch (k.keysym.sym) {
        case SDLK_BACKSPACE:
        case SDLK_DELETE: key("\x7f", kit::KeyCodeDelete); break;
        case SDLK_RETURN:
        case SDLK_KP_ENTER: key("\r", kit::KeyCodeReturn); break;
        case SDLK_ESCAPE: key("\x1b", kit::KeyCodeEscape); break;
        case SDLK_TAB: key("\t", kit::KeyCodeTab); break;
        default: break; // characters arrive as text input
        }
    }

    void dropped(const SDL_DropEvent& d)
    {
        if (!d.file)
            return;
        kit::DraggingInfo info { { d.file }, m_last, kit::DragOperationEvery };
        SDL_free(d.file);
        if (window().dragMoved(info) != kit::DragOperationNone)
            window().dragDropped(info);
        else
            window().dragCancelled(info);
    }

    SessionRunner& m_runner;
    const PluginModule& m_table;
    bool m_leftDown = false;
    bool m_spaceDown = false;
    bool m_panning = false;
    kit::Point m_last;
};

/// The window's picture kept between frames, and what of it goes to the screen: everything
/// after a change, the outline's area for a step of the ants.
class Screen {
public:
    explicit Screen(SDL_Window* window) : m_window(window) {}

    /// Redraws `dirty` (window points, y up; all of it when empty) and puts it on the screen.
    void show(kit::Window& window, std::vector<kit::Rect> dirty)
    {
        const kit::Size size = window.contentRectForFrameRect(window.frame()).size;
        const int w = int(std::ceil(size.width)), h = int(std::ceil(size.height));
        if (!m_backing || m_backing->pixelsWide() != w || m_backing->pixelsHigh() != h) {
            m_backing = kit::GraphicsContext::create(w, h);
            dirty.clear();
        }
        SDL_Surface* screen = SDL_GetWindowSurface(m_window);
        if (!m_backing || !screen)
            return;
        if (dirty.empty())
            dirty.push_back({ 0, 0, float(w), float(h) });
        std::vector<SDL_Rect> rects;
        for (const kit::Rect& r : dirty) {
            // Whole pixels, so that the screen gets exactly what was drawn.
            const float x0 = std::floor(r.minX()), y0 = std::floor(r.minY());
            const kit::Rect pixels { x0, y0, std::ceil(r.maxX()) - x0, std::ceil(r.maxY()) - y0 };
            window.displayRect(*m_backing, pixels);
            rects.push_back({ int(x0), h - int(pixels.maxY()), int(pixels.width()), int(pixels.height()) });
        }
        SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormatFrom(const_cast<std::uint8_t*>(m_backing->pixelData()), w,
            h, 32, m_backing->bytesPerRow(), SDL_PIXELFORMAT_ARGB8888);
        if (!picture)
            return;
        SDL_SetSurfaceBlendMode(picture, SDL_BLENDMODE_NONE);
        for (SDL_Rect& r : rects) {
            SDL_Rect to = r;
            SDL_BlitSurface(picture, &r, screen, &to);
        }
        SDL_FreeSurface(picture);
        SDL_UpdateWindowSurfaceRects(m_window, rects.data(), int(rects.size()));
    }

private:
    SDL_Window* m_window;
    kit::RefPtr<kit::GraphicsContext> m_backing;
};

/// How long the loop may sleep: until the run loop's next call or the ants' next step.
int sleepMilliseconds(std::optional<double> antsDue)
{
    auto& loop = kit::RunLoop::main();
    double until = loop.now() + kLongestSleepSeconds;
    if (auto due = loop.nextDueTime())
        until = std::min(until, *due);
    if (antsDue)
        until = std::min(until, *antsDue);
    return std::max(0, int(std::ceil((until - loop.now()) * 1000)));
}

} // namespace

bool InteractiveWindow::run(std::string& error, const Hook& afterStart, const Hook& beforeClose)
{
    // The window's own surface goes to the screen rect by rect; behind a renderer every step of
    // the ants would upload and draw the whole window (with a software GL, on the processor).
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        error = std::string("no display for the interactive window: ") + SDL_GetError();
        return false;
    }
    std::ostringstream report;
    SessionRunner runner(m_table, ".", report);
    const kit::Rect content = runner.canvas().window().contentView()->frame();
    SdlPtr<SDL_Window> sdlWindow(SDL_CreateWindow("Quillmark", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
        int(content.width()), int(content.height()), SDL_WINDOW_RESIZABLE));
    if (!sdlWindow) {
        error = std::string("cannot open the interactive window: ") + SDL_GetError();
        SDL_Quit();
        return false;
    }
    kit::RunLoop::main().setClock(kit::RunLoop::Clock::Wall);
    std::string problem;
    auto start = SessionScript::parse("run\n", "interactive", problem);
    runner.run(*start, problem);
    SDL_StartTextInput();
    if (afterStart)
        afterStart(runner);

    EventPump pump(runner, m_table);
    CursorMirror cursor;
    Screen screen(sdlWindow.get());
    CanvasView& view = runner.canvas().canvasView();
    if (!m_picture.empty())
        view.openPicture(m_picture);
    auto& loop = kit::RunLoop::main();
    bool changed = true;
    double antsDue = loop.now() + kAntSeconds;
    for (bool open = true; open;) {
        if (changed) {
            screen.show(runner.canvas().window(), {});
            changed = false;
        }
        cursor.update();
        const bool ants = view.hasOutline();
        SDL_Event e;
        if (SDL_WaitEventTimeout(&e, sleepMilliseconds(ants ? std::optional(antsDue) : std::nullopt))) {
            open = pump.handle(e);
            while (open && SDL_PollEvent(&e))
                open = pump.handle(e);
            changed = true;
        }
        changed = loop.runDue() > 0 || changed;
        if (ants && loop.now() >= antsDue) {
            view.advanceAnts();
            antsDue = loop.now() + kAntSeconds;
            if (!changed)
                screen.show(runner.canvas().window(), view.outlineArea());
        }
    }
    if (beforeClose)
        beforeClose(runner);
    kit::RunLoop::main().setClock(kit::RunLoop::Clock::Manual);
    sdlWindow.reset();
    SDL_Quit();
    return true;
}

} // namespace hostapp
