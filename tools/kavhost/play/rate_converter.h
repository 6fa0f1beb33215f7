#pragma once

#include "tools/kavhost/play/audio_output.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace KAV::Host {

/// Interleaved audio at another rate, by a windowed sinc. Up to nine tenths of the band that both rates have
/// passes unchanged, what would be folded back is 80 dB down. At the same rate nothing changes.
/// Threads: Fill() on the one of the audio; it allocates nothing.
class CRateConverter final {
public:
    CRateConverter(int fromHz, int toHz, std::size_t channels);

    /// Fills whole frames at the second rate; asks `source` for those at the first that it needs.
    void Fill(std::span<float> interleaved, const AudioSource& source) noexcept;

private:
    void ReadMore(const AudioSource& source) noexcept;
    void MakeFrame(float* frame) const noexcept;

    std::uint32_t _fromHz;
    std::uint32_t _toHz;
    std::size_t _channels;
    std::size_t _taps = 0;      ///< input frames that make an output frame
    std::vector<float> _phases; ///< `_taps` coefficients for each place between two input frames
    std::vector<float> _input;  ///< what has been read and is needed again
    std::size_t _frames = 0;    ///< in it
    std::size_t _first = 0;     ///< the first one that the next output frame is made from
    std::uint32_t _between = 0; ///< where it lies after an input frame, in parts of the second rate
};

} // namespace KAV::Host
