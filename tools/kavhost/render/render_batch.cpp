#include "tools/kavhost/render/render_batch.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace KAV::Host {

namespace {

/// Files count by their size: to know their length they would have to be opened and searched.
std::uint64_t ShareOf(const SRenderJob& job) {
    std::error_code error;
    const auto size = std::filesystem::file_size(job.input, error);
    return error ? 1 : std::max<std::uint64_t>(size, 1);
}

std::uint64_t SharesOf(std::span<const SRenderJob> jobs) {
    std::uint64_t shares = 0;
    for (const auto& job : jobs) shares += ShareOf(job);
    return shares;
}

/// Skips a job whose user wants existing files to stay.
void CheckExisting(const SRenderJob& job) {
    if (!job.keepsExisting) return;
    for (const auto& file : {job.output, job.plot, job.plotData, job.state}) {
        std::error_code error;
        if (!file.empty() && file != "-" &&
            std::filesystem::exists(std::filesystem::symlink_status(file, error)))
            throw CSkipped(Utf8(file) + " exists");
    }
}

/// A message that names a job's temporary copy of a pipe, with the name that the user knows.
std::string WithoutSource(std::string message, const SRenderJob& job) {
    if (job.source.empty()) return message;
    const auto source = Utf8(job.source), input = InputName(job);
    for (auto place = message.find(source); place != std::string::npos; place = message.find(source, place)) {
        message.replace(place, source.size(), input);
        place += input.size();
    }
    return message;
}

/// Jobs, which threads take one after the other, and their outcomes.
class CBatch final {
public:
    CBatch(const RenderWork& work, std::span<const SRenderJob> jobs, CSpooledInputs& spooled, EOrder order,
        const std::function<void(const SOutcome&)>& report)
        : _work(work), _jobs(jobs), _spooled(spooled), _order(order), _report(report),
          _bar(Title(), SharesOf(jobs)), _outcomes(jobs.size()) {
        for (std::size_t i = 0; i < jobs.size(); ++i) _outcomes[i].job = jobs[i];
    }

    /// What each thread does. An exception other than a failed job's ends the work of all.
    void Work() noexcept {
        try {
            for (;;) {
                const std::size_t place = _next++;
                if (place >= _jobs.size()) return;
                Keep(place, Do(_jobs[place]));
            }
        } catch (...) {
            _next = _jobs.size();
            const std::lock_guard lock(_mutex);
            if (!_error) _error = std::current_exception();
        }
    }

    /// When all threads have ended.
    void Finish() {
        if (!_error) return;
        try {
            std::rethrow_exception(_error);
        } catch (const CInterruption& interruption) {
            ReportRest(interruption.what());
            if (_jobs.size() > 1) throw CInterruption(Counts());
            throw;
        } catch (...) {
            ReportRest("not finished");
            throw;
        }
    }

private:
    SOutcome Do(const SRenderJob& job) {
        CProgressPart part(_bar, ShareOf(job));
        auto spooled = job;
        try {
            CheckExisting(job);
            spooled.source = _spooled.SourceOf(job.input);
            SOutcome outcome{job, EFate::Done, _work(spooled, part), {}};
            for (auto& note : outcome.report->notes) note.text = WithoutSource(note.text, spooled);
            return outcome;
        } catch (const CSkipped& skipped) {
            return {job, EFate::Skipped, {}, skipped.what()};
        } catch (const CFailure& failure) {
            return {job, EFate::Failed, {}, WithoutSource(failure.what(), spooled)};
        }
    }

    void Keep(std::size_t place, SOutcome outcome) {
        const std::lock_guard lock(_mutex);
        _outcomes[place] = std::move(outcome);
        ++_ended;
        if (_jobs.size() > 1) _bar.SetTitle(Title());
        if (_order == EOrder::AsFinished) return Report(place);
        for (; _reported < _jobs.size() && HasEnded(_reported); ++_reported) Report(_reported);
    }

    /// After an interruption: what is finished beyond a gap, and what is not.
    void ReportRest(const std::string& reason) {
        for (std::size_t place = 0; place < _jobs.size(); ++place) {
            auto& outcome = _outcomes[place];
            if (outcome.fate == EFate::Unfinished) outcome.reason = reason;
            const bool wasReported = _order == EOrder::OfJobs ? place < _reported : HasEnded(place);
            if (!wasReported) Report(place);
        }
    }

    void Report(std::size_t place) {
        _bar.MakeWayFor([&] { _report(_outcomes[place]); });
        _outcomes[place].report.reset(); // no longer needed, and there may be a hundred thousand of them
    }

    bool HasEnded(std::size_t place) const { return _outcomes[place].fate != EFate::Unfinished; }

    std::string Counts() const {
        const auto count = [this](EFate fate) {
            return std::to_string(std::ranges::count(_outcomes, fate, &SOutcome::fate));
        };
        const auto failed = count(EFate::Failed), skipped = count(EFate::Skipped);
        return count(EFate::Done) + " of " + std::to_string(_jobs.size()) + " files are finished" +
               (failed != "0" ? ", " + failed + " failed" : "") +
               (skipped != "0" ? ", " + skipped + " skipped" : "");
    }

    std::string Title() const {
        if (_jobs.size() == 1) return InputName({_jobs.front().input.filename(), {}});
        return std::to_string(_ended) + " of " + std::to_string(_jobs.size()) + " files";
    }

    const RenderWork& _work;
    std::span<const SRenderJob> _jobs;
    CSpooledInputs& _spooled;
    EOrder _order;
    const std::function<void(const SOutcome&)>& _report;
    std::size_t _ended = 0;
    CProgress _bar;
    std::atomic<std::size_t> _next{0};
    std::mutex _mutex;
    std::vector<SOutcome> _outcomes;
    std::size_t _reported = 0; ///< of those that wait for each other
    std::exception_ptr _error;
};

} // namespace

void DoAll(const RenderWork& work, std::span<const SRenderJob> jobs, CSpooledInputs& spooled, int threads,
    EOrder order, const std::function<void(const SOutcome&)>& report) {
    CBatch batch(work, jobs, spooled, order, report);
    {
        std::vector<std::jthread> helpers;
        const auto wanted = std::min(static_cast<std::size_t>(std::max(threads, 1)), jobs.size());
        try {
            while (helpers.size() + 1 < wanted) helpers.emplace_back([&batch] { batch.Work(); });
        } catch (const std::system_error&) { // the system has no more threads: fewer do it as well
        }
        batch.Work(); // this thread works, too; with one thread it is the only one
    }
    batch.Finish();
}

void RenderAll(CRenderer& renderer, std::span<const SRenderJob> jobs, int threads, EOrder order,
    const std::function<void(const SOutcome&)>& report) {
    const RenderWork work = [&renderer](const SRenderJob& job, CProgressPart& part) {
        return renderer.Render(job, part);
    };
    CSpooledInputs spooled;
    DoAll(work, jobs, spooled, threads, order, report);
}

} // namespace KAV::Host
