#pragma once

#include "utils/realtime.h"

#include <array>

namespace KAV::DSP {

/// Coefficients of the K-weighting of ITU-R BS.1770 at one rate, derived from its analogue prototype: a high
/// shelf, then a high pass.
struct SKWeighting {
    struct SStage {
        double a1 = 0.0, a2 = 0.0;
        double b0 = 1.0, b1 = 0.0, b2 = 0.0;
    };
    std::array<SStage, 2> stages;

    explicit SKWeighting(double rateHz) noexcept;
};

/// The delays of one weighted channel, in direct form II.
class CKWeightingState final {
public:
    KAV_REALTIME double Filter(const SKWeighting& weighting, double x) noexcept {
        for (std::size_t s = 0; s < weighting.stages.size(); ++s) {
            const auto& stage = weighting.stages[s];
            SDelays& delays = _delays[s];
            const double w = x - stage.a1 * delays.w1 - stage.a2 * delays.w2;
            x = stage.b0 * w + stage.b1 * delays.w1 + stage.b2 * delays.w2;
            delays.w2 = delays.w1;
            delays.w1 = w;
        }
        return x;
    }
    KAV_REALTIME void Clear() noexcept { _delays = {}; }
    KAV_REALTIME bool IsFinite() const noexcept;

private:
    struct SDelays {
        double w1 = 0.0, w2 = 0.0;
    };
    std::array<SDelays, 2> _delays;
};

} // namespace KAV::DSP
