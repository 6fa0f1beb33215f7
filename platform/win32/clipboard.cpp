#include "platform/clipboard.h"

#include "platform/winapi/wide_text.h"

#include <cstring>
#include <windows.h>

namespace KAV::Platform {

namespace {

UINT Format(const std::string& format) {
    return RegisterClipboardFormatW(ToWide(format).c_str());
}

/// An invisible window that receives only messages of its own thread. Emptying the clipboard makes the window
/// that opened it its owner. Without a window there is no owner, and Windows then refuses data.
class CMessageWindow final {
public:
    CMessageWindow() noexcept
        : _window(
              CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}
    ~CMessageWindow() {
        if (_window != nullptr) DestroyWindow(_window); // the data remains on the clipboard
    }
    CMessageWindow(const CMessageWindow&) = delete;
    CMessageWindow& operator=(const CMessageWindow&) = delete;
    HWND Get() const noexcept { return _window; }

private:
    HWND _window;
};

class COpenClipboard final {
public:
    COpenClipboard() noexcept : _open(_owner.Get() != nullptr && OpenClipboard(_owner.Get()) != 0) {}
    ~COpenClipboard() {
        if (_open) CloseClipboard();
    }
    COpenClipboard(const COpenClipboard&) = delete;
    COpenClipboard& operator=(const COpenClipboard&) = delete;
    bool IsOpen() const noexcept { return _open; }

private:
    CMessageWindow _owner; // lives as long as the clipboard is open
    bool _open;
};

SBytes Copy(HGLOBAL memory) noexcept {
    const void* const data = GlobalLock(memory);
    if (data == nullptr) return {};
    SBytes bytes = NewBytes(GlobalSize(memory));
    if (bytes.data != nullptr) std::memcpy(bytes.data.get(), data, bytes.size);
    GlobalUnlock(memory);
    return bytes;
}

/// On success the clipboard owns it.
bool Give(UINT format, const void* data, std::size_t size) noexcept {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (memory == nullptr) return false;
    if (void* const copy = GlobalLock(memory)) {
        std::memcpy(copy, data, size);
        GlobalUnlock(memory);
        if (SetClipboardData(format, memory) != nullptr) return true;
    }
    GlobalFree(memory);
    return false;
}

} // namespace

SBytes ReadClipboard(const std::string& format) noexcept {
    try {
        const UINT number = Format(format);
        if (number == 0 || IsClipboardFormatAvailable(number) == 0) return {};
        const COpenClipboard clipboard;
        const HANDLE memory = clipboard.IsOpen() ? GetClipboardData(number) : nullptr;
        return memory != nullptr ? Copy(memory) : SBytes{};
    } catch (...) { // no memory
        return {};
    }
}

bool WriteClipboard(const std::string& format, const void* data, std::size_t size) noexcept {
    try {
        const UINT number = Format(format);
        const COpenClipboard clipboard;
        return number != 0 && clipboard.IsOpen() && EmptyClipboard() != 0 && Give(number, data, size);
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
