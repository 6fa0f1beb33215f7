#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KAV::Tests {

struct SPeakDifference {
    double peak = 0.0;       ///< of the first of the two
    double difference = 0.0; ///< the largest between them
};

/// Compares two lists of channels with the same lengths.
template<typename Channels>
SPeakDifference Compare(const Channels& plain, const Channels& other) {
    SPeakDifference result;
    for (std::size_t c = 0; c < plain.size(); ++c) {
        for (std::size_t i = 0; i < plain[c].size(); ++i) {
            const double x = static_cast<double>(plain[c][i]);
            result.peak = std::max(result.peak, std::fabs(x));
            result.difference = std::max(result.difference, std::fabs(x - static_cast<double>(other[c][i])));
        }
    }
    return result;
}

} // namespace KAV::Tests
