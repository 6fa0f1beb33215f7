#include "dsp/lookahead_limiter.h"

#include "dsp/level.h"
#include "dsp/release_law.h"

#include <algorithm>
#include <cmath>

namespace KAV::DSP {

std::size_t LookaheadLength(double rateHz) noexcept {
    const double steps = std::floor(rateHz * 0.0014 * 0.015625 + 0.6);
    return steps < 1.0 ? 64 : static_cast<std::size_t>(steps) * 64; // below about 18 kHz: the shortest window
}

LookaheadLimiter::LookaheadLimiter() {
    _coefficients.coefficientFloor = std::exp(-1.0);
    Reserve(44100.0);
    SetRate(44100.0);
}

void LookaheadLimiter::Reserve(double rateHz) {
    const std::size_t lookahead = LookaheadLength(rateHz);
    _tree.Reserve(lookahead);
    _peaks.Reserve(lookahead);
    std::size_t window = ShortestMaximum;
    for (auto& maxima : _maxima) {
        if (window >= lookahead) break;
        maxima.Reserve(window);
        window *= 2;
    }
    for (auto* history : {&_released, &_averaged}) history->Reserve(lookahead / 2 + 1);
    for (auto& driven : _driven) driven.Reserve(lookahead);
}

void LookaheadLimiter::SetRate(double rateHz) {
    _rateHz = rateHz;
    const std::size_t lookahead = LookaheadLength(rateHz);
    _coefficients.tau = rateHz / -std::log(0.1);
    _coefficients.envelopeFall = CoefficientOf(0.25, _coefficients.tau);
    _coefficients.envelopeRise = CoefficientOf(0.5, _coefficients.tau);
    _coefficients.curve[0] = CoefficientOf(0.281, _coefficients.tau);
    _coefficients.curve[1] = CoefficientOf(0.057, _coefficients.tau);
    _coefficients.curve[2] = CoefficientOf(0.00054, _coefficients.tau);
    // The floor is (1 - g)^4 seconds = 1 / tau seconds; the margin stays clear of rounding errors.
    _coefficients.floorGain = 1.0 - std::pow(_coefficients.tau, -0.25) * (1.0 - 1e-9);
    _lookahead = static_cast<std::uint32_t>(lookahead);

    const std::size_t size = lookahead / 2 + 1;
    _tree.Reset(lookahead);
    _peaks.Reset(lookahead, 0.0f);
    std::size_t window = ShortestMaximum;
    _maximaCount = 0;
    for (; window < lookahead; window *= 2) _maxima[_maximaCount++].Reset(window, 0.0f);
    _isTreeCurrent = _areMaximaCurrent = true;
    for (auto* history : {&_released, &_averaged}) history->Reset(size, 1.0);
    for (auto& driven : _driven) driven.Reset(lookahead, 0.0f);

    const double minimum = _state.minimum;
    _state = SLimiterState{};
    _state.minimum = minimum;
    _state.sums[0] = _state.sums[1] = static_cast<double>(size);
    _state.automaticCoefficient = CoefficientOf(0.001, _coefficients.tau);
    _state.isCoefficientKnown = true;
    SetParams(_thresholdPos, _ceilingPos, _releasePos, _coefficients.automatic);
}

void LookaheadLimiter::SetParams(
    float thresholdPos, float ceilingPos, float releasePos, bool autoRelease) noexcept {
    _thresholdPos = thresholdPos;
    _ceilingPos = ceilingPos;
    _releasePos = releasePos;
    if (autoRelease != _coefficients.automatic) _state.equalGainsInARow = 0; // the averages get another gain
    _coefficients.automatic = autoRelease;
    _drive = 1.0 / GainOfDb(30.0 * static_cast<double>(thresholdPos) - 30.0);
    _ceiling = GainOfDb(30.0 * static_cast<double>(ceilingPos) - 30.0);
    _coefficients.fixedCoefficient =
        CoefficientOf(std::pow(10.0, 5.0 * (static_cast<double>(releasePos) - 1.0)), _coefficients.tau);
}

void LookaheadLimiter::Process(
    std::span<float* const> channels, std::size_t length, EProcessorPath path) noexcept {
    // A buffer that appears twice is driven twice, and its second place delays what the first one has
    // written. That only works one sample at a time.
    for (std::size_t c = 1; c < channels.size() && path != EProcessorPath::Plain; ++c) {
        const auto earlier = channels.first(c);
        if (std::find(earlier.begin(), earlier.end(), channels[c]) != earlier.end()) {
            path = EProcessorPath::Plain;
        }
    }
    for (std::size_t done = 0; done < length;) {
        const std::size_t count = std::min(length - done, LongestRun);
        Run(channels, done, count, path);
        done += count;
    }
    if (_latch) {
        _reportedGain = _state.minimum;
        _state.minimum = 1.0;
        _latch = false;
    }
}

void LookaheadLimiter::Run(std::span<float* const> channels, std::size_t from, std::size_t length,
    [[maybe_unused]] EProcessorPath path) noexcept {
    SLimiterRun run; // NOLINT(cppcoreguidelines-pro-type-member-init): see there
    run.channelCount = channels.size();
    run.length = length;
    run.drive = _drive;
    run.ceiling = _ceiling;
    run.lookahead = Lookahead();
    run.size = run.lookahead / 2 + 1;
    for (std::size_t c = 0; c < channels.size(); ++c) {
        run.channels[c] = channels[c] + from;
        run.driven[c] = _driven[c].Next(length);
    }
    run.peaks = _peaks.Next(length);
    run.released = _released.Next(length);
    run.averaged = _averaged.Next(length);

    if (path == EProcessorPath::Plain) {
        if (!_isTreeCurrent) RefillTree(run);
        RunPlain(run);
        _areMaximaCurrent = false;
    }
#if defined(__x86_64__)
    if (path != EProcessorPath::Plain) {
        for (std::size_t k = 0; k < _maximaCount; ++k) run.maxima[k] = _maxima[k].Next(length);
        if (!_areMaximaCurrent) RefillMaxima(run);
        if (path == EProcessorPath::Wide) {
            RunLimiterWide(run, _coefficients, _state);
        } else {
            RunLimiterNarrow(run, _coefficients, _state);
        }
        for (std::size_t k = 0; k < _maximaCount; ++k) _maxima[k].Advance(length);
        _isTreeCurrent = false;
    }
#endif
    for (std::size_t c = 0; c < channels.size(); ++c) _driven[c].Advance(length);
    _peaks.Advance(length);
    _released.Advance(run.averagedCount);
    _averaged.Advance(run.averagedCount);
}

/// Fills the tree as if the plain path had always run.
void LookaheadLimiter::RefillTree(const SLimiterRun& run) noexcept {
    for (std::size_t back = run.lookahead; back > 0; --back) _tree.Push(Required(*(run.peaks - back)));
    _isTreeCurrent = true;
}

/// Fills the maxima as if they had always been kept. Each window of the last `window` peaks crosses the place
/// `window` back: its part before that place is computed backwards, the rest forwards. Peaks beyond those
/// held belong to windows that are never read again.
void LookaheadLimiter::RefillMaxima(const SLimiterRun& run) noexcept {
    std::size_t window = ShortestMaximum;
    for (std::size_t k = 0; k < _maximaCount; ++k, window *= 2) {
        float highest = 0.0f;
        for (std::size_t back = 1; back <= window; ++back) {
            *(run.maxima[k] - back) = highest;
            const std::size_t next = back + window;
            if (next <= run.lookahead) highest = std::max(highest, *(run.peaks - next));
        }
        highest = 0.0f;
        for (std::size_t back = window; back > 0; --back) {
            float& maximum = *(run.maxima[k] - back);
            highest = std::max(highest, *(run.peaks - back));
            maximum = std::max(maximum, highest);
        }
    }
    _areMaximaCurrent = true;
}

/// The gain that brings a peak down to 1; 1 for peaks below.
double LookaheadLimiter::Required(float peak) noexcept {
    constexpr double limit = 1.0; // level to which the driven signal is limited
    return static_cast<double>(peak) < limit ? 1.0 : limit / static_cast<double>(peak);
}

void LookaheadLimiter::RunPlain(SLimiterRun& run) noexcept {
    for (std::size_t i = 0; i < run.length; ++i) {
        run.peaks[i] = Drive(run, i);
        const double required = _tree.Push(Required(run.peaks[i]));
        run.released[i] = _coefficients.automatic ? AutoRelease(required) : FixedRelease(required);
        const double size = static_cast<double>(run.size);
        _state.sums[0] = _state.sums[0] - *(run.released + i - run.size) + run.released[i];
        run.averaged[i] = _state.sums[0] / size;
        _state.sums[1] = _state.sums[1] - *(run.averaged + i - run.size) + run.averaged[i];
        const double gain = _state.sums[1] / size;
        Output(run, i, gain);
        _state.minimum = std::min(_state.minimum, gain);
    }
    run.averagedCount = run.length;
    _state.equalGainsInARow = 0; // not counted here
}

/// Drives sample `i` of all channels in place and returns the largest magnitude; not-a-number is never the
/// largest.
float LookaheadLimiter::Drive(const SLimiterRun& run, std::size_t i) noexcept {
    float peak = 0.0f;
    for (std::size_t c = 0; c < run.channelCount; ++c) {
        const float x = static_cast<float>(static_cast<double>(run.channels[c][i]) * run.drive);
        run.channels[c][i] = x;
        peak = std::max(peak, std::fabs(x));
    }
    return peak;
}

double LookaheadLimiter::FixedRelease(double required) noexcept {
    if (!(_state.fixed > required)) {
        required = required + (_state.fixed - required) * _coefficients.fixedCoefficient;
    }
    _state.fixed = required;
    return required;
}

double LookaheadLimiter::AutoRelease(double required) noexcept {
    const double coefficient = KnownCoefficient(_coefficients, _state);
    const double distance = _state.slow - required;
    _state.slow = required + distance * (_state.slow > required ? _coefficients.envelopeFall
                                                                : _coefficients.envelopeRise);
    double g = std::min(required, _state.slow);
    if (!(_state.automatic > g)) g = g + (_state.automatic - g) * coefficient;
    _state.automatic = g;
    _state.isCoefficientKnown = false; // for the next sample
    return g;
}

void LookaheadLimiter::Output(const SLimiterRun& run, std::size_t i, double gain) noexcept {
    for (std::size_t c = 0; c < run.channelCount; ++c) {
        run.driven[c][i] = run.channels[c][i];
        const double delayed = static_cast<double>(*(run.driven[c] + i - run.lookahead));
        run.channels[c][i] = static_cast<float>(delayed * gain * run.ceiling);
    }
}

} // namespace KAV::DSP
