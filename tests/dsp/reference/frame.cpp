#include "tests/dsp/reference/frame.h"

#include "tests/dsp/reference/flush_scope.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

namespace KAV::Reference {

namespace {

constexpr std::size_t GroupCount = 4;
constexpr std::size_t EntryCount = 16;
constexpr std::size_t SlotLimit = 16;
constexpr float HighestRate = 1600000.0f;

} // namespace

CFrame::CFrame(CCoverage& coverage) : _coverage(coverage) {
    for (std::size_t g = 0; g < GroupCount; ++g) {
        _groups.push_back(std::make_unique<CFxGroup>(static_cast<int>(g), coverage));
    }
    SetSampleRate(44100.0f);
    SetBlockSize(1024);
    _hostAnnounced = false;
}

void CFrame::SetSampleRate(float rate) {
    if (!(rate > 0.0f) || rate > HighestRate) {
        _coverage.Hit(ECase::RateIgnored);
        return;
    }
    _coverage.Hit(rate == _sampleRate ? ECase::RateSame : ECase::RateChange);
    _sampleRate = rate;
    for (CSilenceGate& gate : _gates) gate.SetRate(rate);
    for (auto& group : _groups) group->SetSampleRate(rate);
}

void CFrame::SetBlockSize(int frames) {
    if (frames <= 0) {
        _coverage.Hit(ECase::BlockSizeIgnored);
        return;
    }
    _coverage.Hit(ECase::BlockSizeAnnounced);
    _announced = frames;
    _hostAnnounced = true;
    for (auto& group : _groups) group->SetBlock(8 * frames);
}

void CFrame::Apply(const SSettings& settings) {
    _settings = settings;
}

void CFrame::Process(float* const* channels, int channelCount, int frames) {
    if (channels == nullptr || channelCount <= 0 || frames <= 0) {
        _coverage.Hit(ECase::EmptyCall);
        return;
    }
    _coverage.HitIf(!_hostAnnounced, ECase::BlockBeforeAnyAnnouncement);
    _coverage.HitIf(frames > _announced, ECase::SlicedBlock);
    const std::size_t count = std::min<std::size_t>(static_cast<std::size_t>(channelCount), 16);
    for (int start = 0; start < frames; start += _announced) {
        std::array<float*, 16> slice{};
        for (std::size_t k = 0; k < count; ++k) slice[k] = channels[k] + start;
        ProcessSlice(slice.data(), count, std::min(_announced, frames - start));
    }
    _coverage.CloseBlock();
}

void CFrame::ProcessSlice(float* const* channels, std::size_t count, int frames) {
    _gainSmoother.SetRate(_sampleRate / static_cast<float>(frames));
    _factor = 1 << _settings.oversampling;
    _meters.SetRate(_sampleRate / static_cast<float>(frames));
    _anySolo = _settings.solo[0] || _settings.solo[1] || _settings.solo[2] || _settings.solo[3];
    const CFlushScope flush;
    ProcessFlushed(channels, count, frames);
}

// Not inlined, so that no arithmetic can be moved before the change of the control word.
[[gnu::noinline]] void CFrame::ProcessFlushed(float* const* channels, std::size_t count, int frames) {
    if (_processed) {
        _coverage.HitIf(count != _channels, ECase::ChannelCountChange);
        _coverage.HitIf(frames != _frames, ECase::BlockLengthChange);
        if (_settings.groupsParallel != _parallel) {
            _coverage.Hit(_settings.groupsParallel ? ECase::BecomesParallel : ECase::BecomesSerial);
        }
    }
    _channels = count;
    _frames = frames;
    _parallel = _settings.groupsParallel;
    _coverage.HitIf(_shown != _settings.editedGroup, ECase::MeterShowsOtherGroup);
    _shown = _settings.editedGroup;
    MeterSources(channels);
    OpenChannels(channels, count, frames);

    RunMainGain(_input, _settings.mainInput, ECase::MainInputSteps, ECase::MainInputSettled,
        ECase::MainInputZeroFromStart);
    _coverage.HitIf(_factor == 2, ECase::FactorTwo);
    _coverage.HitIf(_factor == 4, ECase::FactorFour);
    _coverage.HitIf(_factor == 8, ECase::FactorEight);
    _coverage.HitIf(_factor != std::exchange(_lastFactor, _factor), ECase::FactorChanges);
    _coverage.HitIf(_factor > 1 && _settings.highQuality, ECase::QualityUsed);
    const bool before = std::exchange(_quality, _settings.highQuality);
    _coverage.HitIf(_factor > 1 && before != _quality, ECase::QualitySwitched);
    _coverage.HitIf(
        _factor > 1 && std::count(_active.begin(), _active.begin() + static_cast<int>(count), nullptr) > 0,
        ECase::RaisedWithSkippedChannel);
    const int width = COversampler::Width(_settings.simd);
    _oversampler.Prepare(_sampleRate, _factor);
    _oversampler.Up(_active, frames, _quality, width, _coverage);
    for (std::size_t g = 0; g < GroupCount; ++g) RunGroup(g);
    CountConnections();
    if (_parallel) CopySums();
    _oversampler.Down(_active, frames, _quality, width, _coverage);
    if (_anySolo) SilenceUntaken();
    RunMainGain(_output, _settings.mainOutput, ECase::MainOutputSteps, ECase::MainOutputSettled,
        ECase::MainOutputZeroFromStart);
    _processed = true;
}

void CFrame::OpenChannels(float* const* channels, std::size_t count, int frames) {
    _coverage.HitIf(count == 16, ECase::SixteenChannels);
    _active.fill(nullptr);
    _used.fill(false);
    _takers.fill(0);
    for (std::size_t k = 0; k < count; ++k) {
        CountMaterial(channels[k], frames);
        _gates[k].Watch(channels[k], frames, _coverage);
        if (_gates[k].IsSilent()) {
            _coverage.Hit(ECase::ChannelSkipped);
            continue;
        }
        _active[k] = channels[k];
        if (_parallel) _sums[k].assign(static_cast<std::size_t>(frames * _factor), 0.0f);
    }
    const auto skipped = std::count(_active.begin(), _active.begin() + static_cast<int>(count), nullptr);
    _coverage.HitIf(static_cast<std::size_t>(skipped) == count, ECase::AllChannelsSkipped);
}

void CFrame::CountMaterial(const float* channel, int frames) {
    for (int i = 0; i < frames; ++i) {
        _coverage.HitIf(std::isnan(channel[i]), ECase::NanInput);
        _coverage.HitIf(std::isinf(channel[i]), ECase::InfiniteInput);
        // By its bits: with denormals flushed, any comparison treats one as zero.
        const std::uint32_t magnitude = std::bit_cast<std::uint32_t>(channel[i]) & 0x7FFFFFFFu;
        _coverage.HitIf(magnitude != 0 && magnitude < 0x00800000u, ECase::DenormalInput);
    }
}

void CFrame::RunMainGain(SMainGain& gain, float parameter, ECase steps, ECase settled, ECase zeroFromStart) {
    const float target = _settings.hostBypass ? 0.5f : parameter;
    if (gain.position != target) {
        _coverage.Hit(steps);
        gain.position = _gainSmoother.Step(gain.position, target, _coverage);
        const double position = gain.position;
        gain.stage.SetGain(static_cast<float>(std::pow(10.0, (48.0 * position - 24.0) / 20.0)));
    } else {
        // A parameter that starts at the position's own start never moves it: the gain is still 0 dB, not
        // -24.
        _coverage.Hit(!_processed && target == 0.0f ? zeroFromStart : settled);
    }
    for (float* channel : _active) {
        if (channel != nullptr) gain.stage.Apply(channel, _frames, _coverage);
    }
}

void CFrame::RunGroup(std::size_t group) {
    const int length = _frames * _factor;
    CFxGroup& fx = *_groups[group];
    fx.SetBlock(length);
    fx.Update(_settings, _factor);

    SList list = Gather(group);
    if (list.buffers.empty()) {
        _coverage.Hit(ECase::GroupEmpty);
        fx.RunEmpty();
        MeterGroup(group, list);
        return;
    }
    CountListRepeats(list);
    _coverage.HitIf(_parallel && fx.IsCrossfading(), ECase::MixBetweenParallel);
    fx.Run(list.buffers, length);
    if (_parallel) AddToSums(list);
    MeterGroup(group, list);
}

bool CFrame::GroupRuns(std::size_t group) {
    const bool solo = _settings.solo[group];
    const bool mute = _settings.mute[group];
    _coverage.HitIf(!_anySolo && mute, ECase::GroupMuted);
    _coverage.HitIf(solo && !mute, ECase::GroupSoloed);
    _coverage.HitIf(solo && mute, ECase::GroupSoloedAndMuted);
    _coverage.HitIf(_anySolo && !solo, ECase::GroupShutOutBySolo);
    return _anySolo ? solo : !mute;
}

CFrame::SList CFrame::Gather(std::size_t group) {
    SList list;
    for (std::size_t entry = 0; entry < EntryCount; ++entry) {
        if (!_settings.channelInGroup[entry][group]) {
            if (_groups[group]->MidSideMode() == 0) continue;
            _coverage.Hit(ECase::MidSideEntryOff);
        }
        if (!GroupRuns(group)) continue;
        const int* const pair = _settings.map[group][entry];
        _coverage.Hit(pair[0] >= 0 && pair[1] >= 0   ? ECase::EntryPair
                      : pair[0] >= 0 || pair[1] >= 0 ? ECase::EntrySingle
                                                     : ECase::EntryWithoutChannel);
        for (const int number : {pair[0], pair[1]}) {
            if (number < 0) continue;
            const std::size_t channel = static_cast<std::size_t>(number);
            if (channel >= _channels) {
                _coverage.Hit(ECase::ChannelOutOfRange);
                continue;
            }
            if (_active[channel] == nullptr) {
                _coverage.Hit(ECase::ChannelSkippedInList);
                continue;
            }
            if (list.channels.size() == SlotLimit) {
                _coverage.Hit(ECase::ListStopped);
                continue;
            }
            list.channels.push_back(channel);
            list.entries.push_back(static_cast<int>(entry));
            _used[channel] = true;
        }
    }
    for (const std::size_t channel : list.channels) {
        if (_parallel) list.copies.emplace_back(_active[channel], _active[channel] + _frames * _factor);
    }
    for (std::size_t slot = 0; slot < list.channels.size(); ++slot) {
        list.buffers.push_back(_parallel ? list.copies[slot].data() : _active[list.channels[slot]]);
    }
    return list;
}

void CFrame::MeterSources(float* const* channels) {
    for (int entry = 0; entry < 16; ++entry) {
        float peak = 0.0f;
        for (const int number : _settings.map[_shown][entry]) {
            if (number < 0 || number >= static_cast<int>(_channels)) continue;
            peak = PeakOf(channels[number], _frames, peak);
            _coverage.HitIf(
                _gates[static_cast<std::size_t>(number)].IsSilent(), ECase::MeterOfSkippedChannel);
        }
        _meters.Source(entry, peak);
    }
}

void CFrame::MeterGroup(std::size_t group, const SList& list) {
    std::vector<float> kept;
    for (std::size_t slot = 0; slot < list.channels.size(); ++slot) {
        kept.push_back(_groups[group]->TakeOutputPeak(slot));
    }
    _coverage.HitIf(kept.empty(), ECase::MeterOfEmptyGroup);
    _meters.Group(static_cast<int>(group), kept.empty() ? 0.0f : *std::max_element(kept.begin(), kept.end()));
    if (static_cast<int>(group) != _shown) return;
    _coverage.HitIf(kept.empty() && !GroupRuns(group), ECase::MeterOfInactiveGroup);
    for (int entry = 0; entry < 16; ++entry) {
        float in = 0.0f;
        float out = 0.0f;
        int shares = 0;
        for (std::size_t slot = 0; slot < list.entries.size(); ++slot) {
            if (list.entries[slot] != entry) continue;
            in = _groups[group]->TakeInputPeak(slot); // a second channel is shown instead of the first
            out = kept[slot];
            ++shares;
        }
        _coverage.HitIf(shares == 2, ECase::MeterOfPair);
        _coverage.HitIf(in > 0.0f && out == 0.0f, ECase::MeterTakesOldPeak);
        _meters.Entry(entry, in, out);
    }
}

void CFrame::CountListRepeats(const SList& list) {
    std::array<int, 16> slots{};
    for (const std::size_t channel : list.channels) ++slots[channel];
    for (std::size_t k = 0; k < slots.size(); ++k) {
        if (slots[k] > 0) ++_takers[k];
        if (slots[k] > 1) _coverage.Hit(_parallel ? ECase::ChannelTwiceParallel : ECase::ChannelTwiceSerial);
    }
}

void CFrame::AddToSums(const SList& list) {
    for (std::size_t slot = 0; slot < list.buffers.size(); ++slot) {
        std::vector<float>& sum = _sums[list.channels[slot]];
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += list.buffers[slot][i];
    }
}

void CFrame::CopySums() {
    for (std::size_t k = 0; k < _channels; ++k) {
        if (_used[k]) std::copy(_sums[k].begin(), _sums[k].end(), _active[k]);
    }
}

void CFrame::CountConnections() {
    for (std::size_t k = 0; k < _channels; ++k) {
        if (_active[k] == nullptr) continue;
        if (_takers[k] == 0) _coverage.Hit(_parallel ? ECase::ParallelUntaken : ECase::SerialUntaken);
        if (_takers[k] == 1) _coverage.Hit(_parallel ? ECase::ParallelSingle : ECase::SerialSingle);
        if (_takers[k] > 1) _coverage.Hit(_parallel ? ECase::ParallelSum : ECase::SerialChain);
    }
}

void CFrame::SilenceUntaken() {
    for (std::size_t k = 0; k < _channels; ++k) {
        if (_active[k] == nullptr) {
            _coverage.Hit(ECase::SoloWithSkippedChannel);
            continue;
        }
        _coverage.Hit(_used[k] ? ECase::SoloKeepsTakenChannel : ECase::SoloZeroesChannel);
        if (!_used[k]) std::fill(_active[k], _active[k] + _frames, 0.0f);
    }
}

int CFrame::GetLatency() {
    int groups = 0;
    int sum = 0;
    for (std::size_t g = 0; g < GroupCount; ++g) {
        bool anyToggle = false;
        for (std::size_t entry = 0; entry < EntryCount; ++entry) {
            anyToggle = anyToggle || _settings.channelInGroup[entry][g];
        }
        if (!anyToggle) continue;
        // At the rate of the current settings, even if no block has run with them yet.
        const double rateHz =
            static_cast<double>(_sampleRate) * static_cast<double>(1 << _settings.oversampling);
        const int lookAhead = static_cast<int>(CLimiter::LookAheadAt(rateHz));
        if (_settings.groupsParallel) {
            _coverage.Hit(g == 0 ? ECase::LatencyParallelFirst : ECase::LatencyParallelLater);
            return lookAhead;
        }
        ++groups;
        sum += lookAhead;
    }
    if (_settings.groupsParallel) {
        _coverage.Hit(ECase::LatencyParallelNone);
        return 0;
    }
    _coverage.Hit(groups == 0   ? ECase::LatencySerialNone
                  : groups == 1 ? ECase::LatencySerialOne
                                : ECase::LatencySerialSeveral);
    return sum;
}

float CFrame::Meter(int tag) {
    return _meters.Read(tag);
}

double CFrame::ReportedGain(int group) {
    return _groups[static_cast<std::size_t>(group)]->ReportedGain();
}

void CFrame::SetLatch(int group) {
    _groups[static_cast<std::size_t>(group)]->SetLatch();
}

} // namespace KAV::Reference
