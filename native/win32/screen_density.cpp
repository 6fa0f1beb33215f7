#include "native/win32/screen_density.h"

#include "platform/winapi/windows_header.h"

namespace KAV::Native {

namespace {

std::int32_t ReadScreenDots() noexcept {
    constexpr std::int32_t plainDots = 96;
    // The system stretches the windows of such a process. Wine does too, but tells it the real density.
    if (IsProcessDPIAware() == 0) return plainDots;
    const HDC screen = GetDC(nullptr);
    if (screen == nullptr) return plainDots;
    const int dots = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dots > 0 ? dots : plainDots;
}

SHotSpot ReadHotSpot() noexcept {
    ICONINFO icon{};
    if (GetIconInfo(LoadCursorW(nullptr, IDC_ARROW), &icon) == 0) return {};
    if (icon.hbmMask != nullptr) DeleteObject(icon.hbmMask);
    if (icon.hbmColor != nullptr) DeleteObject(icon.hbmColor);
    return {static_cast<std::int32_t>(icon.xHotspot), static_cast<std::int32_t>(icon.yHotspot)};
}

} // namespace

std::int32_t ScreenDots() noexcept {
    static const std::int32_t dots = ReadScreenDots();
    return dots;
}

SHotSpot PlainCursorsHotSpot() noexcept {
    static const SHotSpot spot = ReadHotSpot();
    return spot;
}

} // namespace KAV::Native
