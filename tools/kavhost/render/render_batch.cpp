#include "tools/kavhost/render/render_batch.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/progress.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
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

std::string TitleOf(std::span<const SRenderJob> jobs) {
    return jobs.size() == 1 ? Utf8(jobs.front().input) : std::to_string(jobs.size()) + " files";
}

/// Jobs, which threads take one after the other, and their outcomes.
class CBatch final {
public:
    CBatch(CRenderer& renderer, std::span<const SRenderJob> jobs, const std::function<void(SOutcome)>& tell)
        : _renderer(renderer), _jobs(jobs), _tell(tell),
          _bar(std::make_unique<CProgress>(TitleOf(jobs), SharesOf(jobs))), _outcomes(jobs.size()) {}

    /// What each thread does. An exception other than a failed job's ends the work of all.
    void Work() noexcept {
        try {
            for (;;) {
                const std::size_t job = _next++;
                if (job >= _jobs.size()) return;
                auto outcome = Do(_jobs[job]);
                const std::lock_guard lock(_mutex);
                _outcomes[job] = std::move(outcome);
                if (!_bar->IsShown()) TellInOrder();
            }
        } catch (...) {
            _next = _jobs.size();
            const std::lock_guard lock(_mutex);
            if (!_error) _error = std::current_exception();
        }
    }

    /// When all threads have ended.
    void Finish() {
        _bar.reset();
        TellAll();
        if (_error) std::rethrow_exception(_error);
    }

private:
    SOutcome Do(const SRenderJob& job) {
        CProgressPart part(*_bar, ShareOf(job));
        SOutcome outcome;
        try {
            outcome.report = _renderer.Render(job, part);
        } catch (const CFailure& failure) {
            outcome.failure = failure.what();
        }
        return outcome;
    }

    void TellInOrder() {
        for (; _told < _outcomes.size() && _outcomes[_told]; ++_told) _tell(*std::move(_outcomes[_told]));
    }

    /// After an interruption there may be gaps.
    void TellAll() {
        for (; _told < _outcomes.size(); ++_told) {
            if (_outcomes[_told]) _tell(*std::move(_outcomes[_told]));
        }
    }

    CRenderer& _renderer;
    std::span<const SRenderJob> _jobs;
    const std::function<void(SOutcome)>& _tell;
    std::unique_ptr<CProgress> _bar; ///< null when only the texts that it kept back are unreported
    std::atomic<std::size_t> _next{0};
    std::mutex _mutex;
    std::vector<std::optional<SOutcome>> _outcomes; ///< empty for unfinished and for reported jobs
    std::size_t _told = 0;
    std::exception_ptr _error;
};

} // namespace

void RenderAll(CRenderer& renderer, std::span<const SRenderJob> jobs, int threads,
    const std::function<void(SOutcome)>& tell) {
    CBatch batch(renderer, jobs, tell);
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

} // namespace KAV::Host
