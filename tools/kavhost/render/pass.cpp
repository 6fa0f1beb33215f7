#include "tools/kavhost/render/pass.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/base/work_line.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/report/report.h"

#include <algorithm>

namespace KAV::Host {

namespace {

/// Samples of a block of the pipeline: enough that passing it on costs nothing, and few enough to stay in a
/// processor's cache meanwhile.
constexpr std::size_t BlockSamples = 1 << 14;

constexpr std::size_t MostWaiting = 8; // blocks before each step

} // namespace

CPass::CPass(CAudioReader& reader, CEffect& effect, const SPassOptions& options)
    : _reader(reader), _effect(effect), _channels(static_cast<std::size_t>(reader.Format().channels)),
      _toDrop(options.delay), _toFlush(options.delay),
      _in(_channels, static_cast<std::size_t>(effect.Stream().blockSize)), _out(_channels, _in.Frames()),
      _timeline(options.timeline) {
    if (options.measures) MakeMeters(options, reader.Format().rateHz);
}

void CPass::MakeMeters(const SPassOptions& options, int rateHz) {
    const auto tenthsTo = [this](CSignalTimeline STimeline::*signal) -> CLoudness::TenthSink {
        if (_timeline == nullptr) return {};
        return [&to = _timeline->*signal](double lufs) { to.AddTenth(lufs); };
    };
    _before.emplace(options.weights, rateHz, tenthsTo(&STimeline::before));
    const auto toTimeline = tenthsTo(&STimeline::after);
    _after.emplace(options.weights, rateHz, [toTimeline, onTenth = options.onTenth](double lufs) {
        if (toTimeline) toTimeline(lufs);
        if (onTenth) onTenth(lufs);
    });
    if (options.idleGainsDb.empty()) return;
    CGainMeter::WindowSink gainsToTimeline;
    if (_timeline != nullptr)
        gainsToTimeline = [this](std::span<const double> gains) { _timeline->AddGains(gains); };
    _gain.emplace(options.idleGainsDb, rateHz, std::move(gainsToTimeline));
}

void CPass::Run(const Store& store, const std::function<void(std::uint64_t)>& onFrames) {
    // From the end to the beginning: each step ends before those that it hands its results to.
    CWorkLine<Samples> measureOutput(MostWaiting, [this](const Samples& samples) { MeasureOutput(samples); });
    CWorkLine<Samples> keep(MostWaiting, [&](Samples samples) {
        store(samples);
        measureOutput.Put(std::move(samples));
    });
    CWorkLine<SharedSamples> measureInput(
        MostWaiting, [this](const SharedSamples& samples) { MeasureInput(*samples); });
    CWorkLine<SInput> process(MostWaiting, [&](const SInput& input) { keep.Put(Process(input)); });

    // The effect gets the same blocks as without a pipeline: whole ones, and the rest at the end.
    const std::size_t perBlock = std::max<std::size_t>(BlockSamples / _channels / _in.Frames(), 1);
    const std::size_t frames = perBlock * _in.Frames();
    for (bool atEnd = false; !atEnd;) {
        CheckInterrupt();
        Samples samples(frames * _channels);
        const std::size_t read = _reader.Read(samples);
        atEnd = read < frames;
        samples.resize(read * _channels);
        const auto shared = std::make_shared<const Samples>(std::move(samples));
        measureInput.Put(shared);
        process.Put({shared, atEnd ? Silence(frames - read) : 0});
        _frames += read;
        onFrames(read);
    }
    const auto none = std::make_shared<const Samples>();
    while (_toFlush > 0) process.Put({none, Silence(frames)});
    process.Finish();
    keep.Finish();
    measureInput.Finish();
    measureOutput.Finish();
}

/// The next frames of silence, as many as there is room for.
std::size_t CPass::Silence(std::size_t room) {
    const std::size_t frames = std::min(room, static_cast<std::size_t>(_toFlush));
    _toFlush -= static_cast<std::int64_t>(frames);
    return frames;
}

void CPass::MeasureInput(std::span<const float> samples) {
    if (!_before) {
        _notFiniteBefore += CountNotFinite(samples);
        return;
    }
    _before->Add(samples);
    if (_gain) _gain->AddInput(samples);
    if (_timeline != nullptr) _timeline->before.AddSamples(samples);
}

CPass::Samples CPass::Process(const SInput& input) {
    const std::size_t read = input.samples->size() / _channels;
    const std::size_t frames = read + input.silence;
    const auto dropped = std::min(frames, static_cast<std::size_t>(_toDrop));
    _toDrop -= static_cast<std::int64_t>(dropped);
    Samples output((frames - dropped) * _channels);
    for (std::size_t first = 0; first < frames; first += _in.Frames()) {
        CheckInterrupt(); // a slow effect may need long for all of them
        const std::size_t count = std::min(_in.Frames(), frames - first);
        const std::size_t sound = std::min(count, read - std::min(read, first));
        _in.TakeInterleaved(
            std::span(*input.samples).subspan(std::min(first, read) * _channels, sound * _channels));
        for (std::size_t c = 0; c < _channels; ++c)
            std::ranges::fill(_in.Channel(c).subspan(sound, count - sound), 0.0f);
        _effect.Process(_in.Pointers(), _out.Pointers(), static_cast<std::int32_t>(count));
        const std::size_t skipped = std::min(count, dropped - std::min(dropped, first));
        const std::size_t begin = first + skipped - std::min(dropped, first + skipped);
        _out.GiveInterleaved(
            std::span(output).subspan(begin * _channels, (count - skipped) * _channels), skipped);
    }
    return output;
}

void CPass::MeasureOutput(std::span<const float> samples) {
    if (!_after) {
        _notFiniteAfter += CountNotFinite(samples);
        return;
    }
    _after->Add(samples);
    if (_gain) _gain->AddOutput(samples);
    if (_timeline != nullptr) _timeline->after.AddSamples(samples);
}

void CPass::Report(SRenderReport& report) const {
    report.frames = _frames;
    report.isMeasured = _before.has_value();
    report.before = _before ? _before->Levels() : SLevels{.notFinite = _notFiniteBefore};
    report.after = _after ? _after->Levels() : SLevels{.notFinite = _notFiniteAfter};
    if (!_gain) return;
    report.gain = _gain->Range();
    report.reduction = _gain->Reduction();
}

} // namespace KAV::Host
