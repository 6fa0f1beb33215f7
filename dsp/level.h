#pragma once

#include <cmath>

namespace KAV::DSP {

/// Linear gain of a level in decibels.
inline double GainOfDb(double db) noexcept {
    return std::pow(10.0, db / 20.0);
}

} // namespace KAV::DSP
