#include "utils/cpu_features.h"

namespace KAV::Utils {

namespace {

std::uint64_t Detect() noexcept {
    std::uint64_t features = 0;
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init(); // the host may call us before the run-time library's own constructor has run
    if (__builtin_cpu_supports("sse2")) features |= CpuSse2;
    if (__builtin_cpu_supports("avx")) features |= CpuAvx;
    if (__builtin_cpu_supports("fma")) features |= CpuFma;
#endif
    return features;
}

} // namespace

std::uint64_t DetectFeatures() noexcept {
    static const std::uint64_t features = Detect();
    return features;
}

} // namespace KAV::Utils
