#include "utils/cpu_features.h"

#include <bit>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV::Utils;

TEST(DescribeFeatures, NamesEveryBitInItsOrder) {
    const std::vector<std::pair<std::u16string, int>> names{{u"3DNow;", 1}, {u"3DNowExt;", 2}, {u"MMX;", 26},
        {u"MMXEXT;", 27}, {u"SSE;", 41}, {u"SSE2;", 42}, {u"SSE3;", 43}, {u"SSE41;", 44}, {u"SSE42;", 45},
        {u"SSE4a;", 46}, {u"SSSE3;", 47}, {u"AVX;", 6}, {u"AVX2;", 7}, {u"AVX512CD;", 8}, {u"AVX512ER;", 9},
        {u"AVX512F;", 10}, {u"AVX512PF;", 11}, {u"ABM;", 3}, {u"ADX;", 4}, {u"AES;", 5}, {u"BMI1;", 12},
        {u"BMI2;", 13}, {u"CLFSH;", 14}, {u"CMPXCHG16B;", 15}, {u"CX8;", 16}, {u"ERMS;", 17}, {u"F16C;", 18},
        {u"FMA;", 19}, {u"FSGSBASE;", 20}, {u"FXSR;", 21}, {u"HLE;", 22}, {u"INVPCID;", 23}, {u"LAHF;", 24},
        {u"LZCNT;", 25}, {u"MONITOR;", 28}, {u"MOVBE;", 29}, {u"MSR;", 30}, {u"OSXSAVE;", 31},
        {u"PCLMULQDQ;", 32}, {u"POPCNT;", 33}, {u"PREFETCHWT1;", 34}, {u"RDRAND;", 35}, {u"RDSEED;", 36},
        {u"RDTSCP;", 37}, {u"RTM;", 38}, {u"SEP;", 39}, {u"SHA;", 40}, {u"SYSCALL;", 48}, {u"TBM;", 49},
        {u"XOP;", 50}, {u"XSAVE;", 51}};
    std::u16string all;
    for (const auto& [name, bit] : names) {
        EXPECT_EQ(DescribeFeatures(std::uint64_t{1} << bit), name);
        all += name;
    }
    EXPECT_EQ(DescribeFeatures(~std::uint64_t{0}), all);
    EXPECT_EQ(DescribeFeatures(0), u"");
    EXPECT_EQ(DescribeFeatures(std::uint64_t{1}), u"");
}

TEST(DetectFeatures, IsTheSameEachTimeAndWhenAskedAnew) {
    const auto features = DetectFeatures();
    EXPECT_EQ(DetectFeatures(), features);
    EXPECT_EQ(DetectFeatures(true), features);
}

#if defined(__x86_64__)
TEST(DetectFeatures, FindsWhatEveryProcessorOfThisKindHas) {
    const std::uint64_t always = CpuMmx | CpuSse | CpuSse2 | CpuCx8 | CpuFxsr | CpuSyscall | CpuMsr;
    EXPECT_EQ(DetectFeatures() & always, always);
}

TEST(DetectFeatures, AgreesWithTheCompilersOwnDetection) {
    EXPECT_EQ((DetectFeatures() & CpuAvx) != 0, __builtin_cpu_supports("avx") != 0);
    EXPECT_EQ((DetectFeatures() & CpuFma) != 0, __builtin_cpu_supports("fma") != 0);
    EXPECT_EQ((DetectFeatures() & CpuAvx2) != 0, __builtin_cpu_supports("avx2") != 0);
    EXPECT_EQ((DetectFeatures() & CpuAvx512f) != 0, __builtin_cpu_supports("avx512f") != 0);
}
#endif
