// Compiled for processors with AVX and fused multiply-add; nobody else may call what is in here.
#include "dsp/fast/cascade_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunShortCascadeWide(const SCascadeRun& run, const SCascadeLaw& law, bool fused) noexcept {
    if (fused) {
        RunShortCascade<true>(run, law);
    } else {
        RunShortCascade<false>(run, law);
    }
}

void RunLongCascadeWide(const SCascadeRun& run, const SCascadeLaw& law, bool fused) noexcept {
    if (fused) {
        RunLongCascade<true>(run, law);
    } else {
        RunLongCascade<false>(run, law);
    }
}
#endif

} // namespace KAV::DSP
