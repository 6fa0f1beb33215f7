#pragma once

#include <string>
#include <vector>

namespace KAV::Host {

class CStateText;

/// The first `channels` channels, from 0, that come out of an effect in this state without having been
/// limited: they are in no group that runs, or only in groups whose limiter is off. Those that another
/// group's solo silences are not among them. Empty for states that know no groups.
std::vector<int> UnlimitedChannels(const CStateText& state, int channels);

/// Channels in words, counted from 1: "channel 4", "channels 1, 3-6". They are in order.
std::string InWords(const char* one, const std::vector<int>& numbers);

/// Puts the first `channels` channels into the first group: its toggles are switched on, and where its
/// routing doesn't reach all of the channels, it gets one that does. False, and nothing has changed, when the
/// text has no routing of that group or no toggle for one of the channels.
bool PutAllChannelsIntoFirstGroup(CStateText& state, int channels);

} // namespace KAV::Host
