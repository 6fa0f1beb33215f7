#include "tools/kavhost/target/reasons.h"

#include "tools/kavhost/base/text.h"

#include <cmath>

namespace KAV::Host {

namespace {

std::string Comes(const SFound& found) {
    return Fixed(found.reached.loudnessLufs, 1);
}

std::string Gain(double decibels) {
    return (decibels > 0 ? "+" : "") + Shortest(std::round(decibels * 100) / 100) + " dB";
}

std::string ReductionText(const STargets& targets, const SFound& found, const std::string& place) {
    const auto most = Shortest(*targets.mostReductionDb);
    auto text = TargetText(targets) + " needs " + Fixed(found.needed.reductionDb, 1) +
                " dB of reduction at " + place + ", more than " + most;
    return text + "; with " + most + " dB the loudness is " + Comes(found);
}

} // namespace

std::string TargetText(const STargets& targets) {
    std::string text;
    if (targets.loudnessLufs) text = Shortest(*targets.loudnessLufs) + " LUFS";
    if (targets.truePeakDbtp)
        text += (text.empty() ? "" : " at ") + Shortest(*targets.truePeakDbtp) + " dBTP";
    return text;
}

std::string ReasonText(const STargets& targets, const SFound& found, const std::string& place) {
    const auto text = TargetText(targets);
    switch (found.obstacle) {
    case EObstacle::NotFinite:
        return "has samples that are not finite numbers, so " + text + " can't be judged";
    case EObstacle::NoLoudness:
        return "has no loudness: it is silent, below the gate of -70 LUFS, or shorter than 0.4 s";
    case EObstacle::LowestGain:
        return text + " needs an input gain below the minimum of " + Gain(found.gains.inputDb) +
               "; at that gain the loudness is " + Comes(found);
    case EObstacle::HighestGain:
        return text + " needs an input gain above the maximum of " + Gain(found.gains.inputDb) +
               "; at that gain the loudness is " + Comes(found);
    case EObstacle::OutputGain:
        return text + " needs an output gain below the minimum of " + Gain(found.gains.outputDb) +
               "; at that gain the true peak is " + Fixed(found.reached.truePeakDbtp, 1) + " dBTP";
    case EObstacle::Reduction:
        return ReductionText(targets, found, place);
    case EObstacle::NoFit:
    case EObstacle::None:
        break;
    }
    return text +
           " can't be reached with any input gain: the sound is too dense, or its loudness jumps; the "
           "nearest is " +
           Comes(found);
}

} // namespace KAV::Host
