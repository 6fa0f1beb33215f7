#pragma once

#include "dsp/sample_scan.h"
#include "utils/realtime.h"

#include <cstdint>
#include <span>

namespace KAV::DSP {

/// Detects whether a channel has been silent for a given number of samples.
struct SilenceGate final {
    static constexpr float Threshold = 2e-8f; ///< linear; below this a sample counts as silent

    bool off = false;
    float mix = 1.0f;
    std::int64_t limit = 0; ///< samples
    std::int64_t count = 0; ///< silent samples so far
    bool silent = false;

    /// Reads one block and updates `silent`. The sample after the limit closes the gate, and the first
    /// sample at or above the threshold opens it, within this very block.
    KAV_REALTIME void Read(std::span<const float> channel) noexcept {
        if (off) return;
        // What came before the last sound no longer counts, so the scan runs backwards, and usually ends at
        // once.
        const std::size_t quiet = QuietEnd(channel, Threshold);
        if (quiet < channel.size()) {
            count = 0;
            silent = false;
        }
        if (silent) return;
        const auto last = count + static_cast<std::int64_t>(quiet);
        silent = count <= limit && limit < last; // a limit that has shrunk below the count counts as passed
        count = silent ? limit + 1 : last;
    }
};

} // namespace KAV::DSP
