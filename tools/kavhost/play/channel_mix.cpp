#include "tools/kavhost/play/channel_mix.h"

#include <algorithm>
#include <numeric>

namespace KAV::Host {

namespace {

enum class ESpeaker { Left, Right, Centre, Lfe, BackLeft, BackRight, SideLeft, SideRight };
using enum ESpeaker;

constexpr float Neighbour = 0.70710678f; ///< the gain in a neighbour: half of the power

std::vector<ESpeaker> SpeakersOf(int channels) {
    switch (channels) {
    case 1:
        return {Centre};
    case 4:
        return {Left, Right, BackLeft, BackRight};
    case 6:
        return {Left, Right, Centre, Lfe, BackLeft, BackRight};
    case 8:
        return {Left, Right, Centre, Lfe, BackLeft, BackRight, SideLeft, SideRight};
    default:
        return {Left, Right};
    }
}

/// The gains for one device, to be filled.
class CGains final {
public:
    CGains(std::size_t from, std::size_t to, std::vector<float>& gains)
        : _from(from), _speakers(SpeakersOf(static_cast<int>(to))), _gains(gains) {
        _gains.assign(from * to, 0.0f);
    }

    bool Has(ESpeaker speaker) const noexcept { return Place(speaker) < _speakers.size(); }
    void Add(std::size_t channel, ESpeaker speaker, float gain) {
        if (Has(speaker)) _gains[Place(speaker) * _from + channel] += gain;
    }

    /// By the speaker itself, otherwise by those next to it.
    void AddSpeaker(std::size_t channel, ESpeaker speaker, float gain = 1) {
        if (Has(speaker)) return Add(channel, speaker, gain);
        switch (speaker) {
        case Left:
        case Right: // only mono has neither
            return Add(channel, Centre, gain);
        case Centre:
            AddSpeaker(channel, Left, gain * Neighbour);
            return AddSpeaker(channel, Right, gain * Neighbour);
        case BackLeft:
            return Has(SideLeft) ? Add(channel, SideLeft, gain) : AddSpeaker(channel, Left, gain * Neighbour);
        case BackRight:
            return Has(SideRight) ? Add(channel, SideRight, gain)
                                  : AddSpeaker(channel, Right, gain * Neighbour);
        case SideLeft:
            return Has(BackLeft) ? Add(channel, BackLeft, gain) : AddSpeaker(channel, Left, gain * Neighbour);
        case SideRight:
            return Has(BackRight) ? Add(channel, BackRight, gain)
                                  : AddSpeaker(channel, Right, gain * Neighbour);
        case Lfe:
            return;
        }
    }

    /// Lowers all by the same factor, so that none of the sums exceeds full scale.
    void Limit() {
        float most = 1;
        for (auto row = _gains.begin(); row != _gains.end(); row += static_cast<std::ptrdiff_t>(_from))
            most = std::max(most, std::accumulate(row, row + static_cast<std::ptrdiff_t>(_from), 0.0f));
        for (float& gain : _gains) gain /= most;
    }

private:
    std::size_t Place(ESpeaker speaker) const noexcept {
        return static_cast<std::size_t>(std::ranges::find(_speakers, speaker) - _speakers.begin());
    }

    std::size_t _from;
    std::vector<ESpeaker> _speakers;
    std::vector<float>& _gains;
};

} // namespace

bool IsUsualLayout(int channels) noexcept {
    return channels == 1 || channels == 2 || channels == 4 || channels == 6 || channels == 8;
}

void MixToStereo(std::span<const float> interleaved, int channels, std::span<float> stereo) noexcept {
    const int even = channels / 2;
    const float left = 1.0f / static_cast<float>(channels - even);
    const float right = 1.0f / static_cast<float>(std::max(even, 1));
    const float* from = interleaved.data();
    for (std::size_t i = 0; i + 1 < stereo.size(); i += 2) {
        float sums[2] = {};
        for (int c = 0; c < channels; ++c) sums[c % 2] += *from++;
        stereo[i] = sums[0] * left;
        stereo[i + 1] = sums[1] * right;
    }
}

CChannelMix::CChannelMix(int from, int to)
    : _from(static_cast<std::size_t>(from)), _to(static_cast<std::size_t>(to)) {
    CGains gains(_from, _to, _gains);
    const auto speakers = SpeakersOf(from);
    if (from == to) {
        for (std::size_t c = 0; c < _from; ++c) _gains[c * _from + c] = 1;
    } else if (from == 1 && to > 1) { // one that is meant for any speaker: at full level from both
        gains.Add(0, Left, 1);
        gains.Add(0, Right, 1);
    } else if (IsUsualLayout(from)) {
        for (std::size_t c = 0; c < _from; ++c) gains.AddSpeaker(c, speakers[c]);
        gains.Limit();
    } else {
        const auto left = (_from + 1) / 2;
        for (std::size_t c = 0; c < _from; ++c) {
            const bool isLeft = c % 2 == 0;
            gains.AddSpeaker(
                c, isLeft ? Left : Right, 1.0f / static_cast<float>(isLeft ? left : _from - left));
        }
        gains.Limit();
    }
}

void CChannelMix::Mix(std::span<const float> from, std::span<float> to) const noexcept {
    const float* frame = from.data();
    for (std::size_t i = 0; i + _to <= to.size(); i += _to, frame += _from) {
        const float* gain = _gains.data();
        for (std::size_t d = 0; d < _to; ++d) {
            float sum = 0;
            for (std::size_t c = 0; c < _from; ++c) sum += frame[c] * *gain++;
            to[i + d] = sum;
        }
    }
}

} // namespace KAV::Host
