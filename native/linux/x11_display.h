#pragma once

#include "native/linux/typed_key.h"
#include "native/linux/x11_connection.h"
#include "pixels/bitmap.h"
#include "platform/picture_target.h"
#include "platform/x11/xcb_library.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Native {

class CX11Clipboard;

/// The connection of one opening of an editor, and what belongs to the display and not to one window. All
/// that it makes has the depth and visual of the host's window; those of the screen if pixels there aren't of
/// 32 bits with 8 for each colour.
///
/// Threads: the window's; made on a helper thread. Replies are waited for without limit: whoever closes the
/// editor ends such a wait by shutting the connection down. After the loss of the connection everything does
/// nothing.
class CX11Display final {
public:
    /// Connects, and takes depth and visual from `parent`. Null on failure; `reason` says which.
    static std::unique_ptr<CX11Display> Connect(
        const std::string& name, xcb_window_t parent, std::u16string& reason);
    ~CX11Display();
    CX11Display(const CX11Display&) = delete;
    CX11Display& operator=(const CX11Display&) = delete;

    xcb_connection_t* Connection() const noexcept;
    int Descriptor() const noexcept; ///< of the connection's socket
    bool IsLost() const noexcept;
    const xcb_screen_t& Screen() const noexcept; ///< that of the host's window
    xcb_window_t Root() const noexcept;
    std::uint8_t Depth() const noexcept;
    xcb_visualid_t Visual() const noexcept;
    xcb_colormap_t Colormap() const noexcept;
    xcb_atom_t Atom(std::string_view name);    ///< asked for once
    std::int32_t DotsPerInch() const noexcept; ///< Xft.dpi, or 96

    /// The time of the user's last event, which requests for the focus and grabs have to name.
    xcb_timestamp_t Time() const noexcept;
    void SetTime(xcb_timestamp_t time) noexcept;

    /// A child of `parent` (the root for pop-ups, which the window manager then leaves alone), not mapped.
    xcb_window_t MakeWindow(
        xcb_window_t parent, const Platform::SArea& place, std::uint32_t events, bool overrideRedirect) const;
    /// Copies a premultiplied picture to the top left corner of a window, in requests of any size.
    void Put(xcb_window_t window, const Pixels::SBitmap& picture);
    /// Copies an area of a picture, whose rows are `stride` bytes apart, to the same place of a window.
    void PutArea(
        xcb_window_t window, const std::uint8_t* pixels, std::int32_t stride, const Platform::SArea& area);
    /// The monitors in pixels of the root; the whole root if they aren't known.
    std::vector<Platform::SArea> Monitors() const;
    /// The monitor that this point of the root lies on, or the nearest one.
    Platform::SArea MonitorAt(std::int32_t x, std::int32_t y) const;
    /// The pointer on the root.
    bool Pointer(std::int32_t& x, std::int32_t& y) const;

    /// What a key event means. Call it for each key event, in order: sequences compose. The same event may be
    /// asked for again until the next one comes.
    STypedKey Typed(const xcb_key_press_event_t& event);
    /// Whether the left Control key is held: asks the display.
    bool IsLeftControlHeld();
    /// Forgets a begun compose sequence.
    void ResetCompose() noexcept;
    /// The texts that are copied and pasted. Made at the first call.
    CX11Clipboard& Clipboard();
    /// For every event of the connection: the user may have chosen other layouts, and other programs may want
    /// what was copied here.
    void OnEvent(const xcb_generic_event_t& event) noexcept;

    /// Sends what is in the buffer.
    void Flush() noexcept;

private:
    struct SParts;
    explicit CX11Display(std::unique_ptr<SParts> parts) noexcept;
    std::unique_ptr<SParts> _parts;
};

/// Something that lies over the editor and takes its events first: a menu, the text box, a list of files.
class IX11Overlay {
public:
    virtual ~IX11Overlay() = default;
    IX11Overlay(const IX11Overlay&) = delete;
    IX11Overlay& operator=(const IX11Overlay&) = delete;

    /// True if the event was for it. Events of the editor's own window come here as well, before the editor
    /// sees them.
    virtual bool OnEvent(const xcb_generic_event_t& event) = 0;
    /// The next moment at which it wants OnTime(), in milliseconds of Utils::TickMs(); false: none.
    virtual bool NextTime(std::uint32_t& /*timeMs*/) const { return false; }
    virtual void OnTime(std::uint32_t /*nowMs*/) {}

protected:
    IX11Overlay() = default;
};

} // namespace KAV::Native
