#pragma once

#include "gui/window.h"
#include "native/native_window.h"
#include "native/win32/text_box.h"

#include "platform/winapi/windows_header.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace KAV::Native {

/// The editor's window in a host's window. Threads: the host's, on which all messages come. Nothing throws.
///
/// A message may lead to the end of the editor, and of this object: the window procedure holds what it needs
/// until it returns.
class CEditorWindow final {
public:
    explicit CEditorWindow(IEditor& editor) noexcept;
    ~CEditorWindow();
    CEditorWindow(const CEditorWindow&) = delete;
    CEditorWindow& operator=(const CEditorWindow&) = delete;

    struct SSize {
        std::int32_t width = 0;
        std::int32_t height = 0;
    };
    /// Makes the window, hidden. 0, or the system's number of the error.
    std::int32_t Begin(
        HWND host, GUI::IWindowClient& client, const SSize& size, std::uint32_t framesPerSecond) noexcept;
    /// After Begin() and what the editor does then: OnRound() follows messages from now on.
    void Opened() noexcept;
    /// What the user is asked ends, as cancelled: the answer may still want the editor.
    void Cancel() noexcept;
    /// Nothing comes to the client after it.
    void End() noexcept;
    bool Exists() const noexcept;
    HWND Handle() const noexcept;

    void Show(bool show) noexcept;
    void Resize(std::int32_t width, std::int32_t height) noexcept;
    void SetRate(std::uint32_t framesPerSecond) noexcept;
    void Capture(bool capture) noexcept;
    void SetCursor(GUI::ECursor cursor) noexcept;
    void TrackLeave() noexcept;
    // The menu comes up when the outermost message has been handled, the box of an error after a tick.
    void ShowMenu(const GUI::Menu& menu) noexcept;
    void CloseMenu() noexcept;
    bool OpenTextBox(const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept;
    std::u16string BoxText() const;
    void CloseTextBox() noexcept;
    void ShowBox(std::u16string_view title, std::u16string_view text) noexcept;
    bool IsBoxUp() const noexcept;

private:
    struct SState;
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    static void CALLBACK OnTimer(HWND window, UINT message, UINT_PTR timer, DWORD time) noexcept;
    static void BeginMessage(SState& state) noexcept;
    static void EndMessage(const std::shared_ptr<SState>& state) noexcept;
    static void CloseWhatIsUp(SState& state, HWND window) noexcept;
    static void ShowNextMenu(const std::shared_ptr<SState>& state) noexcept;
    static void ShowBoxThatIsDue(const std::shared_ptr<SState>& state) noexcept;
    static LRESULT Handle(SState& state, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT HandlePointer(SState& state, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT HandleKey(SState& state, UINT message, WPARAM wParam, LPARAM lParam);

    std::shared_ptr<SState> _state;
};

} // namespace KAV::Native
