#include "bench/measure/rig.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace KAV::Measure {

namespace {

constexpr std::size_t Block = 512;

/// The position of a control whose range is -30..0 dB.
float Position(float db) noexcept {
    return (db + 30.0f) / 30.0f;
}

} // namespace

CRig::CRig(const SSettings& settings, std::size_t channels) : _factor(settings.factor) {
    auto& values = _engine.parameters;
    values.mainInputGain.SetBase(0.5f);
    values.mainOutputGain.SetBase(0.5f);
    values.inputGain[0].SetBase(1.0f);
    values.threshold[0].SetBase(Position(settings.thresholdDb));
    values.ceiling[0].SetBase(Position(settings.ceilingDb));
    values.release[0].SetBase(static_cast<float>((std::log10(settings.releaseMs) + 2.0) / 5.0));
    values.autoRelease[0] = settings.autoRelease;
    values.limiter[0] = true;
    values.oversampling = std::countr_zero(static_cast<unsigned>(settings.factor));
    values.highQuality = settings.highQuality;
    for (std::size_t c = 0; c < channels; ++c) {
        values.channelInGroup[c][0] = true;
        _engine.routing[0].SetPair(static_cast<int>(c), static_cast<int>(c), -1);
    }
    _engine.SetSampleRate(settings.rateHz);
    _engine.SetBlockSize(static_cast<int>(Block));
    Audio quiet(channels, std::vector<float>(static_cast<std::size_t>(settings.rateHz), 1e-4f));
    Run(quiet);
    for (auto& channel : quiet) std::fill(channel.begin(), channel.end(), 0.0f);
    Run(quiet);
}

void CRig::Run(Audio& audio) {
    std::array<float*, 16> pointers{};
    const std::size_t length = audio[0].size();
    for (std::size_t start = 0; start < length; start += Block) {
        for (std::size_t c = 0; c < audio.size(); ++c) pointers[c] = audio[c].data() + start;
        _engine.Process(pointers.data(), nullptr, static_cast<int>(audio.size()),
            static_cast<int>(std::min(Block, length - start)));
    }
}

double CRig::LookaheadDelay() const noexcept {
    return static_cast<double>(_engine.Latency()) / _factor;
}

} // namespace KAV::Measure
