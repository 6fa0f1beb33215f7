#pragma once

#include "tools/kavhost/setup/state_text.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A patch contains neither routings nor how the groups are connected, and sounds wrong without those that it
/// was made for. The line of information of a patch can name them:
///
///     <patch_info>Needs: routing Mid-Side in groups 1 and 2; groups connected in parallel</patch_info>
///
/// Effects don't read that line. Any bytes can be read; threads: any.
namespace KAV::Host {

/// One thing that a patch needs.
struct SPatchNeed {
    std::string words;            ///< as the patch has it
    std::string routing;          ///< by name; empty: none
    std::vector<int> groups;      ///< from 0, which need that routing
    std::optional<bool> parallel; ///< how the groups are connected

    /// False for words that name something else: whether it is met is not known.
    bool IsKnown() const noexcept { return !routing.empty() || parallel.has_value(); }
};

/// What the text of a patch says it needs.
std::vector<SPatchNeed> ReadNeeds(std::string_view patch);

/// Whether an effect in this state has it. True for needs that are not known.
bool IsMet(const SPatchNeed& need, const CStateText& state);

/// Toggles of a group that are on without an entry of the group's routing.
struct SIdleToggles {
    int group = 0;
    std::vector<int> toggles; ///< from 0, in order
    SGroupRouting routing;
};
std::vector<SIdleToggles> FindIdleToggles(const CStateText& state);

} // namespace KAV::Host
