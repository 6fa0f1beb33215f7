#include "dsp/k_weighting.h"

#include <algorithm>
#include <cmath>

namespace KAV::DSP {

namespace {

constexpr double ShelfFrequency = 5284.078578647624; // pi x Hz
constexpr double ShelfQ = 0.70717523695542;
constexpr double ShelfHigh = 1.58486470113086; // gain of the shelf, linear
constexpr double ShelfBand = 1.25872093023256;
constexpr double PassFrequency = 119.80611514558424; // pi x Hz
constexpr double PassQ = 0.50032703732504;
constexpr double PassGain = 1.00499489871469;

} // namespace

SKWeighting::SKWeighting(double rateHz) noexcept : stages{} {
    {
        const double K = std::tan(ShelfFrequency / rateHz);
        const double d = 1.0 + K / ShelfQ + K * K;
        stages[0] = {2.0 * (K * K - 1.0) / d, (1.0 - K / ShelfQ + K * K) / d,
            (ShelfHigh + ShelfBand * K / ShelfQ + K * K) / d, 2.0 * (K * K - ShelfHigh) / d,
            (ShelfHigh - ShelfBand * K / ShelfQ + K * K) / d};
    }
    const double K = std::tan(PassFrequency / rateHz);
    const double d = 1.0 + K / PassQ + K * K;
    stages[1] = {2.0 * (K * K - 1.0) / d, (1.0 - K / PassQ + K * K) / d, PassGain / d, -2.0 * PassGain / d,
        PassGain / d};
}

bool CKWeightingState::IsFinite() const noexcept {
    return std::all_of(_delays.begin(), _delays.end(),
        [](const SDelays& delays) { return std::isfinite(delays.w1) && std::isfinite(delays.w2); });
}

} // namespace KAV::DSP
