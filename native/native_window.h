#pragma once

#include "gui/window.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace KAV::Native {

/// The editor that a window shows, as the window's thread calls it. Nothing throws.
class IEditor {
public:
    IEditor(const IEditor&) = delete;
    IEditor& operator=(const IEditor&) = delete;

    /// The server has a window for it: GUI::IWindow::Create() will succeed. First call.
    virtual void OnOpened() noexcept = 0;
    /// An event or a tick is about to come on the host's own thread; OnRound() follows. Only on Windows.
    virtual void OnMessage() noexcept {}
    /// After the events and ticks that have come together: the place for calls to the host (CallOut()).
    virtual void OnRound() noexcept = 0;
    /// The window is to go. Last call.
    virtual void OnClosing() noexcept = 0;

protected:
    IEditor() = default;
    ~IEditor() = default;
};

/// A window of this system in a host's window, and the thread that it belongs to: the host's on Windows, on
/// Linux one of its own, which lives from Open() to Close(). It lives as long as the instance.
///
/// Threads: the operations of GUI::IWindow are the window's; Open(), Close() and IsOpen() the host's, one at
/// a time; ResizeParent() and the static one any.
class CNativeWindow final : public GUI::IWindow {
public:
    CNativeWindow();
    ~CNativeWindow() override; ///< it isn't open
    /// Whether this system has such windows.
    static bool IsAvailable() noexcept;
    /// The width in pixels of a window that is `width` wide at 96 dots per inch, at this display's density
    /// and no wider than its primary monitor. Within three seconds, without a display `width` itself.
    static std::int32_t FirstWidth(std::int32_t width) noexcept;

    /// Makes a hidden window of that size in the host's window, and lets `editor`, which lives until Close()
    /// returns, begin on the window's thread. True when the server has confirmed the window; false after two
    /// seconds at most, and then nothing of it appears later; the session log says why. It waits for nothing
    /// that the host's thread would have to do.
    bool Open(void* parent, std::int32_t width, std::int32_t height, IEditor& editor);
    /// Ends the editor, the window and the thread, within about two seconds even if the display has stopped.
    /// Called from inside CallOut(), or while another thread is in it for that long, it ends editor and
    /// window itself and leaves the thread to end after that call; the thread touches nothing of the editor
    /// then.
    void Close() noexcept;
    /// Between Open() and Close(), also after the window was taken away.
    bool IsOpen() const noexcept { return _parts != nullptr; }

    /// On the window's thread, from OnRound(): runs `call`, which leaves this library. False when the window
    /// was closed meanwhile: the caller must return at once and touch nothing, it may have ended.
    bool CallOut(const std::function<void()>& call) noexcept;
    /// Gives the host's window this size, for a host that doesn't do so itself.
    void ResizeParent(std::int32_t width, std::int32_t height) noexcept;

    // GUI::IWindow
    std::int32_t Create(GUI::IWindowClient& client, void* parent, std::int32_t width, std::int32_t height,
        std::uint32_t framesPerSecond) noexcept override;
    void Destroy() noexcept override;
    bool Exists() const noexcept override;
    void Reparent(void* parent) noexcept override;
    void Show(bool show) noexcept override;
    void Resize(std::int32_t width, std::int32_t height) noexcept override;
    void SetRate(std::uint32_t framesPerSecond) noexcept override;
    /// A Platform::IPictureTarget on Linux.
    void* Handle() const noexcept override;
    void Capture(bool capture) noexcept override;
    void SetCursor(GUI::ECursor cursor) noexcept override;
    void Focus() noexcept override;
    void TrackLeave() noexcept override;
    bool IsShiftDown() const noexcept override;
    bool IsLeftControlDown() const noexcept override;
    std::int32_t HotX() const noexcept override;
    std::int32_t HotY() const noexcept override;
    std::uint32_t DoubleClickMs() const noexcept override;
    std::int32_t DoubleClickWidth() const noexcept override;
    std::int32_t DoubleClickHeight() const noexcept override;
    std::int32_t DotsPerInch() const noexcept override;
    void ShowMenu(const GUI::Menu& menu) noexcept override;
    void CloseMenu() noexcept override;
    bool OpenTextBox(
        const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept override;
    std::u16string BoxText() const override;
    void CloseTextBox() noexcept override;
    void ShowBox(std::u16string_view title, std::u16string_view text) noexcept override;
    bool IsBoxUp() const noexcept override;

private:
    class CParts;
    std::shared_ptr<CParts> _parts; // of one opening; its thread holds it, too
};

} // namespace KAV::Native
