#pragma once

#include "tools/kavhost/audio/sample_format.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace KAV::Host {

/// Puts the channels of a file that has them in another order into that of WAV files, which is that of the
/// bits of a speaker mask, and back.
class CChannelOrder final {
public:
    /// As in the file: nothing moves.
    CChannelOrder() = default;

    /// `wavChannels` has the place in WAV order of each of the file's channels, each place once.
    explicit CChannelOrder(std::vector<std::uint8_t> wavChannels);

    bool IsKept() const noexcept { return _wavChannels.empty(); }

    /// Whole frames, in place.
    void ToWav(std::span<float> interleaved);
    void ToFile(std::span<float> interleaved);

private:
    std::vector<std::uint8_t> _wavChannels; ///< empty if nothing moves
    std::vector<float> _frame;
};

/// The order of Vorbis and of Opus, which have the left, centre and right speaker in front and the LFE last.
/// It is defined up to eight channels; nothing moves above.
CChannelOrder OggOrder(int channels);

/// The speakers that the container gives to this many channels by its own definition, when the file itself
/// doesn't name any; nothing if it gives none.
std::optional<std::uint32_t> DefinedMask(EContainer container, int channels) noexcept;

} // namespace KAV::Host
