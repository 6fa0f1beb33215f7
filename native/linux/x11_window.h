#pragma once

#include "gui/window.h"
#include "native/linux/x11_display.h"
#include "platform/picture_target.h"
#include "platform/window_loop.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Native {

/// The editor's window on an X11 display, from its creation to its end, with all that belongs to it: events,
/// ticks, focus, keys, cursor, capture, menu, text box, and the pictures that are put into it.
///
/// Threads: made on a helper thread, then only the window's.
class CX11Window : public Platform::IPictureTarget {
public:
    virtual ~CX11Window() = default;

    /// Makes the window in `parent`, hidden, and waits until the server has confirmed it. Null on failure;
    /// `reason` says which. Destroying it before Begin() leaves nothing on the display.
    static std::unique_ptr<CX11Window> Create(const std::string& display, xcb_window_t parent,
        std::int32_t width, std::int32_t height, std::u16string& reason);

    /// From now on `client` hears the events; `loop` says what is modal.
    virtual void Begin(
        GUI::IWindowClient& client, Platform::CWindowLoop& loop, std::uint32_t framesPerSecond) = 0;
    /// The client hears nothing any more. Ends drag, menu and text box, gives the focus back and destroys the
    /// window.
    virtual void End() noexcept = 0;
    /// Waits for the next event, tick or the readiness of `wake`, which it doesn't read, and handles what has
    /// come. False when the window or the connection is gone, after the client has heard OnGone(): no more
    /// rounds then.
    virtual bool Round(int wake) noexcept = 0;
    /// The connection's socket, for a thread that ends a wait by shutting it down.
    virtual int Descriptor() const noexcept = 0;
    /// True for a thread that has begun and not ended, and whose window is still there.
    virtual bool IsThere() const noexcept = 0;

    virtual void Show(bool show) noexcept = 0;
    virtual void Resize(std::int32_t width, std::int32_t height) noexcept = 0;
    virtual void ResizeParent(std::int32_t width, std::int32_t height) noexcept = 0;
    virtual void SetRate(std::uint32_t framesPerSecond) noexcept = 0;
    virtual void Capture(bool capture) noexcept = 0;
    virtual void SetCursor(GUI::ECursor cursor) noexcept = 0;
    virtual void Focus() noexcept = 0;
    virtual void TrackLeave() noexcept = 0;
    virtual bool IsShiftDown() const noexcept = 0;
    virtual bool IsLeftControlDown() const noexcept = 0;
    virtual std::int32_t HotX() const noexcept = 0;
    virtual std::int32_t HotY() const noexcept = 0;
    virtual std::int32_t DotsPerInch() const noexcept = 0;
    virtual void ShowMenu(const GUI::Menu& menu) noexcept = 0;
    virtual void CloseMenu() noexcept = 0;
    virtual bool OpenTextBox(
        const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept = 0;
    virtual std::u16string BoxText() const = 0;
    virtual void CloseTextBox() noexcept = 0;

protected:
    CX11Window() = default;
};

} // namespace KAV::Native
