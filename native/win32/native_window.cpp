#include "native/native_window.h"

#include "native/win32/editor_window.h"
#include "native/win32/screen_density.h"

#include <algorithm>
#include <utility>

namespace KAV::Native {

namespace {

constexpr std::int32_t NoWindow = -1; // as an error of Create()

} // namespace

/// One opening. The window's own calls hold it, so that it outlives a close from inside of them.
class CNativeWindow::CParts {
public:
    CParts(void* parent, IEditor& editor) : host(static_cast<HWND>(parent)), owner(&editor), window(editor) {}

    HWND host;
    IEditor* owner; ///< null from Close() on
    CEditorWindow window;
};

CNativeWindow::CNativeWindow() = default;
CNativeWindow::~CNativeWindow() = default;

bool CNativeWindow::IsAvailable() noexcept {
    return true;
}

std::int32_t CNativeWindow::FirstWidth(std::int32_t width) noexcept {
    constexpr std::int32_t plainDots = 96;
    const auto scaled = static_cast<std::int32_t>(
        (static_cast<std::int64_t>(width) * ScreenDots() + plainDots / 2) / plainDots);
    const auto most = GetSystemMetrics(SM_CXSCREEN);
    return most > 0 ? std::min(scaled, static_cast<std::int32_t>(most)) : scaled;
}

bool CNativeWindow::Open(void* parent, std::int32_t, std::int32_t, IEditor& editor) {
    if (_parts != nullptr || !IsWindow(static_cast<HWND>(parent))) return false;
    try {
        _parts = std::make_shared<CParts>(parent, editor);
    } catch (const std::exception&) { // no memory
        return false;
    }
    const auto parts = _parts; // the editor may close from inside the call
    editor.OnOpened();         // which creates the window
    parts->window.Opened();
    if (parts->owner == nullptr || parts->window.Exists()) return parts->owner != nullptr;
    Close();
    return false;
}

void CNativeWindow::Close() noexcept {
    if (_parts == nullptr) return;
    const auto parts = std::exchange(_parts, nullptr);
    if (auto* const editor = std::exchange(parts->owner, nullptr)) {
        parts->window.Cancel();
        _parts = parts; // the editor ends its window by this object's operations
        editor->OnClosing();
        _parts.reset();
    }
    parts->window.End();
}

bool CNativeWindow::CallOut(const std::function<void()>& call) noexcept {
    const auto parts = _parts; // this object may end in the call
    try {
        call();
    } catch (...) { // what is called doesn't throw
        return false;
    }
    return parts == nullptr || parts->owner != nullptr;
}

void CNativeWindow::ResizeParent(std::int32_t width, std::int32_t height) noexcept {
    if (_parts == nullptr) return;
    constexpr UINT sizeAlone = SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER;
    SetWindowPos(_parts->host, nullptr, 0, 0, width, height, sizeAlone);
}

std::int32_t CNativeWindow::Create(GUI::IWindowClient& client, void* /*parent*/, std::int32_t width,
    std::int32_t height, std::uint32_t framesPerSecond) noexcept {
    if (_parts == nullptr) return NoWindow;
    return _parts->window.Begin(_parts->host, client, {width, height}, framesPerSecond);
}

void CNativeWindow::Destroy() noexcept {
    if (_parts != nullptr) _parts->window.End();
}

bool CNativeWindow::Exists() const noexcept {
    return _parts != nullptr && _parts->window.Exists();
}

void CNativeWindow::Reparent(void* parent) noexcept {
    if (!Exists() || !IsWindow(static_cast<HWND>(parent))) return;
    _parts->host = static_cast<HWND>(parent);
    SetParent(_parts->window.Handle(), _parts->host);
}

void CNativeWindow::Show(bool show) noexcept {
    if (Exists()) _parts->window.Show(show);
}

void CNativeWindow::Resize(std::int32_t width, std::int32_t height) noexcept {
    if (Exists()) _parts->window.Resize(width, height);
}

void CNativeWindow::SetRate(std::uint32_t framesPerSecond) noexcept {
    if (Exists()) _parts->window.SetRate(framesPerSecond);
}

void* CNativeWindow::Handle() const noexcept {
    return Exists() ? _parts->window.Handle() : nullptr;
}

void CNativeWindow::Capture(bool capture) noexcept {
    if (Exists()) _parts->window.Capture(capture);
}

void CNativeWindow::SetCursor(GUI::ECursor cursor) noexcept {
    if (Exists()) _parts->window.SetCursor(cursor);
}

void CNativeWindow::Focus() noexcept {
    if (Exists()) SetFocus(_parts->window.Handle());
}

void CNativeWindow::TrackLeave() noexcept {
    if (Exists()) _parts->window.TrackLeave();
}

bool CNativeWindow::IsShiftDown() const noexcept {
    return GetKeyState(VK_SHIFT) < 0;
}

bool CNativeWindow::IsLeftControlDown() const noexcept {
    return GetKeyState(VK_LCONTROL) < 0;
}

std::int32_t CNativeWindow::HotX() const noexcept {
    return PlainCursorsHotSpot().x;
}

std::int32_t CNativeWindow::HotY() const noexcept {
    return PlainCursorsHotSpot().y;
}

std::uint32_t CNativeWindow::DoubleClickMs() const noexcept {
    return GetDoubleClickTime();
}

std::int32_t CNativeWindow::DoubleClickWidth() const noexcept {
    return GetSystemMetrics(SM_CXDOUBLECLK);
}

std::int32_t CNativeWindow::DoubleClickHeight() const noexcept {
    return GetSystemMetrics(SM_CYDOUBLECLK);
}

std::int32_t CNativeWindow::DotsPerInch() const noexcept {
    return ScreenDots();
}

void CNativeWindow::ShowMenu(const GUI::Menu& menu) noexcept {
    if (!Exists()) return;
    const auto parts = _parts; // the menu's own loop may close the editor
    parts->window.ShowMenu(menu);
}

void CNativeWindow::CloseMenu() noexcept {
    if (Exists()) _parts->window.CloseMenu();
}

bool CNativeWindow::OpenTextBox(
    const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept {
    return Exists() && _parts->window.OpenTextBox(place, text, numbersOnly);
}

std::u16string CNativeWindow::BoxText() const {
    return Exists() ? _parts->window.BoxText() : std::u16string();
}

void CNativeWindow::CloseTextBox() noexcept {
    if (Exists()) _parts->window.CloseTextBox();
}

void CNativeWindow::ShowBox(std::u16string_view title, std::u16string_view text) noexcept {
    const auto parts = _parts; // the box's own loop may close the editor
    if (parts != nullptr) parts->window.ShowBox(title, text);
}

bool CNativeWindow::IsBoxUp() const noexcept {
    return _parts != nullptr && _parts->window.IsBoxUp();
}

} // namespace KAV::Native
