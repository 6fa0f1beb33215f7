#include "dsp/processor_path.h"

#include "utils/cpu_features.h"

namespace KAV::DSP {

EProcessorPath PathFor([[maybe_unused]] std::uint64_t features) noexcept {
#if defined(__x86_64__)
    constexpr std::uint64_t wide = Utils::CpuAvx | Utils::CpuFma;
    return (features & wide) == wide ? EProcessorPath::Wide : EProcessorPath::Narrow;
#else
    return EProcessorPath::Plain;
#endif
}

} // namespace KAV::DSP
