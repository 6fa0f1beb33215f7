#include "tools/kavhost/setup/channel_use.h"

#include "tools/kavhost/setup/state_text.h"

#include <algorithm>
#include <set>

namespace KAV::Host {

namespace {

// Numbers of a group's parameters in the first group.
constexpr int SoloTag = 21;
constexpr int MuteTag = 22;
constexpr int LimiterTag = 34;

bool IsOn(const CStateText& state, int group, int tag) {
    return state.Value(TagOf(group, tag)).value_or(0) >= 0.5;
}

/// Of a pair of middle and side both channels belong to the group when either half does.
std::set<int> ChannelsOf(const CStateText& state, int group, const SGroupRouting& routing) {
    std::set<int> channels;
    const auto entries = routing.Entries();
    const bool isPair = routing.IsMidSide() && (state.IsToggled(group, 0) || state.IsToggled(group, 1));
    for (std::size_t entry = 0; entry < entries.size(); ++entry) {
        if (isPair || state.IsToggled(group, entry))
            channels.insert(entries[entry].begin(), entries[entry].end());
    }
    return channels;
}

} // namespace

std::vector<int> UnlimitedChannels(const CStateText& state, int channels) {
    const int groups = state.Groups();
    if (groups == 0) return {};
    const bool isBypassed = !state.Element("host_bypass").empty() && state.Element("host_bypass") != "0";
    bool anySolo = false;
    for (int group = 0; group < groups; ++group) anySolo = anySolo || IsOn(state, group, SoloTag);
    std::set<int> heard; // of groups that run
    std::set<int> limited;
    for (int group = 0; group < groups; ++group) {
        const bool runs = anySolo ? IsOn(state, group, SoloTag) : !IsOn(state, group, MuteTag);
        if (!runs) continue;
        const auto taken = ChannelsOf(state, group, *state.Routing(group));
        heard.insert(taken.begin(), taken.end());
        if (!isBypassed && IsOn(state, group, LimiterTag)) limited.insert(taken.begin(), taken.end());
    }
    std::vector<int> unlimited;
    for (int channel = 0; channel < channels; ++channel) {
        if (!limited.contains(channel) && (!anySolo || heard.contains(channel))) unlimited.push_back(channel);
    }
    return unlimited;
}

std::string InWords(const char* one, const std::vector<int>& numbers) {
    std::string words = one;
    if (numbers.size() > 1) words += "s";
    const char* separator = " ";
    for (std::size_t first = 0; first < numbers.size();) {
        auto last = first;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
        words += separator + std::to_string(numbers[first] + 1);
        if (last > first) words += "-" + std::to_string(numbers[last] + 1);
        separator = ", ";
        first = last + 1;
    }
    return words;
}

bool PutAllChannelsIntoFirstGroup(CStateText& state, int channels) {
    const auto routing = state.Routing(0);
    if (!routing) return false;
    std::set<int> reached;
    const auto entries = routing->Entries();
    for (const auto& entry : entries) reached.insert(entry.begin(), entry.end());
    bool reachesAll = true;
    for (int channel = 0; channel < channels; ++channel) reachesAll = reachesAll && reached.contains(channel);
    return reachesAll ? state.SetToggles(0, entries.size())
                      : state.SetRouting(0, RoutingOfChannels(channels));
}

} // namespace KAV::Host
