#pragma once

#include "gui/window.h"
#include "native/linux/x11_display.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace KAV::Native {

/// A pop-up menu, drawn by us in windows of its own that no window manager touches. It works by mouse (press
/// and release, or press, drag, release) and by keyboard (arrows, Return, Escape, Home, End), grabs pointer
/// and keyboard while it is up, and works without when a grab is refused. Each of its windows stays on the
/// monitor where the pointer was, and scrolls when it is longer.
///
/// It ends by a choice, by Escape, or by a press elsewhere and its release, which nothing else sees. Then it
/// calls `ended` once, from inside OnEvent(), with the command or 0: `ended` may destroy it. While another
/// program holds the pointer, only presses in the editor's window count as elsewhere. Threads: the window's.
class CX11Menu : public IX11Overlay {
public:
    using Ended = std::function<void(std::uint32_t command)>;

    /// Opens it with the top left corner at the pointer, or in the corner of the screen if the pointer can't
    /// be had. Null if it is empty or can't be drawn. `owner` is the editor's window: keys go to it when the
    /// grab is refused.
    static std::unique_ptr<CX11Menu> Open(
        CX11Display& display, xcb_window_t owner, const GUI::Menu& menu, Ended ended);
};

} // namespace KAV::Native
