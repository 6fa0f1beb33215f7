#include "tools/kavhost/audio/channel_order.h"

#include <algorithm>
#include <array>

namespace KAV::Host {

namespace {

/// By channels, from three to eight. FLAC's definition leaves open whether a single pair of surrounds stands
/// at the back or at the sides; readers take it for the sides.
constexpr std::array<std::uint32_t, 6> OggMasks{0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};
constexpr std::array<std::uint32_t, 6> FlacMasks{0x7, 0x33, 0x607, 0x60F, 0x70F, 0x63F};

} // namespace

CChannelOrder::CChannelOrder(std::vector<std::uint8_t> wavChannels)
    : _wavChannels(std::move(wavChannels)), _frame(_wavChannels.size()) {
    if (std::ranges::is_sorted(_wavChannels)) _wavChannels.clear();
}

void CChannelOrder::ToWav(std::span<float> interleaved) {
    if (IsKept()) return;
    const std::size_t channels = _wavChannels.size();
    for (std::size_t at = 0; at + channels <= interleaved.size(); at += channels) {
        const auto frame = interleaved.subspan(at, channels);
        for (std::size_t c = 0; c < channels; ++c) _frame[_wavChannels[c]] = frame[c];
        std::ranges::copy(_frame, frame.begin());
    }
}

void CChannelOrder::ToFile(std::span<float> interleaved) {
    if (IsKept()) return;
    const std::size_t channels = _wavChannels.size();
    for (std::size_t at = 0; at + channels <= interleaved.size(); at += channels) {
        const auto frame = interleaved.subspan(at, channels);
        for (std::size_t c = 0; c < channels; ++c) _frame[c] = frame[_wavChannels[c]];
        std::ranges::copy(_frame, frame.begin());
    }
}

CChannelOrder OggOrder(int channels) {
    switch (channels) {
    case 3: // L C R
        return CChannelOrder({0, 2, 1});
    case 5: // L C R BL BR
        return CChannelOrder({0, 2, 1, 3, 4});
    case 6: // L C R BL BR LFE
        return CChannelOrder({0, 2, 1, 4, 5, 3});
    case 7: // L C R SL SR BC LFE
        return CChannelOrder({0, 2, 1, 5, 6, 4, 3});
    case 8: // L C R SL SR BL BR LFE
        return CChannelOrder({0, 2, 1, 6, 7, 4, 5, 3});
    default: // one, two and four are in WAV order
        return {};
    }
}

std::optional<std::uint32_t> DefinedMask(EContainer container, int channels) noexcept {
    if (channels < 3 || channels > 8) return std::nullopt;
    const auto row = static_cast<std::size_t>(channels - 3);
    if (container == EContainer::Ogg) return OggMasks[row];
    if (container == EContainer::Flac) return FlacMasks[row];
    return std::nullopt;
}

} // namespace KAV::Host
