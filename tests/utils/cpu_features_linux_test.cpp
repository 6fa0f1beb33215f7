#include "tests/support/file_text.h"
#include "utils/cpu_features.h"
#include "utils/text.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

/// The kernel's name for each of ours.
struct SPair {
    std::uint64_t ours;
    const char* kernels;
};

const std::vector<SPair> Pairs{{Cpu3dNow, "3dnow"}, {Cpu3dNowExt, "3dnowext"}, {CpuMmx, "mmx"},
    {CpuMmxext, "mmxext"}, {CpuSse, "sse"}, {CpuSse2, "sse2"}, {CpuSse3, "pni"}, {CpuSse41, "sse4_1"},
    {CpuSse42, "sse4_2"}, {CpuSse4a, "sse4a"}, {CpuSsse3, "ssse3"}, {CpuAvx, "avx"}, {CpuAvx2, "avx2"},
    {CpuAvx512cd, "avx512cd"}, {CpuAvx512er, "avx512er"}, {CpuAvx512f, "avx512f"}, {CpuAvx512pf, "avx512pf"},
    {CpuAdx, "adx"}, {CpuAes, "aes"}, {CpuBmi1, "bmi1"}, {CpuBmi2, "bmi2"}, {CpuClfsh, "clflush"},
    {CpuCmpxchg16b, "cx16"}, {CpuCx8, "cx8"}, {CpuErms, "erms"}, {CpuF16c, "f16c"}, {CpuFma, "fma"},
    {CpuFsgsbase, "fsgsbase"}, {CpuFxsr, "fxsr"}, {CpuHle, "hle"}, {CpuInvpcid, "invpcid"},
    {CpuLahf, "lahf_lm"}, {CpuLzcnt, "abm"}, {CpuMonitor, "monitor"}, {CpuMovbe, "movbe"}, {CpuMsr, "msr"},
    {CpuPclmulqdq, "pclmulqdq"}, {CpuPopcnt, "popcnt"}, {CpuRdrand, "rdrand"}, {CpuRdseed, "rdseed"},
    {CpuRdtscp, "rdtscp"}, {CpuRtm, "rtm"}, {CpuSep, "sep"}, {CpuSha, "sha_ni"}, {CpuSyscall, "syscall"},
    {CpuTbm, "tbm"}, {CpuXop, "xop"}, {CpuXsave, "xsave"}};

/// Features that a kernel may hide although the processor reports them: it has disabled them because of
/// faults, or through its command line.
const std::uint64_t MayBeHidden =
    CpuHle | CpuRtm | CpuInvpcid | CpuFsgsbase | CpuMonitor | CpuRdrand | CpuRdseed | CpuErms | CpuSep;

/// Features that only count on one manufacturer's processors, although others make compatible ones.
const std::uint64_t OneMakers =
    Cpu3dNow | Cpu3dNowExt | CpuMmxext | CpuSse4a | CpuTbm | CpuXop | CpuHle | CpuRtm;

bool IsOfAKnownMaker() {
    const auto table = ReadText("/proc/cpuinfo");
    return table.find("GenuineIntel") != std::string::npos || table.find("AuthenticAMD") != std::string::npos;
}

std::set<std::string> KernelFlags() {
    const auto table = ReadText("/proc/cpuinfo");
    const auto line = table.find("\nflags");
    if (line == std::string::npos) return {};
    std::istringstream words(table.substr(line, table.find('\n', line + 1) - line));
    std::set<std::string> flags;
    for (std::string word; words >> word;) flags.insert(word);
    return flags;
}

} // namespace

TEST(DetectFeatures, AgreesWithTheKernelsFlags) {
    const auto flags = KernelFlags();
    if (flags.empty()) GTEST_SKIP() << "the kernel lists no flags";
    const auto features = DetectFeatures();
    const bool known = IsOfAKnownMaker();
    for (const auto& [ours, kernels] : Pairs) {
        if (!known && (ours & OneMakers) != 0) continue;
        const bool found = (features & ours) != 0;
        const bool listed = flags.contains(kernels);
        if (listed || (ours & MayBeHidden) == 0) {
            EXPECT_EQ(found, listed) << kernels;
        }
    }
}
