// Compiled for any x86-64.
#include "dsp/fast/cascade_passes.h"

namespace KAV::DSP {

#if defined(__x86_64__)
void RunShortCascadeNarrow(const SCascadeRun& run, const SCascadeLaw& law) noexcept {
    RunShortCascade<false>(run, law);
}

void RunLongCascadeNarrow(const SCascadeRun& run, const SCascadeLaw& law) noexcept {
    RunLongCascade<false>(run, law);
}
#endif

} // namespace KAV::DSP
