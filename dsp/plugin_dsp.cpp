#include "dsp/plugin_dsp.h"

#include <algorithm>
#include <array>
#include <limits>

namespace KAV {

template<typename TSample, typename TValue, typename TFrame>
CPluginDSP<TSample, TValue, TFrame>::CPluginDSP() {
    SetSampleRate(44100.0f);
    SetBlockSize(1024);
}

template<typename TSample, typename TValue, typename TFrame>
void CPluginDSP<TSample, TValue, TFrame>::SetSampleRate(float rateHz) {
    // A denormal rate would be used as 0, because the thread flushes denormals.
    if (!(rateHz >= std::numeric_limits<float>::min() && rateHz <= MaxSampleRate)) return;
    TFrame::SetSampleRate(rateHz);
}

template<typename TSample, typename TValue, typename TFrame>
void CPluginDSP<TSample, TValue, TFrame>::SetBlockSize(int frames) {
    if (frames <= 0) return;
    const auto size = static_cast<std::size_t>(std::min(frames, MaxBlockSize));
    TFrame::SetBlockSize(size);
    _maxFrames = size;
}

template<typename TSample, typename TValue, typename TFrame>
void CPluginDSP<TSample, TValue, TFrame>::Process(
    TSample** channels, [[maybe_unused]] TSample** side, int channelCount, int frames) noexcept {
    if (channels == nullptr || channelCount <= 0 || frames <= 0) return;
    const auto count = static_cast<std::size_t>(std::min(channelCount, TFrame::MaxChannels));
    std::array<TSample*, std::size_t{TFrame::MaxChannels}> slice{};
    std::copy_n(channels, count, slice.begin());
    if (std::find(slice.begin(), slice.begin() + static_cast<std::ptrdiff_t>(count), nullptr) !=
        slice.begin() + static_cast<std::ptrdiff_t>(count)) {
        return;
    }
    auto rest = static_cast<std::size_t>(frames);
    while (rest > 0) {
        const std::size_t length = std::min(rest, _maxFrames);
        TFrame::ProcessBlock(std::span(slice).first(count), length);
        for (std::size_t channel = 0; channel < count; ++channel) slice[channel] += length;
        rest -= length;
    }
}

template class CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

} // namespace KAV
