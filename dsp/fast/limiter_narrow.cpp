// Compiled for any x86-64.
#include "dsp/fast/limiter_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunLimiterNarrow(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
    RunLimiter(run, coefficients, state);
}
#endif

} // namespace KAV::DSP
