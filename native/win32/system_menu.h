#pragma once

#include "gui/window.h"

#include "platform/winapi/windows_header.h"

#include <cstdint>

namespace KAV::Native {

/// The pop-up menu of an editor: the system's own. Threads: the window's. Nothing throws.
class CSystemMenu final {
public:
    CSystemMenu() = default;
    CSystemMenu(const CSystemMenu&) = delete;
    CSystemMenu& operator=(const CSystemMenu&) = delete;

    /// Shows it at the pointer and waits until it closes, while messages go on. The number of the entry that
    /// was chosen; 0: none.
    std::uint32_t Show(HWND owner, const GUI::Menu& menu) noexcept;
    /// Show() returns without a choice.
    void Close() noexcept;

private:
    HWND _owner = nullptr; // while one is up
    bool _isClosed = false;
};

} // namespace KAV::Native
