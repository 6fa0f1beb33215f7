#include "tools/kavhost/target/main_gains.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/setup/profile.h"
#include "utils/product.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace KAV::Host {

namespace {

constexpr const char* InputName = "Main Input Gain";
/// A fresh effect whose gain is at its very lowest leaves it at 0 dB until it is first moved.
constexpr double AboveLowestDb = 0.01;

constexpr const char* OutputName = "Main Output Gain";

SMainGain Find(const char* name, const CEffect& effect, const SProfile* profile) {
    const auto* const known = profile != nullptr ? profile->Find(std::string_view(name)) : nullptr;
    if (known == nullptr || known->law != ELaw::Linear || known->unit != "dB" ||
        known->index >= effect.Parameters()) {
        throw CUsageError(
            "--loudness and --true-peak need the " KAV_PRODUCT ": " + effect.Name() + " has no " + name);
    }
    const double span = known->maximum - known->minimum;
    const double value = static_cast<double>(effect.Parameter(known->index));
    return {known->index, known->minimum, known->maximum, {known->minimum + AboveLowestDb, known->maximum},
        known->minimum + value * span};
}

void CheckFree(
    const char* option, const char* name, const SMainGain& gain, std::span<const SSetting> settings) {
    if (std::ranges::find(settings, gain.index, &SSetting::index) == settings.end()) return;
    throw CUsageError(std::string("--set: ") + option + " searches for the " + name +
                      "; only a patch or a state may set the value at which the search starts");
}

} // namespace

SSetting SMainGain::At(double gainDb) const noexcept {
    // In steps that a state can keep, which is text with six decimals.
    constexpr double steps = 1e6;
    const double value = (gainDb - lowestDb) / (highestDb - lowestDb);
    return {index, static_cast<float>(std::round(std::clamp(value, 0.0, 1.0) * steps) / steps)};
}

SMainGains FindMainGains(const CEffect& effect, const SProfile* profile, const STargets& targets,
    std::span<const SSetting> settings) {
    const SMainGains gains{Find(InputName, effect, profile), Find(OutputName, effect, profile)};
    if (targets.loudnessLufs) CheckFree("--loudness", InputName, gains.input, settings);
    if (targets.truePeakDbtp) CheckFree("--true-peak", OutputName, gains.output, settings);
    return gains;
}

} // namespace KAV::Host
