#include "tools/kavhost/setup/patch_needs.h"

#include "tools/kavhost/base/text.h"
#include "utils/marked_text.h"

#include <algorithm>

namespace KAV::Host {

namespace {

constexpr std::string_view Beginning = "Needs: ";
constexpr std::string_view RoutingWord = "routing ";
constexpr std::string_view GroupsWord = " in group"; // one, or "groups"

bool IsDigit(char letter) noexcept {
    return letter >= '0' && letter <= '9';
}

/// The numbers in words such as "s 1, 2 and 4", which count from 1.
std::vector<int> GroupsIn(std::string_view words) {
    std::vector<int> groups;
    while (!words.empty()) {
        const auto size = static_cast<std::size_t>(std::ranges::find_if_not(words, IsDigit) - words.begin());
        if (const auto number = ReadIndex(words.substr(0, size)); number && *number >= 1)
            groups.push_back(*number - 1);
        words.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return groups;
}

SPatchNeed NeedOf(std::string_view words) {
    SPatchNeed need{std::string(words), {}, {}, {}};
    if (words == "groups connected in parallel") need.parallel = true;
    if (words == "groups connected in series") need.parallel = false;
    const auto place = words.rfind(GroupsWord);
    if (words.starts_with(RoutingWord) && place != std::string_view::npos && place > RoutingWord.size()) {
        need.groups = GroupsIn(words.substr(place + GroupsWord.size()));
        if (!need.groups.empty()) need.routing = words.substr(RoutingWord.size(), place - RoutingWord.size());
    }
    return need;
}

} // namespace

std::vector<SPatchNeed> ReadNeeds(std::string_view patch) {
    std::vector<SPatchNeed> needs;
    const auto information = Trim(Utils::ExtractTag(patch, "<patch_info", ">", "</"));
    if (!information.starts_with(Beginning)) return needs;
    Utils::CPieces pieces(information.substr(Beginning.size()), ";");
    while (pieces.Next()) {
        if (const auto words = Trim(pieces.Piece()); !words.empty()) needs.push_back(NeedOf(words));
    }
    return needs;
}

bool IsMet(const SPatchNeed& need, const CStateText& state) {
    if (need.parallel && *need.parallel != state.IsParallel()) return false;
    return std::ranges::all_of(need.groups, [&](int group) {
        const auto routing = state.Routing(group);
        return need.routing.empty() || (routing && EqualIgnoringCase(routing->name, need.routing));
    });
}

std::vector<SIdleToggles> FindIdleToggles(const CStateText& state) {
    std::vector<SIdleToggles> found;
    for (int group = 0; group < state.Groups(); ++group) {
        auto routing = *state.Routing(group);
        SIdleToggles idle{group, {}, {}};
        for (std::size_t toggle = routing.Entries().size(); toggle < MostRoutingEntries; ++toggle) {
            if (state.IsToggled(group, toggle)) idle.toggles.push_back(static_cast<int>(toggle));
        }
        if (idle.toggles.empty()) continue;
        idle.routing = std::move(routing);
        found.push_back(std::move(idle));
    }
    return found;
}

} // namespace KAV::Host
