#pragma once

#include "tools/kavhost/setup/state_text.h"

#include <string>
#include <vector>

namespace KAV::Host {

/// Adds what a routing calls the host's channels, by the number of the channel. Those that have a label keep
/// it; a channel between that no routing names has an empty one.
void AddChannelLabels(const SRouting& routing, std::vector<std::string>& labels);

} // namespace KAV::Host
