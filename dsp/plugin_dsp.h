#pragma once

#include "dsp/plugin_mc.h"
#include "utils/realtime.h"

#include <cstddef>
#include <cstdint>

namespace KAV {

/// The engine as a device uses it: checks what the host passes, and splits blocks that are longer than
/// announced.
///
/// Threads: SetSampleRate() and SetBlockSize() while audio is stopped; Process() on the audio thread.
template<typename TSample, typename TValue, typename TFrame>
class CPluginDSP : public TFrame {
public:
    static constexpr float MaxSampleRate = 1.6e6f; ///< Hz
    static constexpr int MaxBlockSize = 1 << 20;   ///< frames; longer blocks are cut

    /// Starts as if 44100 Hz and blocks of 1024 frames had been announced.
    CPluginDSP();

    /// Hz. A rate that is 0, denormal, negative, above MaxSampleRate or not a number changes nothing. Throws
    /// std::bad_alloc.
    void SetSampleRate(float rateHz);
    /// Longest block in frames. 0 or less changes nothing. Throws std::bad_alloc, and then the old size
    /// stays.
    void SetBlockSize(int frames);

    /// One block in place; `side` is the side chain, which this engine doesn't use. Does nothing if a pointer
    /// is null or there are no channels or frames. Channels beyond the sixteenth stay unchanged. A block that
    /// is longer than announced runs as several blocks.
    KAV_REALTIME void Process(TSample** channels, TSample** side, int channelCount, int frames) noexcept;

private:
    std::size_t _maxFrames = 0; // as last announced
};

extern template class CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

} // namespace KAV
