#include "utils/cpu_features.h"

#include "utils/shared.h"

#include <array>
#include <cstring>
#include <string_view>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace KAV::Utils {

namespace {

struct SName {
    std::u16string_view name;
    CpuFeature bit;
};

constexpr std::array Names{
    SName{u"3DNow;", Cpu3dNow},
    SName{u"3DNowExt;", Cpu3dNowExt},
    SName{u"MMX;", CpuMmx},
    SName{u"MMXEXT;", CpuMmxext},
    SName{u"SSE;", CpuSse},
    SName{u"SSE2;", CpuSse2},
    SName{u"SSE3;", CpuSse3},
    SName{u"SSE41;", CpuSse41},
    SName{u"SSE42;", CpuSse42},
    SName{u"SSE4a;", CpuSse4a},
    SName{u"SSSE3;", CpuSsse3},
    SName{u"AVX;", CpuAvx},
    SName{u"AVX2;", CpuAvx2},
    SName{u"AVX512CD;", CpuAvx512cd},
    SName{u"AVX512ER;", CpuAvx512er},
    SName{u"AVX512F;", CpuAvx512f},
    SName{u"AVX512PF;", CpuAvx512pf},
    SName{u"ABM;", CpuAbm},
    SName{u"ADX;", CpuAdx},
    SName{u"AES;", CpuAes},
    SName{u"BMI1;", CpuBmi1},
    SName{u"BMI2;", CpuBmi2},
    SName{u"CLFSH;", CpuClfsh},
    SName{u"CMPXCHG16B;", CpuCmpxchg16b},
    SName{u"CX8;", CpuCx8},
    SName{u"ERMS;", CpuErms},
    SName{u"F16C;", CpuF16c},
    SName{u"FMA;", CpuFma},
    SName{u"FSGSBASE;", CpuFsgsbase},
    SName{u"FXSR;", CpuFxsr},
    SName{u"HLE;", CpuHle},
    SName{u"INVPCID;", CpuInvpcid},
    SName{u"LAHF;", CpuLahf},
    SName{u"LZCNT;", CpuLzcnt},
    SName{u"MONITOR;", CpuMonitor},
    SName{u"MOVBE;", CpuMovbe},
    SName{u"MSR;", CpuMsr},
    SName{u"OSXSAVE;", CpuOsxsave},
    SName{u"PCLMULQDQ;", CpuPclmulqdq},
    SName{u"POPCNT;", CpuPopcnt},
    SName{u"PREFETCHWT1;", CpuPrefetchwt1},
    SName{u"RDRAND;", CpuRdrand},
    SName{u"RDSEED;", CpuRdseed},
    SName{u"RDTSCP;", CpuRdtscp},
    SName{u"RTM;", CpuRtm},
    SName{u"SEP;", CpuSep},
    SName{u"SHA;", CpuSha},
    SName{u"SYSCALL;", CpuSyscall},
    SName{u"TBM;", CpuTbm},
    SName{u"XOP;", CpuXop},
    SName{u"XSAVE;", CpuXsave},
};

#if defined(__x86_64__) || defined(__i386__)

/// The registers that report features.
enum ERegister : std::size_t { Leaf1Ecx, Leaf1Edx, Leaf7Ebx, Leaf7Ecx, ExtendedEcx, ExtendedEdx, Registers };

/// What a feature needs in addition to its own bit.
enum class ENeed { Nothing, Intel, Amd, Avx, AvxOfAmd, Avx512 };

struct SSource {
    CpuFeature feature{};
    ERegister reg{};
    int bit = 0;
    ENeed need = ENeed::Nothing;
};

constexpr std::array Sources{
    SSource{CpuSse3, Leaf1Ecx, 0},
    SSource{CpuPclmulqdq, Leaf1Ecx, 1},
    SSource{CpuMonitor, Leaf1Ecx, 3},
    SSource{CpuSsse3, Leaf1Ecx, 9},
    SSource{CpuFma, Leaf1Ecx, 12, ENeed::Avx},
    SSource{CpuCmpxchg16b, Leaf1Ecx, 13},
    SSource{CpuSse41, Leaf1Ecx, 19},
    SSource{CpuSse42, Leaf1Ecx, 20},
    SSource{CpuMovbe, Leaf1Ecx, 22},
    SSource{CpuPopcnt, Leaf1Ecx, 23},
    SSource{CpuAes, Leaf1Ecx, 25},
    SSource{CpuXsave, Leaf1Ecx, 26},
    SSource{CpuOsxsave, Leaf1Ecx, 27},
    SSource{CpuAvx, Leaf1Ecx, 28, ENeed::Avx},
    SSource{CpuF16c, Leaf1Ecx, 29, ENeed::Avx},
    SSource{CpuRdrand, Leaf1Ecx, 30},
    SSource{CpuMsr, Leaf1Edx, 5},
    SSource{CpuCx8, Leaf1Edx, 8},
    SSource{CpuSep, Leaf1Edx, 11},
    SSource{CpuClfsh, Leaf1Edx, 19},
    SSource{CpuMmx, Leaf1Edx, 23},
    SSource{CpuFxsr, Leaf1Edx, 24},
    SSource{CpuSse, Leaf1Edx, 25},
    SSource{CpuSse2, Leaf1Edx, 26},
    SSource{CpuFsgsbase, Leaf7Ebx, 0},
    SSource{CpuBmi1, Leaf7Ebx, 3},
    SSource{CpuHle, Leaf7Ebx, 4, ENeed::Intel},
    SSource{CpuAvx2, Leaf7Ebx, 5, ENeed::Avx},
    SSource{CpuBmi2, Leaf7Ebx, 8},
    SSource{CpuErms, Leaf7Ebx, 9},
    SSource{CpuInvpcid, Leaf7Ebx, 10},
    SSource{CpuRtm, Leaf7Ebx, 11, ENeed::Intel},
    SSource{CpuAvx512f, Leaf7Ebx, 16, ENeed::Avx512},
    SSource{CpuRdseed, Leaf7Ebx, 18},
    SSource{CpuAdx, Leaf7Ebx, 19},
    SSource{CpuAvx512pf, Leaf7Ebx, 26, ENeed::Avx512},
    SSource{CpuAvx512er, Leaf7Ebx, 27, ENeed::Avx512},
    SSource{CpuAvx512cd, Leaf7Ebx, 28, ENeed::Avx512},
    SSource{CpuSha, Leaf7Ebx, 29},
    SSource{CpuPrefetchwt1, Leaf7Ecx, 0},
    SSource{CpuLahf, ExtendedEcx, 0},
    SSource{CpuLzcnt, ExtendedEcx, 5},
    SSource{CpuAbm, ExtendedEcx, 5, ENeed::Amd},
    SSource{CpuSse4a, ExtendedEcx, 6, ENeed::Amd},
    SSource{CpuXop, ExtendedEcx, 11, ENeed::AvxOfAmd},
    SSource{CpuTbm, ExtendedEcx, 21, ENeed::Amd},
    SSource{CpuSyscall, ExtendedEdx, 11},
    SSource{CpuMmxext, ExtendedEdx, 22, ENeed::Amd},
    SSource{CpuRdtscp, ExtendedEdx, 27},
    SSource{Cpu3dNowExt, ExtendedEdx, 30, ENeed::Amd},
    SSource{Cpu3dNow, ExtendedEdx, 31, ENeed::Amd},
};

/// What the processor and the system report about themselves.
struct SProcessor {
    std::array<unsigned int, Registers> registers{};
    bool isIntel = false;
    bool isAmd = false;
    bool savesAvx = false;    // the system keeps the 256-bit registers of each thread
    bool savesAvx512 = false; // and the 512-bit ones with their masks

    bool Has(const SSource& source) const noexcept {
        if ((registers[source.reg] >> source.bit & 1u) == 0) return false;
        switch (source.need) {
        case ENeed::Intel:
            return isIntel;
        case ENeed::Amd:
            return isAmd;
        case ENeed::Avx:
            return savesAvx;
        case ENeed::AvxOfAmd:
            return isAmd && savesAvx;
        case ENeed::Avx512:
            return savesAvx512;
        case ENeed::Nothing:
            break;
        }
        return true;
    }
};

/// Which registers the system saves when it switches threads.
unsigned int SavedRegisters() noexcept {
    unsigned int low = 0;
    unsigned int high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

SProcessor Ask() noexcept {
    SProcessor processor;
    auto& registers = processor.registers;
    unsigned int eax = 0;
    unsigned int ebx = 0;
    unsigned int ecx = 0;
    unsigned int edx = 0;
    if (__get_cpuid(0, &eax, &ebx, &ecx, &edx) == 0) return processor;
    std::array<unsigned int, 3> maker{ebx, edx, ecx};
    processor.isIntel = std::memcmp(maker.data(), "GenuineIntel", sizeof(maker)) == 0;
    processor.isAmd = std::memcmp(maker.data(), "AuthenticAMD", sizeof(maker)) == 0;

    __get_cpuid(1, &eax, &ebx, &registers[Leaf1Ecx], &registers[Leaf1Edx]);
    __get_cpuid_count(7, 0, &eax, &registers[Leaf7Ebx], &registers[Leaf7Ecx], &edx);
    __get_cpuid(0x80000001u, &eax, &ebx, &registers[ExtendedEcx], &registers[ExtendedEdx]);

    constexpr unsigned int osSaves = 1u << 27;
    constexpr unsigned int avx = 0x06;    // XMM and the upper halves of YMM
    constexpr unsigned int avx512 = 0xE6; // also the masks and all of ZMM
    if ((registers[Leaf1Ecx] & osSaves) != 0) {
        const unsigned int saved = SavedRegisters();
        processor.savesAvx = (saved & avx) == avx;
        processor.savesAvx512 = (saved & avx512) == avx512;
    }
    return processor;
}

std::uint64_t Detect() noexcept {
    const SProcessor processor = Ask();
    std::uint64_t features = 0;
    for (const auto& source : Sources) {
        if (processor.Has(source)) features |= source.feature;
    }
    return features;
}

#else

std::uint64_t Detect() noexcept {
    return 0;
}

#endif

} // namespace

std::uint64_t DetectFeatures(bool refresh) noexcept {
    static CShared<std::uint64_t> features{Detect()};
    if (refresh) features = Detect();
    return features;
}

std::u16string DescribeFeatures(std::uint64_t features) {
    std::u16string text;
    for (const auto& name : Names) {
        if ((features & name.bit) != 0) text += name.name;
    }
    return text;
}

} // namespace KAV::Utils
