#include "tools/kavhost/target/target_renderer.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/render/spooled_inputs.h"
#include "tools/kavhost/target/file_levels.h"
#include "tools/kavhost/target/reasons.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace KAV::Host {

namespace {

constexpr std::uint64_t UsualRenders = 4; // for the progress bar
constexpr std::uint64_t ShareOfSong = 1000;

/// An album has one pair of gains, so that none of its files can be left out.
void CheckAbsent(const SRenderJob& job) {
    std::error_code error;
    if (job.keepsExisting && std::filesystem::exists(std::filesystem::symlink_status(job.output, error)))
        throw CFailure(Utf8(job.output) + ": exists, and an album is rendered whole or not at all");
}

/// Calls `work` with 0 to `count` - 1 on up to `threads` threads. The first exception ends it.
void InParallel(std::size_t count, int threads, const std::function<void(std::size_t)>& work) {
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::exception_ptr error;
    const auto run = [&] {
        try {
            for (std::size_t i = next++; i < count; i = next++) work(i);
        } catch (...) {
            next = count;
            const std::lock_guard lock(mutex);
            if (!error) error = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> helpers;
        const auto wanted = std::min(static_cast<std::size_t>(std::max(threads, 1)), count);
        try {
            while (helpers.size() + 1 < wanted) helpers.emplace_back(run);
        } catch (const std::system_error&) { // the system has no more threads: fewer do it as well
        }
        run();
    }
    if (error) std::rethrow_exception(error);
}

std::string TimeText(double seconds) {
    const auto whole = static_cast<std::int64_t>(seconds);
    const auto rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

/// The search for one programme: measures and renders its files.
class CSearchRun final {
public:
    CSearchRun(CRenderer& renderer, const STargetPlan& plan, std::span<const SRenderJob> jobs,
        std::span<CProgressPart* const> progress, int threads)
        : _renderer(renderer), _targets(plan.targets), _gains(plan.gains), _jobs(jobs), _progress(progress),
          _threads(threads), _inputs(jobs.size()), _weights(jobs.size()), _restDb(jobs.size()),
          _onsetDb(jobs.size()), _renderings(jobs.size()) {}

    std::vector<SRenderReport> Run() {
        CheckState();
        EachFile([&](std::size_t i) { Measure(i); });
        CheckFinite();
        CTargetSearch search(_targets, {_gains.input.startDb, _gains.output.startDb}, _gains.input.reach,
            _gains.output.reach, Outset());
        const auto found = search.Find(
            [this](double gain) { return Try(gain); }, [this](const SGains& gains) { return Store(gains); });
        std::string reason;
        if (found.obstacle != EObstacle::None) reason = ReasonText(_targets, found, PlaceOf(found.needed));
        if (!found.isStored) throw CFailure(Name() + ": " + reason);
        std::vector<SRenderReport> reports;
        for (auto& rendering : _renderings) rendering.Commit();
        for (auto& rendering : _renderings) {
            auto& report = rendering.Report();
            report.target = ReportOf(found, reason);
            reports.push_back(std::move(report));
        }
        return reports;
    }

private:
    void EachFile(const std::function<void(std::size_t)>& work) { InParallel(_jobs.size(), _threads, work); }

    void CheckState() const {
        if (_jobs.front().state.empty()) return;
        const int channels = _renderer.FormatOf(_jobs.front()).channels;
        for (const auto& job : _jobs) {
            if (_renderer.FormatOf(job).channels == channels) continue;
            throw CUsageError("--save-state: the files of the album have different numbers of channels, and "
                              "a state has one");
        }
    }

    std::string Name() const {
        if (_jobs.size() == 1) return InputName(_jobs.front());
        return std::to_string(_jobs.size()) + " files as an album";
    }

    std::string PlaceOf(const STrial& trial) const {
        const auto time = TimeText(trial.reductionSeconds);
        return _jobs.size() == 1 ? time : time + " of " + InputName(_jobs[trial.reductionFile]);
    }

    void Measure(std::size_t i) {
        const auto& input = _jobs[i].Source();
        const auto name = InputName(_jobs[i]);
        const auto format = _renderer.FormatOf(_jobs[i]);
        const auto traits = _renderer.TraitsFor(format, name, true);
        _weights[i] = _renderer.WeightsOf(format).channels;
        _inputs[i] = MeasureFile(input, _weights[i]);
        if (!_inputs[i].isMeasured) throw CFailure(name + ": this build can't measure loudness at this rate");
        _restDb[i] = *std::ranges::max_element(traits.idleGainsDb);
        _onsetDb[i] = *traits.onsetDb;
        _progress[i]->Begin(_inputs[i].frames * UsualRenders);
    }

    void CheckFinite() const {
        for (std::size_t i = 0; i < _jobs.size(); ++i) {
            const auto count = _inputs[i].notFinite;
            if (count == 0) continue;
            throw CFailure(
                InputName(_jobs[i]) + ": " + std::to_string(count) +
                (count == 1 ? " sample is not a finite number" : " samples are not finite numbers") +
                ", so " + TargetText(_targets) + " can't be judged");
        }
    }

    /// What the effect at rest makes of the inputs, so that files of different channels compare.
    SOutset Outset() const {
        SOutset outset;
        outset.truePeakDbtp = -std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < _jobs.size(); ++i) {
            const double restDb = _restDb[i] - _gains.input.startDb;
            auto tenths = _inputs[i].tenths;
            for (double& tenth : tenths) tenth *= std::pow(10.0, restDb / 10);
            outset.tenths.push_back(std::move(tenths));
            auto peaks = _inputs[i].tenthPeaksDb;
            for (double& peak : peaks) peak -= _onsetDb[i] + _gains.input.startDb;
            outset.tenthPeaksDb.push_back(std::move(peaks));
            outset.truePeakDbtp = std::max(outset.truePeakDbtp, _inputs[i].truePeakDbtp + restDb);
        }
        return outset;
    }

    SGainChange ChangeTo(const SGains& gains) const {
        SGainChange change;
        change.isSearched = true;
        // A gain that isn't searched for is left as it is, to the last bit.
        if (gains.inputDb != _gains.input.startDb) {
            change.settings.push_back(_gains.input.At(gains.inputDb));
            change.louderDb += gains.inputDb - _gains.input.startDb;
        }
        if (gains.outputDb != _gains.output.startDb) {
            change.settings.push_back(_gains.output.At(gains.outputDb));
            change.louderDb += gains.outputDb - _gains.output.startDb;
        }
        return change;
    }

    STrial Try(double inputGainDb) {
        const auto change = ChangeTo({inputGainDb, _gains.output.startDb});
        STrial trial;
        trial.programme.tenths.resize(_jobs.size());
        std::vector<SRenderReport> reports(_jobs.size());
        EachFile([&](std::size_t i) {
            auto& tenths = trial.programme.tenths[i];
            reports[i] = _renderer.Try(
                _jobs[i], change, [&](double lufs) { tenths.push_back(EnergyOf(lufs)); }, *_progress[i]);
        });
        for (std::size_t i = 0; i < reports.size(); ++i) Take(reports[i], i, trial);
        return trial;
    }

    static void Take(const SRenderReport& report, std::size_t file, STrial& trial) {
        trial.programme.truePeakDbtp = std::max(
            trial.programme.truePeakDbtp, report.after.truePeakDbtp.value_or(report.after.samplePeakDbfs));
        if (report.after.notFinite > 0) trial.isFinite = false;
        if (!report.reduction || report.reduction->largestDb <= trial.reductionDb) return;
        trial.reductionDb = report.reduction->largestDb;
        trial.reductionFile = file;
        trial.reductionSeconds = static_cast<double>(report.reduction->largestFrame) / report.format.rateHz;
    }

    SReached Store(const SGains& gains) {
        const auto change = ChangeTo(gains);
        std::vector<SFileLevels> stored(_jobs.size());
        EachFile([&](std::size_t i) {
            _renderings[i] = {}; // before another file of the same name is begun
            _renderings[i] = _renderer.Prepare(_jobs[i], change, *_progress[i]);
            stored[i] = MeasureFile(_renderings[i].PendingAudio(), _weights[i]);
        });
        std::vector<Tenths> tenths;
        SReached reached{0, -std::numeric_limits<double>::infinity()};
        for (std::size_t i = 0; i < stored.size(); ++i) {
            reached.truePeakDbtp = std::max(reached.truePeakDbtp, stored[i].truePeakDbtp);
            auto& after = _renderings[i].Report().after;
            after.truePeakDbtp = stored[i].truePeakDbtp;
            after.loudnessLufs = GatedLufs(std::span(&stored[i].tenths, 1));
            tenths.push_back(std::move(stored[i].tenths));
        }
        reached.loudnessLufs = GatedLufs(tenths);
        return reached;
    }

    STargetReport ReportOf(const SFound& found, const std::string& reason) const {
        STargetReport report;
        report.wantedLufs = _targets.loudnessLufs;
        report.wantedDbtp = _targets.truePeakDbtp;
        report.mostReductionDb = _targets.mostReductionDb;
        report.inputGainDb = found.gains.inputDb;
        report.outputGainDb = found.gains.outputDb;
        report.hasInputGain = _targets.loudnessLufs.has_value();
        report.hasOutputGain = _targets.truePeakDbtp.has_value();
        report.binds = BindsOf(found);
        report.inTheWay = reason;
        report.renders = found.renders;
        report.files = _jobs.size();
        report.reachedLufs = found.reached.loudnessLufs;
        report.reachedDbtp = found.reached.truePeakDbtp;
        report.isDualMono = _weights.front() == std::vector<double>{2.0};
        return report;
    }

    std::string BindsOf(const SFound& found) const {
        if (found.obstacle == EObstacle::Reduction) return "reduction";
        if (found.obstacle == EObstacle::HighestGain || found.obstacle == EObstacle::LowestGain)
            return "input gain";
        if (!_targets.loudnessLufs) return found.peakBinds ? "true peak" : "nothing";
        return found.peakBinds ? "loudness and true peak" : "loudness";
    }

    CRenderer& _renderer;
    const STargets& _targets;
    const SMainGains& _gains;
    std::span<const SRenderJob> _jobs;
    std::span<CProgressPart* const> _progress;
    int _threads;
    std::vector<SFileLevels> _inputs;
    std::vector<std::vector<double>> _weights;
    std::vector<double> _restDb; ///< the effect's gain, with the gains' start values
    std::vector<double> _onsetDb;
    std::vector<CRendering> _renderings;
};

} // namespace

void RenderToTargets(CRenderer& renderer, const STargetPlan& plan, std::span<const SRenderJob> jobs,
    int threads, EOrder order, const std::function<void(const SOutcome&)>& report) {
    const RenderWork work = [&](const SRenderJob& job, CProgressPart& progress) {
        CProgressPart* const part = &progress;
        return std::move(
            CSearchRun(renderer, plan, std::span(&job, 1), std::span(&part, 1), 1).Run().front());
    };
    CSpooledInputs spooled;
    DoAll(work, jobs, spooled, threads, order, report);
}

void RenderAlbum(CRenderer& renderer, const STargetPlan& plan, std::span<const SRenderJob> jobs, int threads,
    const std::function<void(const SOutcome&)>& report) {
    CSpooledInputs spooled;
    std::vector<SRenderJob> songs(jobs.begin(), jobs.end());
    for (auto& song : songs) {
        CheckAbsent(song);
        song.source = spooled.SourceOf(song.input);
    }
    std::vector<SRenderReport> reports;
    {
        CProgress bar(std::to_string(jobs.size()) + " files as an album", jobs.size() * ShareOfSong);
        std::vector<std::unique_ptr<CProgressPart>> parts;
        std::vector<CProgressPart*> pointers;
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            parts.push_back(std::make_unique<CProgressPart>(bar, ShareOfSong));
            pointers.push_back(parts.back().get());
        }
        reports = CSearchRun(renderer, plan, songs, pointers, threads).Run();
    }
    for (std::size_t i = 0; i < jobs.size(); ++i) report({jobs[i], EFate::Done, std::move(reports[i]), {}});
}

} // namespace KAV::Host
