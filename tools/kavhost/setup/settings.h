#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace KAV::Host {

class CEffect;
struct SProfile;

/// A host's value of a parameter.
struct SSetting {
    std::int32_t index;
    float value;
};

/// Reads what `--set` takes, in order:
///
///     NAME=QUANTITY   a parameter and a quantity as the profile has them: "Fall=100 ms"
///     INDEX=VALUE     the host's value, 0 to 1
///     INDEX:TEXT      what the effect's own display should show
///
/// The effect's parameters are changed on the way and stand at the settings afterwards. `profile` may be
/// null. Throws CUsageError for what is unknown or out of range.
std::vector<SSetting> ResolveSettings(
    std::span<const std::string> texts, CEffect& effect, const SProfile* profile);

void ApplySettings(std::span<const SSetting> settings, CEffect& effect);

} // namespace KAV::Host
