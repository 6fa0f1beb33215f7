#pragma once

#include "tools/kavhost/render/render_batch.h"
#include "tools/kavhost/target/main_gains.h"
#include "tools/kavhost/target/target_search.h"

#include <functional>
#include <span>

namespace KAV::Host {

struct STargetPlan {
    STargets targets;
    SMainGains gains; ///< as the renderer's effects have them to begin with
};

/// As RenderAll(), with the main gains at which each file has the wanted loudness and true peak. The reason
/// of a failure says what is in the way, and what could be had.
void RenderToTargets(CRenderer& renderer, const STargetPlan& plan, std::span<const SRenderJob> jobs,
    int threads, EOrder order, const std::function<void(const SOutcome&)>& report);

/// All files as one programme with one pair of gains. Nothing appears before all are complete, and then each
/// is reported. Throws CFailure if one can't be done, CInterruption if the user interrupts; then none
/// appears.
void RenderAlbum(CRenderer& renderer, const STargetPlan& plan, std::span<const SRenderJob> jobs, int threads,
    const std::function<void(const SOutcome&)>& report);

} // namespace KAV::Host
