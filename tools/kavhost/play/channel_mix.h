#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace KAV::Host {

/// Whether frames of that many channels have a usual order of speakers: mono; left and right; these two and
/// the pair at the back; left, right, centre, LFE and back; the same and the sides.
bool IsUsualLayout(int channels) noexcept;

/// Mixes frames of any number of channels to two: the odd ones, counted from 1, left, the even ones right,
/// each at an equal part of full scale.
void MixToStereo(std::span<const float> interleaved, int channels, std::span<float> stereo) noexcept;

/// Frames of a file for the speakers of a device. A speaker that the device lacks is heard from its
/// neighbours, without LFE, and no sum exceeds full scale if its parts don't. Unusual layouts are mixed to
/// two as by MixToStereo().
/// Threads: any; Mix() allocates nothing.
class CChannelMix final {
public:
    CChannelMix(int from, int to);

    /// Whole frames, as many of `to` as of `from`.
    void Mix(std::span<const float> from, std::span<float> to) const noexcept;

private:
    std::size_t _from;
    std::size_t _to;
    std::vector<float> _gains; ///< of each channel in each of the device's, these one after another
};

} // namespace KAV::Host
