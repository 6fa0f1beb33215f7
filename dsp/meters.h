#pragma once

#include "dsp/smoother.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace KAV::DSP {

/// What the editor's meters show, 0..1 each: they rise at once and fall in their time. Threads:
/// SetBlockRate() and the Step operations on the audio thread; the published values on any thread.
class CMeters final {
public:
    static constexpr std::size_t Entries = 16;
    static constexpr std::size_t Groups = 4;

    /// Blocks per second, so that meters take the same time to fall whatever the block length.
    KAV_REALTIME void SetBlockRate(float rateHz) noexcept;

    using Peaks = std::array<float, Entries>;

    /// One step of all entries towards the block's linear peaks. Only those with a bit in `heard` have a
    /// peak; for the others it is 0, whatever the array holds there.
    KAV_REALTIME void StepSources(std::uint32_t heard, const Peaks& peaks) noexcept;
    KAV_REALTIME void StepEntries(
        std::uint32_t heard, const Peaks& inputPeaks, const Peaks& outputPeaks) noexcept;
    KAV_REALTIME void StepGroup(std::size_t group, float peak) noexcept {
        if (peak != 0.0f || _group.state[group] != 0.0f) MoveGroup(group, peak);
    }

    float Source(std::size_t entry) const noexcept { return _source.shown[entry]; } ///< before any processing
    float Group(std::size_t group) const noexcept { return _group.shown[group]; }
    float Input(std::size_t entry) const noexcept { return _input.shown[entry]; }   ///< entering the group
    float Output(std::size_t entry) const noexcept { return _output.shown[entry]; } ///< leaving the group

private:
    template<std::size_t COUNT>
    struct SFamily {
        std::array<float, COUNT> state{};
        std::array<Utils::CShared<float>, COUNT> shown;
        std::uint32_t nonZero = 0; // bit n: place n is above 0; the others stay at 0 while there is no sound

        void Step(const Smoother& smoother, std::size_t place, float target) noexcept {
            const std::uint32_t bit = std::uint32_t{1} << place;
            state[place] = smoother.Step(state[place], target);
            shown[place] = state[place];
            nonZero = state[place] == 0.0f ? nonZero & ~bit : nonZero | bit;
        }
    };

    void MoveGroup(std::size_t group, float peak) noexcept;

    Smoother _levelSmoother{0.0f, 500.0f, 44100.0f};
    Smoother _entrySmoother{0.0f, 2000.0f, 172.0f};
    SFamily<Entries> _source;
    SFamily<Groups> _group;
    SFamily<Entries> _input;
    SFamily<Entries> _output;
};

} // namespace KAV::DSP
