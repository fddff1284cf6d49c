// InteractiveWindow: SDL2 events in, kit events out, and the window's picture back on screen.
#include "hostapp/InteractiveWindow.h"

#include "hostapp/SessionRunner.h"
#include "kit/Cursor.h"
#include "kit/Event.h"
#include "kit/Image.h"
#include "kit/RunLoop.h"
#include "kit/Window.h"

#include <SDL.h>

#include <iostream>
#include <memory>
#include <sstream>

namespace hostapp {

namespace {

// The screen is redrawn at most this often; events are handled as they come.
constexpr Uint32 kFrameMilliseconds = 16;

struct SdlDeleter {
    void operator()(SDL_Window* w) const { SDL_DestroyWindow(w); }
    void operator()(SDL_Renderer* r) const { SDL_DestroyRenderer(r); }
    void operator()(SDL_Texture* t) const { SDL_DestroyTexture(t); }
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
        SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormatFrom(
            const_cast<std::uint8_t*>(image.rgba().data()), image.pixelsWide(), image.pixelsHigh(), 32,
            image.pixelsWide() * 4, SDL_PIXELFORMAT_RGBA32);
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
        case SDL_TEXTINPUT: typed(e.text.text); break;
        case SDL_KEYDOWN: keyDown(e.key); break;
        case SDL_DROPFILE: dropped(e.drop); break;
        case SDL_WINDOWEVENT:
            if (e.window.event == SDL_WINDOWEVENT_SIZE_CHANGED)
                m_runner.canvas().setContentSize({ float(e.window.data1), float(e.window.data2) });
            break;
        default: break;
        }
        return true;
    }

private:
    kit::Window& window() { return m_runner.canvas().window(); }
    /// Window-system coordinates run down from the top; the kit's run up from the bottom.
    kit::Point point(int x, int y) { return { float(x), window().contentView()->frame().height() - float(y) }; }
    double now() const { return kit::RunLoop::main().now(); }

    void mouseButton(const SDL_MouseButtonEvent& b, bool down)
    {
        using kit::EventType;
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
        m_last = point(m.x, m.y);
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

    void typed(const char* text) { key(text, kit::KeyCodeNone); }

    void keyDown(const SDL_KeyboardEvent& k)
    {
        const bool command = (k.keysym.mod & KMOD_CTRL) != 0;
        if (command && k.keysym.sym == SDLK_z) {
            ((k.keysym.mod & KMOD_SHIFT) ? m_table.redo : m_table.undo)(m_runner.handle(), nullptr);
            return;
        }
        if (command && k.keysym.sym == SDLK_y) {
            m_table.redo(m_runner.handle(), nullptr);
            return;
        }
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
    kit::Point m_last;
};

/// Draws the kit window's picture into the SDL window.
bool present(SDL_Renderer* renderer, SdlPtr<SDL_Texture>& texture, kit::Window& window)
{
    auto picture = window.renderImage();
    if (!picture)
        return false;
    const int w = picture->pixelsWide(), h = picture->pixelsHigh();
    int tw = 0, th = 0;
    if (texture)
        SDL_QueryTexture(texture.get(), nullptr, nullptr, &tw, &th);
    if (!texture || tw != w || th != h)
        texture.reset(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGBA32, SDL_TEXTUREACCESS_STREAMING, w, h));
    if (!texture)
        return false;
    SDL_UpdateTexture(texture.get(), nullptr, picture->rgba().data(), w * 4);
    SDL_RenderClear(renderer);
    SDL_RenderCopy(renderer, texture.get(), nullptr, nullptr);
    SDL_RenderPresent(renderer);
    return true;
}

} // namespace

bool InteractiveWindow::run(std::string& error, const Hook& afterStart, const Hook& beforeClose)
{
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        error = std::string("no display for the interactive window: ") + SDL_GetError();
        return false;
    }
    std::ostringstream report;
    SessionRunner runner(m_table, ".", report);
    const kit::Rect content = runner.canvas().window().contentView()->frame();
    SdlPtr<SDL_Window> sdlWindow(SDL_CreateWindow("Quillmark", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                                  int(content.width()), int(content.height()), SDL_WINDOW_RESIZABLE));
    SdlPtr<SDL_Renderer> renderer(sdlWindow ? SDL_CreateRenderer(sdlWindow.get(), -1, 0) : nullptr);
    if (!renderer) {
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
    SdlPtr<SDL_Texture> texture;
    for (bool open = true; open;) {
        SDL_Event e;
        if (SDL_WaitEventTimeout(&e, int(kFrameMilliseconds))) {
            open = pump.handle(e);
            while (open && SDL_PollEvent(&e))
                open = pump.handle(e);
        }
        kit::RunLoop::main().runDue();
        cursor.update();
        present(renderer.get(), texture, runner.canvas().window());
    }
    if (beforeClose)
        beforeClose(runner);
    kit::RunLoop::main().setClock(kit::RunLoop::Clock::Manual);
    texture.reset();
    renderer.reset();
    sdlWindow.reset();
    SDL_Quit();
    return true;
}

} // namespace hostapp
