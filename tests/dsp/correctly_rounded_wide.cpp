// The limiter's own functions, compiled as it compiles them; see correctly_rounded_test.cpp.
#include "dsp/correctly_rounded.h"

namespace KAV::Tests {

double WideFourthPower(double x) {
#if defined(KAV_CORRECTLY_ROUNDED)
    return DSP::FourthPower(x);
#else
    return std::pow(x, 4.0);
#endif
}

double WideExponential(double x) {
#if defined(KAV_CORRECTLY_ROUNDED)
    return DSP::Exponential(x);
#else
    return std::exp(x);
#endif
}

} // namespace KAV::Tests
