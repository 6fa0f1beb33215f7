#include "native/native_window.h"

namespace KAV::Native {

/// There is no window on this system yet: opening fails, and the operations of the base do nothing.
class CNativeWindow::CParts {};

CNativeWindow::CNativeWindow() = default;

CNativeWindow::~CNativeWindow() = default;

bool CNativeWindow::IsAvailable() noexcept {
    return false;
}

std::int32_t CNativeWindow::FirstWidth(std::int32_t width) noexcept {
    return width;
}

bool CNativeWindow::Open(void*, std::int32_t, std::int32_t, IEditor&) {
    return false;
}

void CNativeWindow::Close() noexcept {}

bool CNativeWindow::CallOut(const std::function<void()>& call) noexcept {
    call();
    return true;
}

void CNativeWindow::ResizeParent(std::int32_t, std::int32_t) noexcept {}

std::int32_t CNativeWindow::Create(GUI::IWindowClient& client, void* parent, std::int32_t width,
    std::int32_t height, std::uint32_t framesPerSecond) noexcept {
    return IWindow::Create(client, parent, width, height, framesPerSecond);
}

void CNativeWindow::Destroy() noexcept {}

bool CNativeWindow::Exists() const noexcept {
    return false;
}

void CNativeWindow::Reparent(void*) noexcept {}
void CNativeWindow::Show(bool) noexcept {}
void CNativeWindow::Resize(std::int32_t, std::int32_t) noexcept {}
void CNativeWindow::SetRate(std::uint32_t) noexcept {}

void* CNativeWindow::Handle() const noexcept {
    return nullptr;
}

void CNativeWindow::Capture(bool) noexcept {}
void CNativeWindow::SetCursor(GUI::ECursor) noexcept {}
void CNativeWindow::Focus() noexcept {}
void CNativeWindow::TrackLeave() noexcept {}

bool CNativeWindow::IsShiftDown() const noexcept {
    return false;
}

bool CNativeWindow::IsLeftControlDown() const noexcept {
    return false;
}

std::int32_t CNativeWindow::HotX() const noexcept {
    return 0;
}

std::int32_t CNativeWindow::HotY() const noexcept {
    return 0;
}

std::int32_t CNativeWindow::DotsPerInch() const noexcept {
    return IWindow::DotsPerInch();
}

void CNativeWindow::ShowMenu(const GUI::Menu&) noexcept {}
void CNativeWindow::CloseMenu() noexcept {}

bool CNativeWindow::OpenTextBox(const GUI::SPixelRect&, std::u16string_view, bool) noexcept {
    return false;
}

std::u16string CNativeWindow::BoxText() const {
    return {};
}

void CNativeWindow::CloseTextBox() noexcept {}
void CNativeWindow::ShowBox(std::u16string_view, std::u16string_view) noexcept {}

bool CNativeWindow::IsBoxUp() const noexcept {
    return false;
}

} // namespace KAV::Native
