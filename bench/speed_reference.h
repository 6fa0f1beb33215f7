#pragma once

#include "tests/dsp/reference/limiter.h"
#include "tests/dsp/reference/oversampler.h"

#include <cstddef>
#include <span>
#include <vector>

namespace KAV::Bench {

/// The reference for speed: the limiter of the plain model with which the tests compare the engine bit for
/// bit.
class CReferenceLimiter final {
public:
    CReferenceLimiter(double rateHz, float thresholdPos, float releasePos, bool autoRelease) {
        _limiter.SetRate(rateHz);
        _limiter.SetParams(
            static_cast<double>(thresholdPos), 1.0, static_cast<double>(releasePos), autoRelease);
    }
    void Process(std::span<float* const> channels, std::size_t length) {
        _limiter.Process(channels, static_cast<int>(length));
    }

private:
    Reference::CCoverage _coverage;
    Reference::CLimiter _limiter{_coverage};
};

/// The model's low-pass, one channel at a time.
class CReferenceCascade final {
public:
    CReferenceCascade(std::size_t order, double cutoff) : _filter(static_cast<int>(order)) {
        _filter.Design(cutoff);
    }
    void Process(std::span<float* const> channels, std::size_t length) {
        _channels.assign(channels.begin(), channels.end());
        _filter.Run(_channels, static_cast<int>(length), 1, _coverage);
    }

private:
    Reference::CCoverage _coverage;
    Reference::CLowPass _filter;
    std::vector<float*> _channels;
};

} // namespace KAV::Bench
