#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace KAV::DSP {

/// While an object of this class lives, its thread flushes denormals to zero, in operands and in results. The
/// destructor restores the host's setting. Other bits of the control word (rounding, masks, sticky flags)
/// stay as they are.
class CFlushDenormals final {
public:
    CFlushDenormals() noexcept : _saved(Read() & Bits) { Write(Read() | Bits); }
    ~CFlushDenormals() { Write((Read() & ~Bits) | _saved); }
    CFlushDenormals(const CFlushDenormals&) = delete;
    CFlushDenormals& operator=(const CFlushDenormals&) = delete;

private:
#if defined(__SSE2__)
    using Word = std::uint32_t;
    static constexpr Word Bits = 0x8040; // MXCSR: flush-to-zero (15) and denormals-are-zero (6)
    static Word Read() noexcept {
        return _mm_getcsr();
    }
    static void Write(Word word) noexcept {
        _mm_setcsr(word);
    }
#elif defined(__aarch64__)
    using Word = std::uint64_t;
    static constexpr Word Bits = Word{1} << 24; // FPCR.FZ does both
    static Word Read() noexcept {
        Word word;
        asm volatile("mrs %0, fpcr" : "=r"(word));
        return word;
    }
    static void Write(Word word) noexcept {
        asm volatile("msr fpcr, %0" : : "r"(word));
    }
#else
    using Word = std::uint32_t;
    static constexpr Word Bits = 0;
    static Word Read() noexcept {
        return 0;
    }
    static void Write(Word) noexcept {}
#endif

    Word _saved;
};

} // namespace KAV::DSP
