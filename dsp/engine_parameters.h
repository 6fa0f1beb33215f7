#pragma once

#include "utils/shared.h"

#include <array>
#include <cstdint>

namespace KAV::DSP {

/// One continuous parameter, normalised. After every write final = clamp(base + offset, 0, 1).
/// Threads: written by any one thread at a time, read by the audio thread once per block.
struct SValueTriple {
    Utils::CShared<float> final;  ///< what the signal path uses, always 0..1
    Utils::CShared<float> base;   ///< what the user set; saved and shown to the host; may lie outside 0..1
    Utils::CShared<float> offset; ///< what a macro adds; signed, not limited

    void SetBase(float value) noexcept {
        base = value;
        Combine();
    }
    void SetOffset(float value) noexcept {
        offset = value;
        Combine();
    }
    /// Keeps the offset and sets the base so that the final value becomes `value`.
    void SetFinal(float value) noexcept { SetBase(value - offset); }

private:
    void Combine() noexcept {
        const float sum = base + offset;
        if (sum >= 1.0f) {
            final = 1.0f;
        } else {
            final = sum > 0.0f ? sum : 0.0f; // not-a-number becomes 0
        }
    }
};

/// Everything that the user can set and the signal path reads. During a block a word has either its old or
/// its new value; the order of changes to different words is not defined. All words start at 0; the owner of
/// the parameter table gives them their defaults.
template<std::size_t CHANNELS, std::size_t GROUPS>
struct SEngineParameters {
    template<typename T>
    using PerGroup = std::array<T, GROUPS>;

    std::array<PerGroup<Utils::CShared<bool>>, CHANNELS> channelInGroup; ///< routing entry belongs to group
    PerGroup<Utils::CShared<bool>> groupButton;                          ///< group button lit
    PerGroup<Utils::CShared<bool>> solo;
    PerGroup<Utils::CShared<bool>> mute;
    Utils::CShared<std::int32_t> oversampling; ///< 0..3: the factor is 2 to that power
    Utils::CShared<bool> highQuality;          ///< steep oversampling filters
    PerGroup<SValueTriple> inputGain;
    PerGroup<SValueTriple> threshold;
    PerGroup<Utils::CShared<bool>> autoRelease;
    PerGroup<Utils::CShared<bool>> limiter;
    PerGroup<SValueTriple> release;
    PerGroup<SValueTriple> ceiling;
    SValueTriple mainInputGain;
    SValueTriple mainOutputGain;
    std::array<SValueTriple, 5> macro;
};

} // namespace KAV::DSP
