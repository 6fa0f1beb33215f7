// Compiled for processors with AVX and fused multiply-add; may only be called on those.
#include "dsp/fast/cascade_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunShortCascadeWide(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients, bool fused) noexcept {
    if (fused) {
        RunShortCascade<true>(run, coefficients);
    } else {
        RunShortCascade<false>(run, coefficients);
    }
}

void RunLongCascadeWide(
    const SCascadeRun& run, const SCascadeCoefficients& coefficients, bool fused) noexcept {
    if (fused) {
        RunLongCascade<true>(run, coefficients);
    } else {
        RunLongCascade<false>(run, coefficients);
    }
}
#endif

} // namespace KAV::DSP
