#include "dsp/plugin_mc.h"

#include "dsp/flush_denormals.h"
#include "dsp/level.h"
#include "dsp/sample_scan.h"
#include "utils/bits.h"
#include "utils/cpu_features.h"

#include <algorithm>
#include <utility>

namespace KAV::DSP {

namespace {

constexpr int SilenceSeconds = 5; // a channel leaves the path after this much silence

std::int64_t SilenceLimit(float rateHz) noexcept {
    return std::int64_t{SilenceSeconds} * static_cast<std::int64_t>(rateHz);
}

} // namespace

template<typename TSample, typename TValue>
CPluginMC<TSample, TValue>::CPluginMC() : _gainSmoother(100.0f, 100.0f, 44100.0f) {
    for (auto& gate : _gates) gate.limit = SilenceLimit(_rateHz);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SetSampleRate(float rateHz) {
    for (auto& group : _groups)
        group.ReserveRate(rateHz); // this call and the next may fail, and then nothing has changed
    if (_autoGainLinks.enable) _autoGain.SetRate(rateHz);
    for (auto& group : _groups) group.SetSampleRate(rateHz);
    _rateHz = rateHz;
    _oversampler.SetSampleRate(rateHz);
    for (auto& gate : _gates) gate.limit = SilenceLimit(rateHz);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SetBlockSize(std::size_t frames) {
    const std::size_t length = frames * std::size_t{Oversampler::MaxFactor};
    // First everything that only grows, then at once what may shrink: if something in between fails, there is
    // still room for the old size.
    _oversampler.Reserve(frames);
    if (length > _dry.Length()) _dry.Resize(length);
    CChannelBuffers scratch;
    CChannelBuffers sums;
    scratch.Resize(length);
    sums.Resize(length);
    if (_autoGainLinks.enable) _autoGain.Reserve(frames);
    _scratch = std::move(scratch);
    _sums = std::move(sums);
    _frames = frames;
    for (auto& group : _groups) group.SetBlock(length);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SetAutoGainLinks(const SAutoGainLinks& links) {
    if (links.enable) {
        _autoGain.Reserve(_frames);
        _autoGain.SetRate(_rateHz);
    }
    _autoGainLinks = links;
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
        if (groupsParallel) break; // the groups run side by side, so the first one's delay counts for all
    }
    return latency;
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ProcessBlock(
    std::span<TSample* const> channels, std::size_t frames) noexcept {
    const float blockRate = float{_rateHz} / static_cast<float>(frames);
    _gainSmoother.SetRate(blockRate);
    _meters.SetBlockRate(blockRate);
    const SBlock block = Snapshot(channels.size(), frames);
    const CFlushDenormals flushing;

    MeterSources(channels, block);
    ListenForSilence(channels, block);
    _input.Move(_gainSmoother, block.bypass ? 0.5f : float{this->parameters.mainInputGain.final});
    ApplyMainGain(_input, block);
    if (_autoGainLinks.enable) PrepareAutoGain(block);

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
    for (std::size_t group = 0; group < GroupCount; ++group) SnapshotGroup(group, block);
    block.shownGroup = std::min<std::size_t>(std::uint32_t{currentGroup}, GroupCount - 1);
    return block;
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::SnapshotGroup(std::size_t group, SBlock& block) const noexcept {
    const auto isOn = [&](std::size_t entry) { return bool{this->parameters.channelInGroup[entry][group]}; };
    const SRoutingRecord& record = this->routing[group];
    block.solo[group] = this->parameters.solo[group];
    block.mute[group] = this->parameters.mute[group];
    block.anySolo |= block.solo[group];
    if (record.type == ERoutingType::MidSide) {
        block.midSide[group] = MidSideMode(isOn(0), isOn(1), block.solo[group]);
    }
    const std::uint32_t entries = record.entriesWithChannels;
    if (block.midSide[group] != EMidSide::Off) {
        // A half that is switched off still belongs to the pair that the other half is part of.
        block.entries[group] = entries;
        return;
    }
    Utils::ForEachBit(
        entries, [&](std::size_t entry) { block.entries[group] |= std::uint32_t{isOn(entry)} << entry; });
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
    // Unlike a group's gain, this one isn't computed initially: with a target of exactly 0 the position is
    // already there, and the gain stays 1.
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
void CPluginMC<TSample, TValue>::ApplyMainGain(const SMainGain& gain, const SBlock& block) noexcept {
    for (TSample* const channel : std::span(_active).first(block.channels)) {
        if (channel != nullptr) gain.stage.Process({channel, block.frames});
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::RunGroup(std::size_t group, const SBlock& block) noexcept {
    _groups[group].Prepare(GroupSettings(group, block), block.features, block.length, block.factor);
    const bool runs = block.anySolo ? block.solo[group] : !block.mute[group];
    const bool shown = group == block.shownGroup;
    if (runs && block.entries[group] != 0) {
        LimitGroup(group, block, shown);
    } else {
        _meters.StepGroup(group, 0.0f);
        if (shown) _meters.StepEntries(0, {}, {});
    }
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::LimitGroup(std::size_t group, const SBlock& block, bool shown) noexcept {
    SGroupList list; // NOLINT(cppcoreguidelines-pro-type-member-init): most of it is never used
    Gather(group, block, list);
    _groups[group].Process(std::span(list.buffers).first(list.count), _dry);
    if (block.parallel) AddToSums(list, block.length);
    MeterGroup(group, list, shown);
}

/// Meters the host's input of the shown group's entries, silent channels included.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::MeterSources(
    std::span<TSample* const> channels, const SBlock& block) noexcept {
    const SRoutingRecord& record = this->routing[block.shownGroup];
    const std::uint32_t entries = record.entriesWithChannels;
    CMeters::Peaks peaks; // NOLINT(cppcoreguidelines-pro-type-member-init)
    Utils::ForEachBit(entries, [&](std::size_t entry) {
        const SRoutingPair& pair = record.map[entry];
        float peak = 0.0f;
        for (const std::int32_t number : {std::int32_t{pair.first}, std::int32_t{pair.second}}) {
            if (number < 0 || static_cast<std::size_t>(number) >= block.channels) continue;
            peak = PeakOf({channels[static_cast<std::size_t>(number)], block.frames}, peak);
        }
        peaks[entry] = peak;
    });
    _meters.StepSources(entries, peaks);
}

/// For an entry with two channels the second one is shown. Input probes of the groups that aren't shown keep
/// collecting.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::MeterGroup(std::size_t group, const SGroupList& list, bool shown) noexcept {
    CMeters::Peaks in;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    CMeters::Peaks out; // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::uint32_t heard = 0;
    float highest = 0.0f;
    for (std::size_t place = 0; place < list.count; ++place) {
        const float peak = _groups[group].outputProbes[place].Take();
        highest = std::max(highest, peak);
        const std::size_t entry = list.entries[place];
        heard |= std::uint32_t{1} << entry;
        out[entry] = peak;
        if (shown) in[entry] = _groups[group].inputProbes[place].Take();
    }
    _meters.StepGroup(group, highest);
    if (shown) _meters.StepEntries(heard, in, out);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::Gather(std::size_t group, const SBlock& block, SGroupList& list) noexcept {
    Utils::ForEachBit(block.entries[group], [&](std::size_t entry) {
        const SRoutingPair& pair = this->routing[group].map[entry];
        Take(entry, pair.first, block, list);
        Take(entry, pair.second, block, list);
    });
}

/// Adds host channel `number` to a group's list if it exists and isn't silent.
template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::Take(
    std::size_t entry, std::int32_t number, const SBlock& block, SGroupList& list) noexcept {
    if (number < 0 || static_cast<std::size_t>(number) >= block.channels) return;
    const auto channel = static_cast<std::size_t>(number);
    if (_active[channel] == nullptr) return;
    if (list.count == ChannelCount) return; // a map may name more channels than a group can hold
    TSample* buffer = _active[channel];
    if (block.parallel) {
        buffer = _scratch[list.count];
        std::copy_n(_active[channel], block.length, buffer);
    }
    list.buffers[list.count] = buffer;
    list.entries[list.count] = entry;
    list.channels[list.count++] = channel;
    _used[channel] = true;
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
    const bool on = _autoGainLinks.on != nullptr && *_autoGainLinks.on;
    const bool automatic = _autoGainLinks.automatic != nullptr && *_autoGainLinks.automatic;
    _autoGain.Prepare(autoGain, block.bypass || !on, automatic,
        std::span<TSample* const>(_active).first(block.channels), block.frames);
}

template<typename TSample, typename TValue>
void CPluginMC<TSample, TValue>::ApplyOutput(const SBlock& block) noexcept {
    auto& final = this->parameters.mainOutputGain.final;
    const bool enabled = _autoGainLinks.enable;
    _output.Move(_gainSmoother, block.bypass ? 0.5f : float{final}, enabled && _autoGain.TakeRefresh());
    if (!enabled || _autoGain.IsDisabled()) {
        ApplyMainGain(_output, block);
    } else if (_autoGain.Run(autoGain, std::span<TSample* const>(_active).first(block.channels),
                   std::span<const bool>(_used).first(block.channels), block.frames, _output.position)) {
        final = _output.position; // the knob moves
    }
    if (enabled && _autoGainLinks.adjusting != nullptr) {
        *_autoGainLinks.adjusting = _autoGain.IsAdjusting() ? 1.0f : 0.0f;
    }
}

/// While a group is soloed, only channels that soloed groups took are heard.
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
