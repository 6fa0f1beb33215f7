#pragma once

#include "tools/kavhost/target/target_search.h"

#include <string>

namespace KAV::Host {

/// "-14 LUFS at -1 dBTP"
std::string TargetText(const STargets& targets);

/// What is in the way and the best that can be had, in one line without a file's name. `place` names where
/// the largest reduction is: "1:23", or "1:23 of second.wav".
std::string ReasonText(const STargets& targets, const SFound& found, const std::string& place);

} // namespace KAV::Host
