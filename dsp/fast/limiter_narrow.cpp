// Compiled for any x86-64.
#include "dsp/fast/limiter_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunLimiterNarrow(SLimiterRun& run, const SReleaseLaw& law, SLimiterState& state) noexcept {
    RunLimiter(run, law, state);
}
#endif

} // namespace KAV::DSP
