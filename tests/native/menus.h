#pragma once

#include "gui/window.h"

#include <string>
#include <utility>

namespace KAV::Tests {

inline GUI::SMenuItem Entry(std::u16string text, std::uint32_t command) {
    GUI::SMenuItem item;
    item.sText = std::move(text);
    item.nCommand = command;
    return item;
}

inline GUI::SMenuItem Disabled(GUI::SMenuItem item) {
    item.bEnabled = false;
    return item;
}

inline GUI::SMenuItem Checked(GUI::SMenuItem item) {
    item.bChecked = true;
    return item;
}

inline GUI::SMenuItem Bold(GUI::SMenuItem item) {
    item.bBold = true;
    return item;
}

inline GUI::SMenuItem Separator() {
    GUI::SMenuItem item;
    item.bSeparator = true;
    return item;
}

inline GUI::SMenuItem SubMenu(std::u16string text, GUI::Menu items) {
    GUI::SMenuItem item;
    item.sText = std::move(text);
    item.vsSub = std::move(items);
    return item;
}

/// So many entries with the commands first, first + 1 ...
inline GUI::Menu Entries(std::uint32_t count, std::uint32_t first) {
    GUI::Menu menu;
    for (std::uint32_t n = 0; n < count; ++n) {
        const auto number = std::to_string(n);
        menu.push_back(Entry(u"Entry " + std::u16string(number.begin(), number.end()), first + n));
    }
    return menu;
}

} // namespace KAV::Tests
