#pragma once

#include "gui/window.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The pop-up menu of a list: its entries, their groups, and the commands by which a choice comes back.
namespace KAV::GUI {

/// A list's entry as its menu shows it. In the text "-sep-" asks for a line below the entry, and the part
/// before the first "_" names the sub-menu that the entry belongs to.
struct SListEntry {
    std::u16string_view sText;
    bool bShown = true;
    bool bChecked = false;
    bool bEnabled = true;
};

/// Which entry of which widget a command stands for.
struct SMenuChoice {
    std::int32_t nId = 0;
    std::int32_t nItem = 0;

    bool operator==(const SMenuChoice&) const = default;
};

/// The text of an entry without its marks, as the user reads it.
std::u16string WithoutMarks(std::u16string_view a_sEntry);

/// What a command means. Every command means something; whether there is such a widget isn't known here.
SMenuChoice ChoiceOf(std::uint16_t a_nCommand) noexcept;
/// The command of an entry: none if it would be read as another widget's, or if there are no more numbers. A
/// widget with an id below 0 has 200 commands, any other one 1100.
std::optional<std::uint16_t> CommandOf(SMenuChoice a_sChoice) noexcept;

/// The menu of a list whose widget has that id. Entries of a group stand together, at the place of the first
/// one and in a sub-menu. Of entries with one text the first one decides how all of them look and what they
/// choose. Entries without a command of their own are left out.
Menu MenuOf(std::span<const SListEntry> a_vsEntries, std::int32_t a_nId);

} // namespace KAV::GUI
