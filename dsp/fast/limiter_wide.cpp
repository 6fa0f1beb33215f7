// Compiled for processors with AVX and fused multiply-add; nobody else may call what is in here.
#include "dsp/fast/limiter_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunLimiterWide(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
    RunLimiter(run, coefficients, state);
}
#endif

} // namespace KAV::DSP
