#pragma once

#include <xmmintrin.h>

namespace KAV::Reference {

/// The two bits of the SSE control word that make denormals zero, as results and as operands.
constexpr unsigned int FlushBits = 0x8000u | 0x0040u;

inline unsigned int ReadFlushBits() {
    return _mm_getcsr() & FlushBits;
}

inline void WriteFlushBits(unsigned int bits) {
    _mm_setcsr((_mm_getcsr() & ~FlushBits) | bits);
}

/// Flushes denormals for its lifetime; afterwards the caller's setting is restored.
class CFlushScope final {
public:
    CFlushScope() : _saved(ReadFlushBits()) { WriteFlushBits(FlushBits); }
    ~CFlushScope() { WriteFlushBits(_saved); }
    CFlushScope(const CFlushScope&) = delete;
    CFlushScope& operator=(const CFlushScope&) = delete;

private:
    unsigned int _saved;
};

} // namespace KAV::Reference
