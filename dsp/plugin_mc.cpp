#include "dsp/plugin_mc.h"

#include "dsp/flush_denormals.h"
#include "dsp/level.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <utility>

namespace KAV::DSP {

namespace {

constexpr int SilenceSeconds = 5; // a channel leaves the path after so much silence

std::int64_t SilenceLimit(float rateHz) noexcept {
    return std::int64_t{SilenceSeconds} * static_cast<std::int64_t>(rateHz);
}

} // namespace

template<typename TSample, typename TValue>
CPluginMC<TSample, TValue>::CPluginMC() : _gainSmoother(100.0f, 100.0f, 44100.0f) {
    for (auto& gate : _gates) gate.limit = SilenceLimit(_rateHz);
    _autoGain.SetRate(_rateHz);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SetSampleRate(float rateHz) {
    for (auto& group : _groups)
        group.ReserveRate(rateHz); // this and the next can fail, and then nothing has changed
    _autoGain.SetRate(rateHz);
    for (auto& group : _groups) group.SetSampleRate(rateHz);
    _rateHz = rateHz;
    _oversampler.SetSampleRate(rateHz);
    for (auto& gate : _gates) gate.limit = SilenceLimit(rateHz);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SetBlockSize(std::size_t frames) {
    const std::size_t length = frames * std::size_t{Oversampler::MaxFactor};
    // What only grows goes first, then all at once what may shrink: a failure in between leaves room for the
    // old size.
    _oversampler.Reserve(frames);
    for (auto& group : _groups) group.Reserve(length);
    CChannelBuffers scratch;
    CChannelBuffers sums;
    scratch.Resize(length);
    sums.Resize(length);
    _autoGain.Reserve(frames);
    _scratch = std::move(scratch);
    _sums = std::move(sums);
}

template<typename TSample, typename TValue>
int CPluginMC<TSample, TValue>::Latency() const noexcept {
    const float rateHz = _rateHz;
    const auto lookahead = static_cast<int>(
        LookaheadLength(OversampledRate(std::int32_t{1} << this->parameters.oversampling, rateHz)));
    int latency = 0;
    for (std::size_t group = 0; group < GroupCount; ++group) {
        const bool used = std::any_of(this->parameters.channelInGroup.begin(),
            this->parameters.channelInGroup.end(), [group](const auto& entry) { return bool{entry[group]}; });
        if (!used) continue;
        latency += lookahead;
        if (groupsParallel) break; // the groups run side by side: the first one's delay stands for all
    }
    return latency;
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ProcessBlock(
    std::span<TSample* const> channels, std::size_t frames) noexcept {
    _gainSmoother.SetRate(float{_rateHz} / static_cast<float>(frames));
    _meters.SetBlockRate(float{_rateHz} / static_cast<float>(frames));
    const SBlock block = Snapshot(channels.size(), frames);
    const CFlushDenormals flushing;

    MeterSources(channels, block);
    ListenForSilence(channels, block);
    _input.Move(_gainSmoother, block.bypass ? 0.5f : float{this->parameters.mainInputGain.final});
    ApplyMainGain(_input, frames);
    if (autoGainLinks.enable) PrepareAutoGain(block);

    _oversampler.SetFactor(block.factor);
    _oversampler.SetHighQuality(this->parameters.highQuality);
    _oversampler.SetFeatures(block.features);
    const auto active = std::span(_active).first(block.channels);
    _oversampler.Up(active, frames);
    for (std::size_t group = 0; group < GroupCount; ++group) RunGroup(group, block);
    if (block.parallel) TakeSums(block);
    _oversampler.Down(active);

    if (block.anySolo) SilenceUnused(block);
    ApplyOutput(block);
}

template<typename TSample, typename TValue>
auto CPluginMC<TSample, TValue>::Snapshot(std::size_t channels, std::size_t frames) const noexcept -> SBlock {
    SBlock block;
    block.channels = channels;
    block.frames = frames;
    block.factor = std::int32_t{1} << this->parameters.oversampling;
    block.length = frames * static_cast<std::size_t>(block.factor);
    block.features = simd ? Utils::DetectFeatures() : 0;
    block.bypass = hostBypass;
    block.parallel = groupsParallel;
    for (std::size_t entry = 0; entry < ChannelCount; ++entry) {
        for (std::size_t group = 0; group < GroupCount; ++group) {
            block.channelInGroup[entry][group] = this->parameters.channelInGroup[entry][group];
        }
    }
    for (std::size_t group = 0; group < GroupCount; ++group) {
        block.solo[group] = this->parameters.solo[group];
        block.mute[group] = this->parameters.mute[group];
        block.anySolo |= block.solo[group];
        const bool midSide = this->routing[group].type == ERoutingType::MidSide;
        block.midSide[group] = MidSideMode(midSide && block.channelInGroup[0][group],
            midSide && block.channelInGroup[1][group], block.solo[group]);
    }
    block.shownGroup = std::min<std::size_t>(std::uint32_t{currentGroup}, GroupCount - 1);
    return block;
}

template<typename TSample, typename TValue>
SGroupSettings CPluginMC<TSample, TValue>::GroupSettings(
    std::size_t group, const SBlock& block) const noexcept {
    const auto& values = this->parameters;
    return {.inputGain = values.inputGain[group].final,
        .threshold = values.threshold[group].final,
        .ceiling = values.ceiling[group].final,
        .release = values.release[group].final,
        .autoRelease = values.autoRelease[group],
        .limiter = values.limiter[group],
        .bypass = block.bypass,
        .midSide = block.midSide[group]};
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SMainGain::Move(
    const Smoother& smoother, float target, bool refresh) noexcept {
    // Unlike a group's gain this one has no first computation: a target of exactly 0 finds the position there
    // and leaves the gain at 1.
    if (position == target && !refresh) return;
    position = smoother.Step(position, target);
    stage.gain = static_cast<float>(GainOfDb(48.0 * static_cast<double>(position) - 24.0));
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ListenForSilence(
    std::span<TSample* const> channels, const SBlock& block) noexcept {
    _active.fill(nullptr);
    _used.fill(false);
    for (std::size_t channel = 0; channel < block.channels; ++channel) {
        _gates[channel].Read({channels[channel], block.frames});
        _active[channel] = _gates[channel].silent ? nullptr : channels[channel];
        if (_active[channel] != nullptr && block.parallel)
            std::fill_n(_sums[channel], block.length, TSample{0});
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ApplyMainGain(const SMainGain& gain, std::size_t frames) noexcept {
    for (TSample* const channel : _active) {
        if (channel != nullptr) gain.stage.Process({channel, frames});
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::RunGroup(std::size_t group, const SBlock& block) noexcept {
    FxGroup& fx = _groups[group];
    fx.Prepare(GroupSettings(group, block), block.features, block.length, block.factor);
    const SGroupList list = Gather(group, block);
    fx.Process(std::span(list.buffers).first(list.count));
    if (block.parallel) AddToSums(list, block.length);
    MeterGroup(group, list, group == block.shownGroup);
}

/// What the host sends to the shown group's entries, silent channels included.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::MeterSources(
    std::span<TSample* const> channels, const SBlock& block) noexcept {
    const auto& map = this->routing[block.shownGroup].map;
    for (std::size_t entry = 0; entry < ChannelCount; ++entry) {
        float peak = 0.0f;
        for (const std::int32_t number : {std::int32_t{map[entry].first}, std::int32_t{map[entry].second}}) {
            if (number < 0 || static_cast<std::size_t>(number) >= block.channels) continue;
            _sourceProbe.Read({channels[static_cast<std::size_t>(number)], block.frames});
            peak = std::max(peak, _sourceProbe.Take());
        }
        _meters.StepSource(entry, peak);
    }
}

/// Of an entry with two channels the second one shows. Input probes of the groups that aren't shown go on
/// collecting.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::MeterGroup(std::size_t group, const SGroupList& list, bool shown) noexcept {
    std::array<float, ChannelCount> in{};
    std::array<float, ChannelCount> out{};
    float highest = 0.0f;
    for (std::size_t place = 0; place < list.count; ++place) {
        const float peak = _groups[group].outputProbes[place].Take();
        highest = std::max(highest, peak);
        out[list.entries[place]] = peak;
        if (shown) in[list.entries[place]] = _groups[group].inputProbes[place].Take();
    }
    _meters.StepGroup(group, highest);
    if (!shown) return;
    for (std::size_t entry = 0; entry < ChannelCount; ++entry) {
        _meters.StepEntry(entry, in[entry], out[entry]);
    }
}

template<typename TSample, typename TValue>
auto CPluginMC<TSample, TValue>::Gather(std::size_t group, const SBlock& block) noexcept -> SGroupList {
    SGroupList list;
    const bool runs = block.anySolo ? block.solo[group] : !block.mute[group];
    if (!runs) return list;
    for (std::size_t entry = 0; entry < ChannelCount; ++entry) {
        // A half that is switched off still belongs to the pair that the other half is made of.
        if (!block.channelInGroup[entry][group] && block.midSide[group] == EMidSide::Off) continue;
        const SRoutingPair& pair = this->routing[group].map[entry];
        for (const std::int32_t number : {std::int32_t{pair.first}, std::int32_t{pair.second}}) {
            if (number < 0 || static_cast<std::size_t>(number) >= block.channels) continue;
            const auto channel = static_cast<std::size_t>(number);
            if (_active[channel] == nullptr) continue;
            if (list.count == ChannelCount) return list; // a map may name more channels than a group can hold
            list.buffers[list.count] = _active[channel];
            if (block.parallel) {
                list.buffers[list.count] = _scratch[list.count];
                std::copy_n(_active[channel], block.length, _scratch[list.count]);
            }
            list.entries[list.count] = entry;
            list.channels[list.count++] = channel;
            _used[channel] = true;
        }
    }
    return list;
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::AddToSums(const SGroupList& list, std::size_t length) noexcept {
    for (std::size_t place = 0; place < list.count; ++place) {
        const TSample* part = list.buffers[place];
        TSample* sum = _sums[list.channels[place]];
        for (std::size_t i = 0; i < length; ++i) sum[i] += part[i];
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::TakeSums(const SBlock& block) noexcept {
    for (std::size_t channel = 0; channel < block.channels; ++channel) {
        if (_used[channel]) std::copy_n(_sums[channel], block.length, _active[channel]);
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::PrepareAutoGain(const SBlock& block) noexcept {
    const bool on = autoGainLinks.on != nullptr && *autoGainLinks.on;
    const bool automatic = autoGainLinks.automatic != nullptr && *autoGainLinks.automatic;
    _autoGain.Prepare(autoGain, block.bypass || !on, automatic,
        std::span<TSample* const>(_active).first(block.channels), block.frames);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ApplyOutput(const SBlock& block) noexcept {
    auto& final = this->parameters.mainOutputGain.final;
    const bool enabled = autoGainLinks.enable;
    _output.Move(_gainSmoother, block.bypass ? 0.5f : float{final}, enabled && _autoGain.TakeRefresh());
    if (!enabled || _autoGain.IsDisabled()) {
        ApplyMainGain(_output, block.frames);
    } else if (_autoGain.Run(autoGain, std::span<TSample* const>(_active).first(block.channels),
                   std::span<const bool>(_used).first(block.channels), block.frames, _output.position)) {
        final = _output.position; // the knob moves
    }
    if (enabled && autoGainLinks.adjusting != nullptr) {
        *autoGainLinks.adjusting = _autoGain.IsAdjusting() ? 1.0f : 0.0f;
    }
}

/// While a group is soloed, only what soloed groups took is heard.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SilenceUnused(const SBlock& block) noexcept {
    for (std::size_t channel = 0; channel < block.channels; ++channel) {
        if (_active[channel] != nullptr && !_used[channel]) {
            std::fill_n(_active[channel], block.frames, TSample{0});
        }
    }
}

template class CPluginMC<float, float>;

} // namespace KAV::DSP
