#include "tools/kavhost/render/render.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/planar_buffer.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/state_file.h"
#include "tools/kavhost/measure/idle_gain.h"
#include "tools/kavhost/measure/timeline.h"
#include "tools/kavhost/plot/plot.h"

#include <algorithm>
#include <chrono>

namespace KAV::Host {

namespace {

/// One file on its way through a started effect.
class CPass final {
public:
    /// `timeline` may be null.
    CPass(
        CAudioReader& reader, CEffect& effect, CAudioWriter& writer, std::int64_t delay, STimeline* timeline)
        : _reader(reader), _effect(effect), _writer(writer), _toDrop(delay), _toFlush(delay),
          _channels(static_cast<std::size_t>(reader.Format().channels)),
          _in(_channels, static_cast<std::size_t>(effect.Stream().blockSize)), _out(_channels, _in.Frames()),
          _interleaved(_channels * _in.Frames()), _timeline(timeline),
          _before(reader.Format().channels, reader.Format().rateHz, TenthsTo(&STimeline::before)),
          _after(reader.Format().channels, reader.Format().rateHz, TenthsTo(&STimeline::after)),
          _gain(reader.Format().channels, reader.Format().rateHz, GainsToTimeline()) {}

    /// Works on one block; false when the file and its tail have gone through.
    bool Step() {
        const std::size_t read = Read();
        const std::size_t flushed = std::min(_in.Frames() - read, static_cast<std::size_t>(_toFlush));
        const std::size_t frames = read + flushed;
        if (frames == 0) return false;
        _toFlush -= static_cast<std::int64_t>(flushed);
        for (std::size_t c = 0; c < _channels; ++c) {
            std::ranges::fill(_in.Channel(c).subspan(read, flushed), 0.0f);
        }
        const auto start = std::chrono::steady_clock::now();
        _effect.Process(_in.Pointers(), _out.Pointers(), static_cast<std::int32_t>(frames));
        _effectTime += std::chrono::steady_clock::now() - start;
        Write(frames);
        return true;
    }

    void Report(SRenderReport& report) const {
        report.frames = _frames;
        report.before = _before.Levels();
        report.after = _after.Levels();
        report.gain = _gain.Range();
        report.clipped = _writer.Clipped();
        const double audio = static_cast<double>(_frames) / _effect.Stream().rateHz;
        const double work = std::chrono::duration<double>(_effectTime).count();
        report.realTimeFactor = work > 0 ? audio / work : 0;
    }

private:
    CLoudness::TenthSink TenthsTo(CSignalTimeline STimeline::*signal) const {
        if (_timeline == nullptr) return {};
        return [&to = _timeline->*signal](double lufs) { to.AddTenth(lufs); };
    }

    CGainMeter::WindowSink GainsToTimeline() const {
        if (_timeline == nullptr) return {};
        return [&to = *_timeline](std::span<const double> gains) { to.AddGains(gains); };
    }

    /// Fills the block's front with the file's next frames.
    std::size_t Read() {
        if (_atEnd) return 0;
        const std::size_t read = _reader.Read(_interleaved);
        _atEnd = read < _in.Frames();
        const auto samples = std::span(_interleaved).first(read * _channels);
        _before.Add(samples);
        _gain.AddInput(samples);
        if (_timeline != nullptr) _timeline->before.AddSamples(samples);
        _in.TakeInterleaved(samples);
        _frames += read;
        return read;
    }

    void Write(std::size_t frames) {
        const auto dropped = std::min(frames, static_cast<std::size_t>(_toDrop));
        _toDrop -= static_cast<std::int64_t>(dropped);
        const auto samples = std::span(_interleaved).first((frames - dropped) * _channels);
        _out.GiveInterleaved(samples, dropped);
        _writer.Write(samples);
        _after.Add(samples);
        _gain.AddOutput(samples);
        if (_timeline != nullptr) _timeline->after.AddSamples(samples);
    }

    CAudioReader& _reader;
    CEffect& _effect;
    CAudioWriter& _writer;
    std::int64_t _toDrop;  ///< frames at the output's front that are the effect's delay
    std::int64_t _toFlush; ///< frames of silence that bring the last ones out
    bool _atEnd = false;
    std::uint64_t _frames = 0;
    std::size_t _channels;
    CPlanarBuffer _in;
    CPlanarBuffer _out;
    std::vector<float> _interleaved;
    STimeline* _timeline;
    CLevelMeter _before;
    CLevelMeter _after;
    CGainMeter _gain;
    std::chrono::steady_clock::duration _effectTime{};
};

void CheckChannels(const SAudioFormat& format, const std::filesystem::path& file) {
    if (format.channels <= MostRenderChannels) return;
    throw CFailure(Utf8(file) + ": unsupported channel count: " + std::to_string(format.channels) +
                   ", at most " + std::to_string(MostRenderChannels) + " are supported");
}

/// The picture of a file and its data, on their way.
class CPlotFiles final {
public:
    explicit CPlotFiles(const SRenderJob& job) {
        if (!job.plot.empty()) _picture.emplace(job.plot);
        if (!job.plotData.empty()) _data.emplace(job.plotData);
        _isJson = EqualIgnoringCase(Utf8(job.plotData.extension()), ".json");
    }

    bool AreWanted() const noexcept { return _picture || _data; }

    void Write(const SPlot& plot) {
        if (_picture) {
            DrawPlot(plot, _picture->Stream());
            _picture->Check();
        }
        if (_data) {
            _data->Stream() << (_isJson ? PlotAsJson(plot) : PlotAsCsv(plot)) << std::flush;
            _data->Check();
        }
    }

    void Commit() {
        if (_picture) _picture->Commit();
        if (_data) _data->Commit();
    }

private:
    std::optional<CPendingFile> _picture;
    std::optional<CPendingFile> _data;
    bool _isJson = false;
};

} // namespace

CRenderer::CRenderer(const CEffectLibrary& library, CSetup setup, const SRenderOptions& options)
    : _library(library), _setup(std::move(setup)), _options(options) {}

SRenderReport CRenderer::Render(const SRenderJob& job, CProgressPart& progress) {
    CAudioReader reader(job.input);
    CheckChannels(reader.Format(), job.input);
    SRenderReport report;
    report.job = job;
    const EContainer container = *ContainerOf(job.output);
    report.format = reader.Format();
    report.format.samples = _options.samples.value_or(KeptFormat(container, report.format.samples));

    const std::string name = Utf8(job.input);
    const auto effect = MakeEffect(report.format, name);
    std::optional<CStateFile> state;
    if (!_options.state.empty()) state.emplace(_options.state, *effect);
    Start(*effect);
    report.isAligned = _options.aligns;
    SEffectTraits traits;
    traits.idleGainsDb.resize(static_cast<std::size_t>(report.format.channels));
    if (report.isAligned) traits = TraitsFor(report.format, name);
    report.delay = traits.delay;
    CPlotFiles plotFiles(job);
    std::optional<STimeline> timeline;
    if (plotFiles.AreWanted()) timeline.emplace(report.format.channels, traits.idleGainsDb);
    CAudioWriter writer(job.output, container, report.format, _options.dithers, reader.Frames());
    if (_options.settles) SettleFadeIn(*effect);

    CPass pass(reader, *effect, writer, report.delay.frames, timeline ? &*timeline : nullptr);
    progress.Begin(reader.Frames());
    while (pass.Step()) {
        CheckInterrupt();
        progress.Advance(static_cast<std::uint64_t>(_options.blockSize));
    }
    pass.Report(report);
    if (!report.isAligned) report.gain.reset();
    report.reportedDelay = effect->ReportedDelay();
    if (timeline) plotFiles.Write(MakePlot(report, *timeline, _options.changes));
    writer.Commit();
    if (state) state->Commit();
    plotFiles.Commit();
    return report;
}

void CRenderer::SEnd::operator()(CEffect* effect) const {
    const std::lock_guard lock(*turn);
    delete effect;
}

CRenderer::EffectPtr CRenderer::MakeEffect(const SAudioFormat& format, const std::string& name) {
    const std::lock_guard lock(_turn);
    auto effect =
        std::make_unique<CEffect>(_library, SStream{static_cast<double>(format.rateHz), _options.blockSize});
    Naming(name, [&] { effect->SetChannels(format.channels); });
    _setup.Apply(*effect);
    return {effect.release(), SEnd{&_turn}};
}

void CRenderer::Start(CEffect& effect) {
    const std::lock_guard lock(_turn);
    effect.Start();
}

CRenderer::SEffectTraits CRenderer::TraitsFor(const SAudioFormat& format, const std::string& name) {
    // A second file of the same format waits for the result instead of measuring it too.
    const std::lock_guard lock(_measuring);
    const auto key = std::pair{format.rateHz, format.channels};
    if (const auto known = _traits.find(key); known != _traits.end()) return known->second;
    // An instance of its own: the noise must leave no trace in the file.
    const auto effect = MakeEffect(format, name);
    Start(*effect);
    SettleFadeIn(*effect);
    SEffectTraits traits;
    // First the noise that leaves a limiter alone.
    if (!_options.plot.empty() || !_options.plotData.empty()) traits.idleGainsDb = MeasureIdleGains(*effect);
    traits.delay = MeasureDelay(*effect);
    return _traits.emplace(key, std::move(traits)).first->second;
}

} // namespace KAV::Host
