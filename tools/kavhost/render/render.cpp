#include "tools/kavhost/render/render.h"

#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/completeness.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/state_file.h"
#include "tools/kavhost/measure/idle_gain.h"
#include "tools/kavhost/measure/onset.h"
#include "tools/kavhost/measure/speaker_weights.h"
#include "tools/kavhost/measure/timeline.h"
#include "tools/kavhost/plot/plot.h"
#include "tools/kavhost/render/pass.h"
#include "tools/kavhost/tags/tags.h"

#include <algorithm>
#include <chrono>

namespace KAV::Host {

namespace {

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

    void Commit(EExisting existing) {
        if (_picture) _picture->Commit(existing);
        if (_data) _data->Commit(existing);
    }

private:
    std::optional<CPendingFile> _picture;
    std::optional<CPendingFile> _data;
    bool _isJson = false;
};

void NoteInput(SRenderReport& report) {
    const auto count = report.before.notFinite;
    if (count == 0) return;
    const std::string samples = count == 1 ? " sample of the input is" : " samples of the input are";
    report.notes.push_back({std::to_string(count) + samples + " infinite or not a number", true});
}

void CheckNotes(const SRenderReport& report) {
    for (const auto& note : report.notes) {
        if (note.isGrave) throw CFailure(Utf8(report.job.input) + ": " + note.text);
    }
}

} // namespace

CRenderer::CRenderer(const CEffectLibrary& library, CSetup setup, const SRenderOptions& options)
    : _library(library), _setup(std::move(setup)), _options(options) {}

struct CRendering::SFiles {
    explicit SFiles(const SRenderJob& job) : plot(job) {}

    CPlotFiles plot;
    std::optional<CStateFile> state;
    std::optional<CAudioWriter> audio;
    std::filesystem::path pendingAudio;
};

CRendering::CRendering() = default;
CRendering::CRendering(CRendering&&) noexcept = default;
CRendering& CRendering::operator=(CRendering&&) noexcept = default;
CRendering::~CRendering() = default;

const std::filesystem::path& CRendering::PendingAudio() const {
    return _files->pendingAudio;
}

void CRendering::Commit() {
    const auto existing = _report.job.keepsExisting ? EExisting::Kept : EExisting::Replaced;
    _files->audio->Commit(existing);
    if (_files->state) _files->state->Commit(existing);
    _files->plot.Commit(existing);
}

SRenderReport CRenderer::Render(const SRenderJob& job, CProgressPart& progress) {
    auto rendering = Prepare(job, {}, progress);
    rendering.Commit();
    return rendering.Report();
}

CRendering CRenderer::Prepare(const SRenderJob& job, const SGainChange& change, CProgressPart& progress) {
    const auto start = std::chrono::steady_clock::now();
    CAudioReader reader(job.Source());
    const CTags tags(job.Source());
    CRendering rendering;
    auto& report = rendering._report;
    const EContainer container = job.container ? *job.container : *ContainerOf(job.output);
    report.format = FormatOf(reader, job);
    if (auto note = SpeakerNote(container, report.format)) report.notes.push_back(*std::move(note));
    report.format.samples = _options.samples.value_or(KeptFormat(container, report.format.samples));

    report.isAligned = _options.aligns;

    rendering._files = std::make_unique<CRendering::SFiles>(job);
    auto& files = *rendering._files;
    const auto effect = MakeStarted(report.format, job, change, report, &files.state);
    std::optional<STimeline> timeline;
    if (files.plot.AreWanted()) timeline.emplace(report.format.channels, report.idleGainsDb);
    files.audio.emplace(job.output, container, report.format, _options.dithers, reader.Frames());
    if (_options.settles) SettleFadeIn(*effect);

    CPass pass(reader, *effect,
        {report.delay.frames, _options.measures, report.speakers.channels, report.idleGainsDb,
            timeline ? &*timeline : nullptr});
    progress.Begin(reader.Frames());
    pass.Run([&](std::span<float> samples) { files.audio->Write(samples); },
        [&](std::uint64_t frames) { progress.Advance(frames); });
    pass.Report(report);
    NoteInput(report);
    report.clipped = files.audio->Clipped();
    report.clippedBySteps = files.audio->ClippedBySteps();
    report.reportedDelay = effect->ReportedDelay();
    if (const auto missing = MissingPart(job.Source(), report.frames); !missing.empty())
        report.notes.push_back({missing, true});
    tags.AddTo(files.audio->Complete(), container, effect->Name(), report);
    if (_options.isStrict) CheckNotes(report);
    if (timeline) files.plot.Write(MakePlot(report, *timeline));
    files.pendingAudio = files.audio->Complete();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    report.realTimeFactor = static_cast<double>(report.frames) / report.format.rateHz / taken.count();
    return rendering;
}

SRenderReport CRenderer::Try(const SRenderJob& job, const SGainChange& change,
    const CLoudness::TenthSink& onTenth, CProgressPart& progress) {
    CAudioReader reader(job.Source());
    SRenderReport report;
    report.format = FormatOf(reader, job);
    report.isAligned = true; // or there would be no telling how much it takes back
    const auto effect = MakeStarted(report.format, job, change, report, nullptr);
    if (_options.settles) SettleFadeIn(*effect);
    CPass pass(reader, *effect,
        {report.delay.frames, true, report.speakers.channels, report.idleGainsDb, nullptr, onTenth});
    pass.Run([](std::span<float>) {}, [&](std::uint64_t frames) { progress.Advance(frames); });
    pass.Report(report);
    return report;
}

void CRenderer::Describe(const CEffect& effect, SRenderReport& report) {
    const std::lock_guard lock(_turn);
    if (_options.reference) {
        report.patch = _options.reference->PatchOf(effect);
        report.settings = _options.reference->Differences(effect);
    }
    for (auto& [text, isGrave] : _setup.Examine(effect)) report.notes.push_back({std::move(text), isGrave});
}

SAudioFormat CRenderer::FormatOf(const SRenderJob& job) const {
    return FormatOf(CAudioReader(job.Source()), job);
}

SAudioFormat CRenderer::FormatOf(const CAudioReader& reader, const SRenderJob& job) const {
    auto format = reader.Format();
    CheckChannels(format, job.input);
    if (_options.layout) Naming(Utf8(job.input), [&] { SetLayout(format, *_options.layout); });
    return format;
}

/// An effect that is ready for a file, except that it has not settled, and the report's beginning.
CRenderer::EffectPtr CRenderer::MakeStarted(const SAudioFormat& format, const SRenderJob& job,
    const SGainChange& change, SRenderReport& report, std::optional<CStateFile>* state) {
    report.job = job;
    const std::string name = Utf8(job.input);
    auto effect = MakeEffect(format, name, change.settings);
    if (state != nullptr) {
        if (!job.state.empty()) SaveState(*effect, job.state, change, *state);
        Describe(*effect, report);
    }
    Start(*effect);
    SEffectTraits traits;
    if (report.isAligned) traits = TraitsFor(format, name);
    report.delay = traits.delay;
    report.idleGainsDb = traits.idleGainsDb;
    for (double& gain : report.idleGainsDb) gain += change.louderDb;
    report.speakers = WeightsOf(format);
    return effect;
}

/// After a search the state alone is to bring the same samples, so the effect gets what the text has kept of
/// its values.
void CRenderer::SaveState(CEffect& effect, const std::filesystem::path& file, const SGainChange& change,
    std::optional<CStateFile>& state) {
    const std::lock_guard lock(_turn);
    if (change.isSearched) effect.SetChunk(effect.Chunk(EChunk::Bank), EChunk::Bank);
    state.emplace(file, effect);
}

SSpeakerWeights CRenderer::WeightsOf(const SAudioFormat& format) const {
    auto weights = WeightsFor(format, _setup.ChannelLabels());
    if (_options.isDualMono && weights.channels.size() == 1) weights.channels = {2.0};
    return weights;
}

void CRenderer::SEnd::operator()(CEffect* effect) const {
    const std::lock_guard lock(*turn);
    delete effect;
}

CRenderer::EffectPtr CRenderer::MakeEffect(
    const SAudioFormat& format, const std::string& name, std::span<const SSetting> settings) {
    const std::lock_guard lock(_turn);
    auto effect =
        std::make_unique<CEffect>(_library, SStream{static_cast<double>(format.rateHz), _options.blockSize});
    Naming(name, [&] { effect->SetChannels(format.channels); });
    _setup.Apply(*effect);
    ApplySettings(settings, *effect);
    return {effect.release(), SEnd{&_turn}};
}

void CRenderer::Start(CEffect& effect) {
    const std::lock_guard lock(_turn);
    effect.Start();
}

CRenderer::SEffectTraits CRenderer::TraitsFor(
    const SAudioFormat& format, const std::string& name, bool withOnset) {
    // A second file of the same format waits for the result instead of measuring it too.
    const std::lock_guard lock(_measuring);
    const auto key = std::pair{format.rateHz, format.channels};
    const auto known = _traits.find(key);
    if (known != _traits.end() && (known->second.onsetDb || !withOnset)) return known->second;
    // An instance of its own: the noise must leave no trace in the file.
    const auto effect = MakeEffect(format, name);
    Start(*effect);
    SettleFadeIn(*effect);
    SEffectTraits traits;
    // First the noise that leaves a limiter alone.
    if (_options.measures) traits.idleGainsDb = MeasureIdleGains(*effect);
    traits.delay = MeasureDelay(*effect);
    if (withOnset) traits.onsetDb = MeasureOnset(*effect);
    return _traits.insert_or_assign(key, std::move(traits)).first->second;
}

} // namespace KAV::Host
