#pragma once

#include "utils/shared.h"

#include <cstdint>

namespace KAV::DSP {

/// Settings of the automatic gain stage. Threads: written by the user's side, read by the audio thread.
struct AutoGainSettings {
    Utils::CShared<std::uint8_t> filter{1};     ///< 0 flat, 1 K-weighted
    Utils::CShared<double> suspendLevel{-60.0}; ///< dB; exactly 0 never suspends
    Utils::CShared<double> rmsTime{2000.0};     ///< ms
    Utils::CShared<double> tolerance{1.0};      ///< dB
    Utils::CShared<double> maximumGain{10.0};   ///< dB
    Utils::CShared<double> maximumCut{20.0};    ///< dB, positive
};

} // namespace KAV::DSP
