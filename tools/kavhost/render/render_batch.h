#pragma once

#include "tools/kavhost/render/render.h"

#include <functional>
#include <optional>
#include <span>
#include <string>

namespace KAV::Host {

/// What became of a job: a report, or why there is none.
struct SOutcome {
    std::optional<SRenderReport> report;
    std::string failure;
};

/// Renders all jobs, up to `threads` at a time, behind one progress bar. `tell` gets the outcomes in the
/// order of the jobs, one at a time, on any thread: as early as that order allows, but not into a bar. A job
/// that fails does not keep the others from being done. Throws CInterruption when the user ends it; what is
/// finished by then is told.
void RenderAll(CRenderer& renderer, std::span<const SRenderJob> jobs, int threads,
    const std::function<void(SOutcome)>& tell);

} // namespace KAV::Host
