#include "gui/menu.h"

#include <cstddef>
#include <limits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace KAV::GUI {

namespace {

constexpr std::u16string_view Mark = u"-sep-";
constexpr char16_t GroupEnd = u'_';

constexpr std::int32_t BoundCommands = 1100; // of a widget with an id of 0 or above
constexpr std::int32_t UnboundCommands = 200;

/// Entries that stand together in the menu.
struct SGroup {
    std::u16string sName; // of its sub-menu
    bool bSub = false;
    std::vector<std::size_t> vnEntries;
};

std::vector<SGroup> GroupsOf(std::span<const SListEntry> a_vsEntries) {
    std::vector<SGroup> groups;
    std::unordered_map<std::u16string_view, std::size_t> places;
    for (std::size_t n = 0; n < a_vsEntries.size(); ++n) {
        const auto text = a_vsEntries[n].sText;
        const auto end = text.find(GroupEnd);
        if (end == std::u16string_view::npos) {
            groups.push_back({{}, false, {n}});
            continue;
        }
        const auto [place, isNew] = places.try_emplace(text.substr(0, end), groups.size());
        if (isNew) groups.push_back({WithoutMarks(place->first), true, {}});
        groups[place->second].vnEntries.push_back(n);
    }
    return groups;
}

} // namespace

std::u16string WithoutMarks(std::u16string_view a_sEntry) {
    std::u16string text(a_sEntry);
    for (auto mark = text.find(Mark); mark != std::u16string::npos; mark = text.find(Mark, mark))
        text.erase(mark, Mark.size());
    return text;
}

SMenuChoice ChoiceOf(std::uint16_t a_nCommand) noexcept {
    const std::int32_t command = a_nCommand; // signed, for the ids below 0
    if (command < BoundCommands) return {command / -UnboundCommands, command % UnboundCommands};
    return {command / BoundCommands, command % BoundCommands};
}

std::optional<std::uint16_t> CommandOf(SMenuChoice a_sChoice) noexcept {
    if (a_sChoice.nItem < 0) return std::nullopt;
    const std::int64_t id = a_sChoice.nId;
    const std::int64_t command = (id < 0 ? -id * UnboundCommands : id * BoundCommands) + a_sChoice.nItem;
    if (command > std::numeric_limits<std::uint16_t>::max()) return std::nullopt;
    const auto number = static_cast<std::uint16_t>(command);
    if (number == 0 || ChoiceOf(number) != a_sChoice) return std::nullopt; // 0 is "nothing was chosen"
    return number;
}

Menu MenuOf(std::span<const SListEntry> a_vsEntries, std::int32_t a_nId) {
    std::vector<std::u16string> texts;
    texts.reserve(a_vsEntries.size());
    for (const auto& entry : a_vsEntries) texts.push_back(WithoutMarks(entry.sText));
    std::unordered_map<std::u16string_view, std::size_t> firsts;
    for (std::size_t n = 0; n < texts.size(); ++n) firsts.try_emplace(texts[n], n);

    Menu menu;
    for (const auto& group : GroupsOf(a_vsEntries)) {
        Menu entries;
        for (const std::size_t n : group.vnEntries) {
            const std::size_t first = firsts.at(texts[n]);
            const auto command = CommandOf({a_nId, static_cast<std::int32_t>(first)});
            const bool hasPlace = CommandOf({a_nId, static_cast<std::int32_t>(n)}).has_value();
            if (!command || !hasPlace || !a_vsEntries[first].bShown) continue;
            entries.push_back(
                {texts[n], *command, a_vsEntries[first].bChecked, a_vsEntries[first].bEnabled, false, {}});
            if (texts[n].size() != a_vsEntries[n].sText.size())
                entries.push_back({{}, 0, false, true, true, {}});
        }
        if (!group.bSub) {
            menu.insert(menu.end(), entries.begin(), entries.end());
        } else if (!entries.empty()) {
            menu.push_back({group.sName, 0, false, true, false, std::move(entries)});
        }
    }
    return menu;
}

} // namespace KAV::GUI
