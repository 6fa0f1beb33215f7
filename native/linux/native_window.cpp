#include "native/native_window.h"

#include "native/linux/window_thread.h"
#include "platform/system_info.h"
#include "platform/x11/display_thread.h"
#include "utils/dialogs.h"
#include "utils/session_log.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace KAV::Native {

namespace {

constexpr std::chrono::milliseconds LongestOpening{2000};
constexpr std::int32_t NoWindow = -1; // as an error of Create()

/// What the thread that connects shares with the one that waits for it.
struct SAttempt {
    std::unique_ptr<CX11Window> window; // null: it failed
    std::u16string reason = u"the display doesn't answer";
};

xcb_window_t NumberOf(void* parent) noexcept {
    return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(parent));
}

/// Whatever hangs is left to the thread that connects. What it makes later goes with it, never shown.
std::shared_ptr<SAttempt> Connect(void* parent, std::int32_t width, std::int32_t height) {
    auto attempt = std::make_shared<SAttempt>();
    const bool ended = Platform::RunOnDisplayThread(
        [attempt, number = NumberOf(parent), width, height](const std::string& display) {
            attempt->window = CX11Window::Create(display, number, width, height, attempt->reason);
        },
        LongestOpening);
    return ended ? attempt : std::make_shared<SAttempt>();
}

void LogFailure(std::u16string_view reason) {
    Utils::LogLine(u"Error=The editor's window can't be opened: " + std::u16string(reason));
}

} // namespace

class CNativeWindow::CParts {
public:
    explicit CParts(std::shared_ptr<CWindowThread> owned) noexcept : thread(std::move(owned)) {}

    const std::shared_ptr<CWindowThread> thread;
    GUI::IWindowClient* client = nullptr; // the window's thread: between Create() and Destroy()
};

CNativeWindow::CNativeWindow() = default;

CNativeWindow::~CNativeWindow() = default;

bool CNativeWindow::IsAvailable() noexcept {
    return true;
}

std::int32_t CNativeWindow::FirstWidth(std::int32_t width) noexcept {
    try {
        constexpr int plainDots = 96;
        const auto display = Platform::DisplayAtOnce();
        const auto scaled =
            (static_cast<std::int64_t>(width) * display.dotsPerInch + plainDots / 2) / plainDots;
        const auto most = display.primaryWidth > 0 ? display.primaryWidth : scaled;
        return static_cast<std::int32_t>(std::min<std::int64_t>(scaled, most));
    } catch (...) { // no memory, or no thread, to ask it
        return width;
    }
}

bool CNativeWindow::Open(void* parent, std::int32_t width, std::int32_t height, IEditor& editor) {
    if (_parts != nullptr) return false;
    try {
        const auto attempt = Connect(parent, width, height);
        if (attempt->window == nullptr) {
            LogFailure(attempt->reason);
            return false;
        }
        auto thread = std::make_shared<CWindowThread>(std::move(attempt->window), editor);
        _parts = std::make_shared<CParts>(thread);
        thread->Start();
        return true;
    } catch (const std::exception&) { // no memory, or no thread
        _parts.reset();
        LogFailure(u"the system has no memory or thread for it");
        return false;
    }
}

void CNativeWindow::Close() noexcept {
    if (_parts == nullptr) return;
    const auto parts = _parts; // the editor uses it until the end
    parts->thread->Close();
    _parts.reset();
}

bool CNativeWindow::CallOut(const std::function<void()>& call) noexcept {
    const auto parts = _parts; // this object may end in the call
    try {
        return parts == nullptr || parts->thread->CallOut(call);
    } catch (...) { // what is called doesn't throw; a lock that fails is the end of it
        return false;
    }
}

void CNativeWindow::ResizeParent(std::int32_t width, std::int32_t height) noexcept {
    if (_parts == nullptr) return;
    try {
        // The loop belongs to the thread, so what is posted finds the window there.
        _parts->thread->Loop().Post(
            [thread = _parts->thread.get(), width, height] { thread->Window().ResizeParent(width, height); });
    } catch (...) { // no memory: the host's window keeps its size
        return;
    }
}

// What the window's thread asks of its window

std::int32_t CNativeWindow::Create(GUI::IWindowClient& client, void* /*parent*/, std::int32_t width,
    std::int32_t height, std::uint32_t framesPerSecond) noexcept {
    if (_parts == nullptr) return NoWindow;
    auto& window = _parts->thread->Window();
    window.Begin(client, _parts->thread->Loop(), framesPerSecond);
    _parts->client = &client;
    window.Resize(width, height); // it was made with the size of a moment ago
    return 0;
}

void CNativeWindow::Destroy() noexcept {
    if (_parts == nullptr || std::exchange(_parts->client, nullptr) == nullptr) return;
    _parts->thread->Window().End();
}

bool CNativeWindow::Exists() const noexcept {
    return _parts != nullptr && _parts->client != nullptr && _parts->thread->Window().IsThere();
}

/// Known hosts crash when a window moves into another one of theirs: the editor is closed and opened instead.
void CNativeWindow::Reparent(void* /*parent*/) noexcept {}

void CNativeWindow::Show(bool show) noexcept {
    if (Exists()) _parts->thread->Window().Show(show);
}

void CNativeWindow::Resize(std::int32_t width, std::int32_t height) noexcept {
    if (Exists()) _parts->thread->Window().Resize(width, height);
}

void CNativeWindow::SetRate(std::uint32_t framesPerSecond) noexcept {
    if (Exists()) _parts->thread->Window().SetRate(framesPerSecond);
}

void* CNativeWindow::Handle() const noexcept {
    if (!Exists()) return nullptr;
    return static_cast<Platform::IPictureTarget*>(&_parts->thread->Window());
}

void CNativeWindow::Capture(bool capture) noexcept {
    if (Exists()) _parts->thread->Window().Capture(capture);
}

void CNativeWindow::SetCursor(GUI::ECursor cursor) noexcept {
    if (Exists()) _parts->thread->Window().SetCursor(cursor);
}

void CNativeWindow::Focus() noexcept {
    if (Exists()) _parts->thread->Window().Focus();
}

void CNativeWindow::TrackLeave() noexcept {
    if (Exists()) _parts->thread->Window().TrackLeave();
}

bool CNativeWindow::IsShiftDown() const noexcept {
    return Exists() && _parts->thread->Window().IsShiftDown();
}

bool CNativeWindow::IsLeftControlDown() const noexcept {
    return Exists() && _parts->thread->Window().IsLeftControlDown();
}

std::int32_t CNativeWindow::HotX() const noexcept {
    return Exists() ? _parts->thread->Window().HotX() : 0;
}

std::int32_t CNativeWindow::HotY() const noexcept {
    return Exists() ? _parts->thread->Window().HotY() : 0;
}

// The display has no such settings.
std::uint32_t CNativeWindow::DoubleClickMs() const noexcept {
    return IWindow::DoubleClickMs();
}

std::int32_t CNativeWindow::DoubleClickWidth() const noexcept {
    return IWindow::DoubleClickWidth();
}

std::int32_t CNativeWindow::DoubleClickHeight() const noexcept {
    return IWindow::DoubleClickHeight();
}

std::int32_t CNativeWindow::DotsPerInch() const noexcept {
    return Exists() ? _parts->thread->Window().DotsPerInch() : IWindow::DotsPerInch();
}

void CNativeWindow::ShowMenu(const GUI::Menu& menu) noexcept {
    if (Exists()) _parts->thread->Window().ShowMenu(menu);
}

void CNativeWindow::CloseMenu() noexcept {
    if (Exists()) _parts->thread->Window().CloseMenu();
}

bool CNativeWindow::OpenTextBox(
    const GUI::SPixelRect& place, std::u16string_view text, bool numbersOnly) noexcept {
    return Exists() && _parts->thread->Window().OpenTextBox(place, text, numbersOnly);
}

std::u16string CNativeWindow::BoxText() const {
    return Exists() ? _parts->thread->Window().BoxText() : std::u16string();
}

void CNativeWindow::CloseTextBox() noexcept {
    if (Exists()) _parts->thread->Window().CloseTextBox();
}

/// Shown by a program of the desktop: neither this thread nor the host waits for it.
void CNativeWindow::ShowBox(std::u16string_view title, std::u16string_view text) noexcept {
    Utils::Dialogs().ShowError(title, text);
}

bool CNativeWindow::IsBoxUp() const noexcept {
    return false;
}

} // namespace KAV::Native
