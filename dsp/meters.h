#pragma once

#include "dsp/smoother.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>

namespace KAV::DSP {

/// Places of a linear peak (0 or more) on the meters' scales, 0..1: seven segments of equal height from
/// -192 dB, or four from -48 dB. A peak of 0 is far below both.
float SevenPointScale(float peak) noexcept;
float FivePointScale(float peak) noexcept;

/// What the editor's meters show, 0..1 each: they rise at once and fall in their time. Threads:
/// SetBlockRate() and the Step operations on the audio thread; the published values on any thread.
class CMeters final {
public:
    static constexpr std::size_t Entries = 16;
    static constexpr std::size_t Groups = 4;

    /// Blocks per second, so that meters fall in the same time whatever the block's length is.
    KAV_REALTIME void SetBlockRate(float rateHz) noexcept;

    /// One step towards the block's linear peaks.
    KAV_REALTIME void StepSource(std::size_t entry, float peak) noexcept;
    KAV_REALTIME void StepGroup(std::size_t group, float peak) noexcept;
    KAV_REALTIME void StepEntry(std::size_t entry, float inputPeak, float outputPeak) noexcept;

    float Source(std::size_t entry) const noexcept { return _source.shown[entry]; } ///< before any processing
    float Group(std::size_t group) const noexcept { return _group.shown[group]; }
    float Input(std::size_t entry) const noexcept { return _input.shown[entry]; }   ///< entering the group
    float Output(std::size_t entry) const noexcept { return _output.shown[entry]; } ///< leaving the group

private:
    template<std::size_t COUNT>
    struct SFamily {
        std::array<float, COUNT> state{};
        std::array<Utils::CShared<float>, COUNT> shown;

        void Step(const Smoother& smoother, std::size_t place, float target) noexcept {
            state[place] = smoother.Step(state[place], target);
            shown[place] = state[place];
        }
    };

    Smoother _levelSmoother{0.0f, 500.0f, 44100.0f};
    Smoother _entrySmoother{0.0f, 2000.0f, 172.0f};
    SFamily<Entries> _source;
    SFamily<Groups> _group;
    SFamily<Entries> _input;
    SFamily<Entries> _output;
};

} // namespace KAV::DSP
