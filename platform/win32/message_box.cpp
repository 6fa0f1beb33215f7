#include "platform/message_box.h"

#include "platform/winapi/wide_text.h"

#include <windows.h>

namespace KAV::Platform {

namespace {

/// A service has an invisible desktop, where a message box would wait for ever.
bool HasUser() noexcept {
    USEROBJECTFLAGS flags{};
    DWORD length = 0;
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags), &length) ==
               0 ||
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

} // namespace

bool ShowErrorBox(const std::string& title, const std::string& text) noexcept {
    try {
        return HasUser() &&
               MessageBoxW(nullptr, ToWide(text).c_str(), ToWide(title).c_str(), MB_OK | MB_ICONERROR) > 0;
    } catch (...) { // no memory
        return false;
    }
}

bool ErrorBoxWaits() noexcept {
    return true;
}

} // namespace KAV::Platform
