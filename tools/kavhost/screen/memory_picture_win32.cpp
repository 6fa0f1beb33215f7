#include "tools/kavhost/screen/memory_picture_win32.h"

namespace KAV::Host {

CMemoryPicture::CMemoryPicture(std::int32_t width, std::int32_t height) noexcept
    : _context(CreateCompatibleDC(nullptr)) {
    const auto info = InfoOf(width, height);
    void* pixels = nullptr;
    _bitmap = CreateDIBSection(_context, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (_bitmap == nullptr) return;
    _pixels = static_cast<const std::uint32_t*>(pixels);
    _before = SelectObject(_context, _bitmap);
}

CMemoryPicture::~CMemoryPicture() {
    if (_bitmap != nullptr) {
        SelectObject(_context, _before);
        DeleteObject(_bitmap);
    }
    DeleteDC(_context);
}

BITMAPINFO CMemoryPicture::InfoOf(std::int32_t width, std::int32_t height) noexcept {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height; // the first row is the top one
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    return info;
}

} // namespace KAV::Host
