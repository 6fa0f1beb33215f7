// Compiled for any x86-64.
#include "dsp/fast/cascade_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunShortCascadeNarrow(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept {
    RunShortCascade<false>(run, coefficients);
}

void RunLongCascadeNarrow(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept {
    RunLongCascade<false>(run, coefficients);
}
#endif

} // namespace KAV::DSP
