#pragma once

#include "tools/kavhost/render/render.h"

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace KAV::Host {

/// The result of a job: a report, or why there is none.
struct SOutcome {
    std::optional<SRenderReport> report;
    std::string failure;
};

/// Renders all jobs, up to `threads` at a time, with one progress bar. `tell` is called with the outcomes in
/// the order of the jobs, one at a time, on any thread: as early as that order allows, but not while the bar
/// is shown. A job that fails does not stop the others. Throws CInterruption if the user interrupts; jobs
/// that are finished by then are reported.
void RenderAll(CRenderer& renderer, std::span<const SRenderJob> jobs, int threads,
    const std::function<void(SOutcome)>& tell);

} // namespace KAV::Host
