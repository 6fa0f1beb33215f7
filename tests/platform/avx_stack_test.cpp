// Windows keeps the stack aligned to 16 bytes, and this project's compiler for it doesn't align its 32-byte
// spills any further, so the assembler is made to write unaligned moves. Here 32-byte values are spilled at
// every alignment that a stack can have.

#include "utils/cpu_features.h"

#include <array>
#include <gtest/gtest.h>
#include <thread>

#if defined(__x86_64__)

#include <immintrin.h>

#if defined(_WIN32)
#include <malloc.h>
#else
#include <alloca.h>
#endif

namespace {

/// Overwrites every vector register, so that the caller must keep its values on the stack.
__attribute__((noinline, target("avx"))) void ForgetRegisters() {
    asm volatile("vzeroall" ::
                     : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9",
                 "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15", "memory");
}

/// Six values that live across a call and so are spilled. An array of them would prove nothing: the compiler
/// aligns variables with a name and an address, but not its own spills.
__attribute__((noinline, target("avx"))) float SumOfSpilled(const float* values) {
    const __m256 a = _mm256_loadu_ps(values);
    const __m256 b = _mm256_loadu_ps(values + 8);
    const __m256 c = _mm256_loadu_ps(values + 16);
    const __m256 d = _mm256_loadu_ps(values + 24);
    const __m256 e = _mm256_loadu_ps(values + 32);
    const __m256 f = _mm256_loadu_ps(values + 40);
    const __m256 ab = _mm256_mul_ps(a, b);
    const __m256 cd = _mm256_mul_ps(c, d);
    const __m256 ef = _mm256_mul_ps(e, f);
    const __m256 ad = _mm256_mul_ps(a, d);
    ForgetRegisters();
    const __m256 sum = _mm256_add_ps(_mm256_add_ps(ab, cd), _mm256_add_ps(ef, ad));
    std::array<float, 8> lanes;
    _mm256_storeu_ps(lanes.data(), sum);
    float total = 0.0f;
    for (const float lane : lanes) total += lane;
    return total;
}

/// Calls with the stack moved down by `bytes`.
__attribute__((noinline)) float WithStackMoved(std::size_t bytes, const float* values) {
    auto* room = static_cast<volatile char*>(alloca(bytes + 16));
    room[0] = 1;
    const float sum = SumOfSpilled(values);
    return sum + static_cast<float>(room[0]) - 1.0f;
}

} // namespace

TEST(AvxCode, RunsInAThreadWhateverItsStacksAlignment) {
    if ((KAV::Utils::DetectFeatures() & KAV::Utils::CpuAvx) == 0)
        return; // this processor never runs such code
    std::array<float, 48> values{};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i);
    float expected = 0.0f; // of integers, so that the order of the sums makes no difference
    for (std::size_t i = 0; i < 8; ++i) {
        expected += values[i] * values[i + 8] + values[i + 16] * values[i + 24] +
                    values[i + 32] * values[i + 40] + values[i] * values[i + 24];
    }
    for (std::size_t move = 0; move < 128; move += 16) {
        float sum = 0.0f;
        std::thread([&] { sum = WithStackMoved(move, values.data()); }).join();
        EXPECT_EQ(sum, expected) << "stack moved by " << move;
    }
}

#if defined(_WIN32)
TEST(AvxCode, AlignedMovesAreAssembledAsMovesThatTakeAnyAddress) {
    if ((KAV::Utils::DetectFeatures() & KAV::Utils::CpuAvx) == 0) return;
    alignas(32) std::array<float, 16> memory{};
    memory.fill(1.0f);
    asm volatile("vxorps %%xmm0, %%xmm0, %%xmm0\n\t"
                 "vmovaps %%ymm0, %0\n\t" // off by 16 bytes: an aligned move would end the process
                 "vzeroupper"
                 : "=m"(*reinterpret_cast<float(*)[8]>(memory.data() + 4))
                 :
                 : "xmm0");
    for (std::size_t i = 0; i < memory.size(); ++i) EXPECT_EQ(memory[i], i >= 4 && i < 12 ? 0.0f : 1.0f) << i;
}
#endif

#endif
