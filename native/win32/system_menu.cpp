#include "native/win32/system_menu.h"

#include <memory>
#include <string>
#include <utility>

namespace KAV::Native {

namespace {

struct SDestroy {
    void operator()(HMENU menu) const noexcept { DestroyMenu(menu); }
};
using Menu = std::unique_ptr<std::remove_pointer_t<HMENU>, SDestroy>;

/// A menu with these entries; null without memory or without a menu.
Menu MakeMenu(const GUI::Menu& entries) {
    Menu menu(CreatePopupMenu());
    if (menu == nullptr) return menu;
    UINT place = 0;
    for (const auto& entry : entries) {
        MENUITEMINFOW item{};
        item.cbSize = sizeof(item);
        std::wstring text(entry.sText.begin(), entry.sText.end());
        Menu inner;
        if (entry.bSeparator) {
            item.fMask = MIIM_FTYPE;
            item.fType = MFT_SEPARATOR;
        } else {
            item.fMask = MIIM_STRING | MIIM_FTYPE | MIIM_STATE | MIIM_ID;
            item.fType = MFT_STRING;
            item.wID = entry.nCommand;
            item.dwTypeData = text.data();
            item.fState = (entry.bChecked ? MFS_CHECKED : 0U) | (entry.bEnabled ? 0U : MFS_GRAYED) |
                          (entry.bBold ? MFS_DEFAULT : 0U);
            if (!entry.vsSub.empty()) {
                inner = MakeMenu(entry.vsSub);
                item.fMask |= MIIM_SUBMENU;
                item.hSubMenu = inner.get();
            }
        }
        if (InsertMenuItemW(menu.get(), place, TRUE, &item) == 0) continue;
        ++place;
        static_cast<void>(inner.release()); // it goes with the menu around it
    }
    return menu;
}

} // namespace

std::uint32_t CSystemMenu::Show(HWND owner, const GUI::Menu& menu) noexcept {
    try {
        if (_owner != nullptr) return 0;
        const auto made = MakeMenu(menu);
        POINT at{};
        if (made == nullptr || GetCursorPos(&at) == 0) return 0;
        _owner = owner;
        _isClosed = false;
        const auto chosen = TrackPopupMenu(made.get(),
            TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RETURNCMD | TPM_NONOTIFY, at.x, at.y, 0, owner, nullptr);
        _owner = nullptr;
        return _isClosed ? 0 : static_cast<std::uint32_t>(chosen);
    } catch (...) { // no memory
        return 0;
    }
}

void CSystemMenu::Close() noexcept {
    if (_owner == nullptr) return;
    _isClosed = true;
    EndMenu();
}

} // namespace KAV::Native
