// Windows keeps a stack aligned to 16 bytes, and this project's compiler for it doesn't align its 32-byte spills any
// further: the assembler is told to write moves that don't mind. Here 32-byte values are spilled at every alignment
// that a stack can have.

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

/// Leaves no vector register as it was, so that the caller must keep its values on the stack.
__attribute__((noinline)) void ForgetRegisters() {
    asm volatile("vzeroall" ::
                     : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11",
                       "xmm12", "xmm13", "xmm14", "xmm15", "memory");
}

__attribute__((noinline, target("avx"))) float SumOfSpilled(const float* values) {
    __m256 kept[12];
    for (std::size_t i = 0; i < std::size(kept); ++i) kept[i] = _mm256_loadu_ps(values + 8 * i);
    ForgetRegisters();
    __m256 sum = _mm256_setzero_ps();
    for (const __m256& value : kept) sum = _mm256_add_ps(sum, value);
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
    if ((KAV::Utils::DetectFeatures() & KAV::Utils::CpuAvx) == 0) return; // this processor never runs such code
    std::array<float, 96> values{};
    float expected = 0.0f;
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<float>(i);
        expected += values[i];
    }
    for (std::size_t move = 0; move < 128; move += 16) {
        float sum = 0.0f;
        std::thread([&] { sum = WithStackMoved(move, values.data()); }).join();
        EXPECT_EQ(sum, expected) << "stack moved by " << move;
    }
}

#endif
