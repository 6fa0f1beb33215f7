#pragma once

#include <cstdint>
#include <string>

namespace KAV::Utils {

/// Bits of the processor's features word. Names are the manufacturers' own.
enum CpuFeature : std::uint64_t {
    Cpu3dNow = std::uint64_t{1} << 1,    ///< AMD only
    Cpu3dNowExt = std::uint64_t{1} << 2, ///< AMD only
    CpuAbm = std::uint64_t{1} << 3,      ///< AMD's name for LZCNT with POPCNT
    CpuAdx = std::uint64_t{1} << 4,
    CpuAes = std::uint64_t{1} << 5,
    CpuAvx = std::uint64_t{1} << 6,
    CpuAvx2 = std::uint64_t{1} << 7,
    CpuAvx512cd = std::uint64_t{1} << 8,
    CpuAvx512er = std::uint64_t{1} << 9,
    CpuAvx512f = std::uint64_t{1} << 10,
    CpuAvx512pf = std::uint64_t{1} << 11,
    CpuBmi1 = std::uint64_t{1} << 12,
    CpuBmi2 = std::uint64_t{1} << 13,
    CpuClfsh = std::uint64_t{1} << 14,
    CpuCmpxchg16b = std::uint64_t{1} << 15,
    CpuCx8 = std::uint64_t{1} << 16,
    CpuErms = std::uint64_t{1} << 17,
    CpuF16c = std::uint64_t{1} << 18,
    CpuFma = std::uint64_t{1} << 19,
    CpuFsgsbase = std::uint64_t{1} << 20,
    CpuFxsr = std::uint64_t{1} << 21,
    CpuHle = std::uint64_t{1} << 22, ///< Intel only
    CpuInvpcid = std::uint64_t{1} << 23,
    CpuLahf = std::uint64_t{1} << 24,
    CpuLzcnt = std::uint64_t{1} << 25,
    CpuMmx = std::uint64_t{1} << 26,
    CpuMmxext = std::uint64_t{1} << 27, ///< AMD only
    CpuMonitor = std::uint64_t{1} << 28,
    CpuMovbe = std::uint64_t{1} << 29,
    CpuMsr = std::uint64_t{1} << 30,
    CpuOsxsave = std::uint64_t{1} << 31,
    CpuPclmulqdq = std::uint64_t{1} << 32,
    CpuPopcnt = std::uint64_t{1} << 33,
    CpuPrefetchwt1 = std::uint64_t{1} << 34,
    CpuRdrand = std::uint64_t{1} << 35,
    CpuRdseed = std::uint64_t{1} << 36,
    CpuRdtscp = std::uint64_t{1} << 37,
    CpuRtm = std::uint64_t{1} << 38, ///< Intel only
    CpuSep = std::uint64_t{1} << 39,
    CpuSha = std::uint64_t{1} << 40,
    CpuSse = std::uint64_t{1} << 41,
    CpuSse2 = std::uint64_t{1} << 42,
    CpuSse3 = std::uint64_t{1} << 43,
    CpuSse41 = std::uint64_t{1} << 44,
    CpuSse42 = std::uint64_t{1} << 45,
    CpuSse4a = std::uint64_t{1} << 46, ///< AMD only
    CpuSsse3 = std::uint64_t{1} << 47,
    CpuSyscall = std::uint64_t{1} << 48,
    CpuTbm = std::uint64_t{1} << 49, ///< AMD only
    CpuXop = std::uint64_t{1} << 50, ///< AMD only
    CpuXsave = std::uint64_t{1} << 51,
};

/// The features that both the processor and the system support. Features with wide registers count only if
/// the system saves those registers. 0 on processors other than x86. Detected at the first call and kept for
/// the life of the process, so later calls are cheap; `refresh` detects them again. Any thread.
std::uint64_t DetectFeatures(bool refresh = false) noexcept;

/// The names of the features, each followed by ";", in a fixed order of families. Any thread.
std::u16string DescribeFeatures(std::uint64_t features);

} // namespace KAV::Utils
