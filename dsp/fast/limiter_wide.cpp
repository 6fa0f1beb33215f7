// Compiled for processors with AVX and fused multiply-add; may only be called on those.
#include "dsp/fast/limiter_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunLimiterWide(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
    RunLimiter(run, coefficients, state);
}
#endif

} // namespace KAV::DSP
