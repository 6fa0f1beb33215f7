// The limiter's own functions, compiled as it compiles them; see close_functions_test.cpp.
#include "dsp/close_functions.h"

namespace KAV::Tests {

double WideFourthPower(double x) {
#if defined(KAV_CLOSE_FUNCTIONS)
    return DSP::FourthPower(x);
#else
    return std::pow(x, 4.0);
#endif
}

double WideExponential(double x) {
#if defined(KAV_CLOSE_FUNCTIONS)
    return DSP::Exponential(x);
#else
    return std::exp(x);
#endif
}

} // namespace KAV::Tests
