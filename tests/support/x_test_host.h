#pragma once

#include "tests/support/display.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace KAV::Tests {

/// What a host shows: a top-level window, and in it at (20, 30) the window that an editor is opened in. It
/// has a display and a connection of its own. What it sends to the display has been done when an operation
/// returns. The pointer and the keys are the user's, wherever they lead. Linux only. Threads: one.
class CXTestHost final {
public:
    struct SOptions {
        std::uint8_t depth = 0; ///< of its windows; 0: that of the screen
        bool redirects = false; ///< maps and configures the editor's window itself, when Answer() is called
        bool hasManager = true; ///< the top-level bears WM_STATE
        bool isFramed = false;  ///< the top-level is in a frame, as a window manager puts it
        const char* without = nullptr; ///< an extension that the display doesn't have
        const char* screen = CDisplay::UsualScreen;
        std::int32_t width = 400; ///< of the editor's parent
        std::int32_t height = 300;
    };

    CXTestHost();
    explicit CXTestHost(const SOptions& options);
    ~CXTestHost();
    CXTestHost(const CXTestHost&) = delete;
    CXTestHost& operator=(const CXTestHost&) = delete;

    const std::string& Display() const noexcept { return _name; }
    int Server() const noexcept { return _display.Server(); } ///< its process number
    void KillServer() { _display.Kill(); }                    ///< as CDisplay
    xcb_connection_t* Connection() const noexcept { return _connection; }
    xcb_window_t Root() const noexcept { return _screen->root; }
    xcb_window_t Frame() const noexcept { return _frame; } ///< 0: it has none
    xcb_window_t Top() const noexcept { return _top; }
    xcb_window_t Parent() const noexcept { return _parent; }
    /// The only child of the parent: the editor's window; 0: there is none.
    xcb_window_t Editor();

    // Windows
    xcb_window_t MakeWindow(xcb_window_t parent, std::int32_t x, std::int32_t y, std::int32_t width,
        std::int32_t height, bool overrideRedirect = false); ///< hidden
    void Show(xcb_window_t window, bool show);
    void Resize(xcb_window_t window, std::int32_t width, std::int32_t height);
    void Raise(xcb_window_t window);
    void Destroy(xcb_window_t window);
    void Reparent(xcb_window_t window, xcb_window_t parent, std::int32_t x, std::int32_t y);
    void MarkAsTop(xcb_window_t window); ///< with WM_STATE
    bool IsViewable(xcb_window_t window);
    bool Exists(xcb_window_t window);
    std::vector<xcb_window_t> Children(xcb_window_t window);
    struct SPlace {
        std::int32_t x = 0, y = 0, width = 0, height = 0;
        std::uint8_t depth = 0;
        bool operator==(const SPlace&) const = default;
    };
    SPlace Place(xcb_window_t window); ///< in its parent
    xcb_visualid_t VisualOf(xcb_window_t window);
    /// A property's 32-bit values.
    std::vector<std::uint32_t> Property(xcb_window_t window, const std::string& name);
    xcb_atom_t Atom(const std::string& name);
    /// Does what clients have asked for and it has redirected. The number of such requests.
    int Answer();

    // The focus
    void Focus(xcb_window_t window);
    xcb_window_t Focused();
    std::uint8_t FocusReverts(); ///< to what, when its window can't be seen any more

    // The user: positions are those of the editor's parent.
    void MoveTo(std::int32_t x, std::int32_t y);
    void Press(int button);
    void Release(int button);
    void Click(int button);
    void Key(std::uint32_t symbol, bool down);
    void Type(std::uint32_t symbol); ///< press and release
    std::uint8_t KeyCode(std::uint32_t symbol);

    // What a window shows
    /// 0xAARRGGBB of a point of a window, or what the screen shows there if the window is the root.
    std::uint32_t Pixel(xcb_window_t window, std::int32_t x, std::int32_t y);
    std::vector<std::uint32_t> Pixels(
        xcb_window_t window, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

    /// The picture of the pointer as it is now: how much it covers.
    struct SPointerLook {
        std::int32_t width = 0, height = 0; ///< of what isn't transparent
        std::vector<std::uint32_t> pixels;
        bool operator==(const SPointerLook&) const = default;
    };
    SPointerLook PointerLook();

    // What has arrived at the host's own windows, oldest first
    struct SKey {
        xcb_window_t event = 0; ///< the event's field
        std::uint8_t code = 0;
        std::uint16_t state = 0;
        bool down = false;
        bool sent = false;
        bool operator==(const SKey&) const = default;
    };
    std::vector<SKey> Keys();
    struct SButton {
        xcb_window_t event = 0;
        std::uint8_t button = 0;
        bool down = false;
        xcb_timestamp_t time = 0;
    };
    std::vector<SButton> Buttons();
    /// Client messages and whatever else has arrived, by event type.
    int Count(std::uint8_t type);

    /// Waits until the display has done what was sent.
    void Sync();

private:
    void FakeInput(std::uint8_t type, std::uint8_t detail, std::int32_t x = 0, std::int32_t y = 0);
    void ReadEvents();

    CDisplay _display;
    std::string _name;
    xcb_connection_t* _connection = nullptr;
    const xcb_screen_t* _screen = nullptr; // of the connection
    std::uint8_t _depth = 0;
    xcb_visualid_t _visual = 0;
    xcb_colormap_t _colormap = 0;
    xcb_window_t _frame = 0;
    xcb_window_t _top = 0;
    xcb_window_t _parent = 0;
    std::vector<SKey> _keys;
    std::vector<SButton> _buttons;
    std::vector<std::uint8_t> _types;
    std::vector<std::function<void()>> _requests; // that have been redirected
};

} // namespace KAV::Tests
