#pragma once

#include "tools/kavhost/render/render.h"
#include "tools/kavhost/render/spooled_inputs.h"

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace KAV::Host {

/// What became of a job.
enum class EFate {
    Done,
    Failed,
    Skipped,   ///< its output exists and is not to be replaced
    Unfinished ///< the program was interrupted before or during it
};

struct SOutcome {
    SRenderJob job;
    EFate fate = EFate::Unfinished;
    std::optional<SRenderReport> report; ///< of a job that is done
    std::string reason;                  ///< of all others, one line: "song.wav: no such file", "interrupted"
};

/// Does one job, on any thread. May throw CFailure, CSkipped and CInterruption.
using RenderWork = std::function<SRenderReport(const SRenderJob&, CProgressPart&)>;

enum class EOrder {
    OfJobs,     ///< an outcome waits for those of all jobs before it
    AsFinished, ///< those of unfinished jobs come last
};

/// Does all jobs, up to `threads` at a time, with one progress bar. `report` is called once for every job,
/// one call at a time, on any thread, as early as `order` allows; what it prints doesn't disturb the bar. A
/// job that fails does not stop the others. A job that keeps existing files is skipped if one of its files
/// exists. Throws CInterruption if the user interrupts, after everything was reported; with several jobs its
/// text counts those that are finished. `work` gets the jobs with what `spooled` has for their inputs, which
/// outlives the call so that a second one can read them again.
void DoAll(const RenderWork& work, std::span<const SRenderJob> jobs, CSpooledInputs& spooled, int threads,
    EOrder order, const std::function<void(const SOutcome&)>& report);

/// The same with CRenderer::Render().
void RenderAll(CRenderer& renderer, std::span<const SRenderJob> jobs, int threads, EOrder order,
    const std::function<void(const SOutcome&)>& report);

} // namespace KAV::Host
