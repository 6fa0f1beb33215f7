#pragma once

#include "gui/window.h"

#include "platform/winapi/windows_header.h"

#include <functional>
#include <string>
#include <string_view>

namespace KAV::Native {

/// The one line of text of an editor's window: a control of the system's, hidden until it is needed. Threads:
/// the window's. Nothing throws but where it is said.
class CTextBox final {
public:
    /// `committed` is called when the user presses Enter, or the box loses the focus.
    explicit CTextBox(std::function<void()> committed) noexcept : _committed(std::move(committed)) {}
    ~CTextBox() { End(); }
    CTextBox(const CTextBox&) = delete;
    CTextBox& operator=(const CTextBox&) = delete;

    /// In the editor's window, which has been made.
    void Begin(HWND parent) noexcept;
    /// Before the window goes.
    void End() noexcept;

    /// False if there is no box.
    bool Open(const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return _isOpen; }
    /// Throws std::bad_alloc.
    std::u16string Text() const;

private:
    static LRESULT CALLBACK OnMessage(HWND box, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    void Commit() noexcept;
    bool IsRefused(WPARAM character) const noexcept;

    std::function<void()> _committed;
    HWND _box = nullptr;
    WNDPROC _usual = nullptr; // what the control does by itself
    bool _isOpen = false;
    bool _numbersOnly = false;
};

} // namespace KAV::Native
