#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::GUI {

/// The word that mouse events carry. On a button's release it has the bit of that button, on a move those of
/// the buttons that are held.
enum MouseFlag : std::uint32_t {
    MouseLeft = 1,
    MouseRight = 2,
    MouseShift = 4,
    MouseControl = 8,
    MouseDouble = 16, ///< of a press: the second of a double click
};

// Keys, by the numbers of the window system that numbers them by letter: those that the editor has a use for.
inline constexpr std::uint32_t KeyY = 0x59;
inline constexpr std::uint32_t KeyZ = 0x5A;
inline constexpr std::uint32_t KeyF1 = 0x70;

/// What a window tells its owner. All on the window's thread. Positions are pixels of the window from its top
/// left corner, and may lie outside it during a drag; times are milliseconds modulo 2^32.
class IWindowClient {
public:
    virtual void OnTick(std::uint32_t a_nTimeMs) = 0; ///< again and again, at the rate
    virtual void OnPress(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags, std::uint32_t a_nTimeMs) = 0;
    virtual void OnRelease(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) = 0;
    virtual void OnMove(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) = 0;
    virtual void OnLeave() = 0;
    virtual void OnWheel(float a_fNotches, std::uint32_t a_nFlags) = 0; ///< above 0: away from the user
    virtual void OnKey(std::uint32_t a_nKey, bool a_bDown) = 0;
    virtual void OnPaint() = 0;                           ///< the system has lost a part of the picture
    virtual void OnCancel() = 0;                          ///< a drag is over, whatever the buttons do
    virtual void OnCommand(std::uint32_t a_nCommand) = 0; ///< that was chosen from the menu
    virtual void OnTyped() = 0; ///< the text box is committed: by Enter, or because it lost the focus
    virtual void OnGone() = 0;  ///< the window was taken away; nothing comes after it
    /// A message of the window's own, 1025 to 2046, on a system that has such: nothing here posts one.
    virtual void OnUserMessage(std::uint32_t /*message*/) {}

protected:
    IWindowClient() = default;
    ~IWindowClient() = default;
};

/// One entry of a pop-up menu.
struct SMenuItem {
    std::u16string sText;
    std::uint32_t nCommand = 0; ///< 1..65535; of a sub-menu 0
    bool bChecked = false;
    bool bEnabled = true;
    bool bSeparator = false; ///< a line, without a text
    std::vector<SMenuItem> vsSub;
    bool bBold = false;

    bool operator==(const SMenuItem&) const = default;
};
using Menu = std::vector<SMenuItem>;

enum class ECursor : std::uint8_t { Arrow, SizeWidth, SizeBoth };

/// A rectangle in pixels.
struct SPixelRect {
    std::int32_t nL = 0, nT = 0, nW = 0, nH = 0;

    bool operator==(const SPixelRect&) const = default;
};

/// What the root of an editor asks of the system: the child window in the host's window, and what belongs to
/// it. This base does nothing and answers as a system without a screen; it stands for "no window".
///
/// Threads: the window's, which is that of the calls. Nothing throws. Nothing here waits for the
/// user, except where the system runs a loop of its own: then the client is called from inside the call.
class IWindow {
public:
    IWindow() = default;
    virtual ~IWindow() = default;
    IWindow(const IWindow&) = delete;
    IWindow& operator=(const IWindow&) = delete;

    // The window
    /// Makes the window, hidden, as a child of the host's; the client hears of it from now on. 0, or the
    /// system's number of the error.
    virtual std::int32_t Create(IWindowClient&, void* /*parent*/, std::int32_t /*width*/,
        std::int32_t /*height*/, std::uint32_t /*framesPerSecond*/) noexcept {
        return 0;
    }
    /// The client hears nothing any more when this returns.
    virtual void Destroy() noexcept {}
    virtual bool Exists() const noexcept { return false; }
    /// Moves the window into another one of the host's.
    virtual void Reparent(void* /*parent*/) noexcept {}
    virtual void Show(bool /*show*/) noexcept {}
    virtual void Resize(std::int32_t /*width*/, std::int32_t /*height*/) noexcept {}
    virtual void SetRate(std::uint32_t /*framesPerSecond*/) noexcept {}
    virtual void* Handle() const noexcept { return nullptr; } ///< for a renderer

    // The pointer and the keyboard
    virtual void Capture(bool /*capture*/) noexcept {} ///< all moves and releases come here
    virtual void SetCursor(ECursor) noexcept {}
    virtual void Focus() noexcept {}
    virtual void TrackLeave() noexcept {} ///< OnLeave() shall come when the pointer leaves
    virtual bool IsShiftDown() const noexcept { return false; }
    virtual bool IsLeftControlDown() const noexcept { return false; }
    virtual std::int32_t HotX() const noexcept { return 0; } ///< of the cursor
    virtual std::int32_t HotY() const noexcept { return 0; }
    virtual std::uint32_t DoubleClickMs() const noexcept { return 500; }
    virtual std::int32_t DoubleClickWidth() const noexcept { return 4; } ///< pixels
    virtual std::int32_t DoubleClickHeight() const noexcept { return 4; }
    virtual std::int32_t DotsPerInch() const noexcept { return 96; }

    // What the user is asked
    /// Opens a menu at the pointer. The choice, if there is one, comes as OnCommand(), before or after this
    /// returns.
    virtual void ShowMenu(const Menu&) noexcept {}
    virtual void CloseMenu() noexcept {}
    /// Opens the one line of text with all of it selected; it has the focus. False if there can be none.
    virtual bool OpenTextBox(const SPixelRect&, std::u16string_view /*text*/, bool /*numbersOnly*/) noexcept {
        return false;
    }
    virtual std::u16string BoxText() const { return {}; }
    /// Closes it without OnTyped().
    virtual void CloseTextBox() noexcept {}
    /// Tells of an error. It may be up long after this has returned.
    virtual void ShowBox(std::u16string_view /*title*/, std::u16string_view /*text*/) noexcept {}
    virtual bool IsBoxUp() const noexcept { return false; }
};

} // namespace KAV::GUI
