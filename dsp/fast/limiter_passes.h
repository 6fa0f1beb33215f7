#pragma once

// The limiter in vector registers: the code of limiter_narrow.cpp and limiter_wide.cpp, which compile it for
// their processors. The plain path in lookahead_limiter.cpp does the same, one sample at a time.
//
// A run is processed in chunks of sixteen samples, and only its middle is serial:
//
//   channels -> drive and peak -> window maximum -> required gain    chunk k + 2, in vectors
//                    |                                   |
//                    |                                release          chunk k, sample by sample;
//                    |                             first average       a group later;
//                    |                             second average      three groups later
//                    | a look-ahead ago                  |
//                    +------------------------------> amplify          chunk k - 1, in vectors
//
// Each released gain depends on the previous one, nine cycles later on current processors. Everything off
// that chain is ordered so that its operands are ready when the processor gets to it: instructions that wait
// for operands hold registers, and once these are used up nothing runs in parallel with the chain.
//
// The window maximum comes before the division. 1 / x falls as x rises, and so does its rounded value, so the
// lowest of all required gains belongs to the highest peak, to the bit.

#include "dsp/fast/exact_quotient.h"
#include "dsp/fast/lanes.h"
#include "dsp/limiter_run.h"
#include "dsp/release_law.h"

#if defined(__x86_64__)

namespace KAV::DSP {
namespace {

inline constexpr std::size_t Chunk = 16;

/// The fixed release: falls at once, rises by the coefficient.
class CFixedRelease final {
public:
    CFixedRelease(const SReleaseCoefficients& coefficients, const SLimiterState& state) noexcept
        : _coefficient(_mm_set_sd(coefficients.fixedCoefficient)), _gain(_mm_set_sd(state.fixed)) {}

    void Begin(double*, std::size_t) noexcept {}
    __m128d Step(const double* required) noexcept {
        const __m128d target = _mm_load_sd(required);
        // No branch: while falling, the coefficient is 0.
        const __m128d kept = _mm_andnot_pd(_mm_cmplt_sd(target, _gain), _coefficient);
        _gain = _mm_add_sd(target, _mm_mul_sd(_mm_sub_sd(_gain, target), kept));
        return _gain;
    }
    /// Whether a required gain of 1 leaves the gain as it is: it is 1, or the value at which rounding stops
    /// it.
    bool IsAtRest() const noexcept { return 1.0 + (Gain() - 1.0) * _mm_cvtsd_f64(_coefficient) == Gain(); }
    void Rest() noexcept {}
    double Gain() const noexcept { return _mm_cvtsd_f64(_gain); }
    void Finish(SLimiterState& state) const noexcept { state.fixed = Gain(); }

private:
    __m128d _coefficient;
    __m128d _gain;
};

/// The programme-dependent release; release_law.h defines the symbols. The slow envelope doesn't depend on
/// the gain and runs a chunk ahead, so the target of the gain is known in advance. The coefficient for the
/// next sample is only computed when that sample turns out to recover.
class CAutomaticRelease final {
public:
    CAutomaticRelease(const SReleaseCoefficients& coefficients, const SLimiterState& state) noexcept
        : _coefficients(coefficients), _state(state), _slow(state.slow) {}

    void Begin(double* required, std::size_t count) noexcept {
        _next = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double target = required[i];
            const double distance = _slow - target;
            _slow = target +
                    distance * (_slow > target ? _coefficients.envelopeFall : _coefficients.envelopeRise);
            _slows[i] = _slow;
            required[i] = _slow < target ? _slow : target;
        }
    }
    __m128d Step(const double* required) noexcept {
        double gain = *required;
        if (!(_state.automatic > gain)) {
            gain = gain + (_state.automatic - gain) * KnownCoefficient(_coefficients, _state);
        }
        _state.automatic = gain;
        _state.slow = _slows[_next++];
        _state.isCoefficientKnown = false;
        return _mm_set_sd(gain);
    }
    bool IsAtRest() const noexcept {
        return _state.automatic == _state.slow &&
               1.0 + (_state.slow - 1.0) * _coefficients.envelopeRise == _state.slow;
    }
    void Rest() noexcept { _state.isCoefficientKnown = false; }
    double Gain() const noexcept { return _state.automatic; }
    void Finish(SLimiterState& state) const noexcept {
        state.automatic = _state.automatic;
        state.slow = _state.slow;
        state.automaticCoefficient = _state.automaticCoefficient;
        state.isCoefficientKnown = _state.isCoefficientKnown;
    }

private:
    SReleaseCoefficients _coefficients;
    SLimiterState _state;      // only the part of the release
    double _slow;              // at the end of the chunk
    double _slows[Chunk] = {}; // after each sample of the chunk
    std::size_t _next = 0;
};

/// The two moving averages, one after another, in groups of as many samples as a register holds, and the
/// lowest of their output.
class CAverages final {
public:
    using V = SLanes;
    static constexpr std::size_t Group = V::DoubleCount;
    /// Gains of the last four chunks, by place in the run.
    static constexpr std::size_t GainCount = 4 * Chunk;

    CAverages(SLimiterRun& run, const SLimiterState& state, double* gains) noexcept
        : _released(run.released), _releasedBefore(run.released - run.size), _averaged(run.averaged),
          _averagedBefore(run.averaged - run.size), _gains(gains), _divisor(static_cast<double>(run.size)),
          _reciprocal(1.0 / _divisor), _firstSum(state.sums[0]), _secondSum(state.sums[1]),
          _lowest(V::Same(state.minimum)) {}

    /// Takes a group of released gains, and processes earlier groups that are due.
    void Push(const __m128d* released) noexcept {
        V::Store(_released + _taken, V::Join(released));
        _taken += Group;
        _due += Group;
        if (_due > FirstLag) First(_taken - FirstLag - Group);
        if (_due > SecondLag) Second(_taken - SecondLag - Group);
    }
    /// Processes everything that is still due.
    void Drain() noexcept {
        for (std::size_t lag = _due < FirstLag ? _due : FirstLag; lag > 0; lag -= Group) First(_taken - lag);
        for (std::size_t lag = _due < SecondLag ? _due : SecondLag; lag > 0; lag -= Group) {
            Second(_taken - lag);
        }
        _due = 0;
    }
    /// Takes a single gain, after everything has been drained.
    void PushOne(double released) noexcept {
        _released[_taken] = released;
        _firstSum = _firstSum - _releasedBefore[_taken] + released;
        const double average = Quotient(_firstSum);
        _averaged[_taken] = average;
        _secondSum = _secondSum - _averagedBefore[_taken] + average;
        const double gain = Quotient(_secondSum);
        _gains[(_taken + _skipped) % GainCount] = gain;
        _lowest = V::Min(V::Same(gain), _lowest);
        ++_taken;
    }

    /// Whether both sums stay exactly as they are if `released` repeats, after everything has been drained
    /// and the windows are full of it. If so, they stay so for good.
    bool AreSteady(double released) const noexcept {
        const double average = Quotient(_firstSum);
        return _firstSum - released + released == _firstSum && _secondSum - average + average == _secondSum;
    }
    /// Takes `count` more of the same gain, which change nothing but the gains themselves.
    void Repeat(std::size_t count) noexcept {
        const double gain = Quotient(_secondSum);
        for (std::size_t i = 0; i < count; ++i) _gains[(_taken + _skipped + i) % GainCount] = gain;
        _lowest = V::Min(V::Same(gain), _lowest);
        _skipped += count;
    }

    void Finish(SLimiterRun& run, SLimiterState& state) const noexcept {
        state.sums[0] = _firstSum;
        state.sums[1] = _secondSum;
        state.minimum = V::Lowest(_lowest);
        run.averagedCount = _taken;
    }

private:
    // Samples after the group just taken.
    static constexpr std::size_t FirstLag = Group;
    static constexpr std::size_t SecondLag = 3 * Group;

    void First(std::size_t at) noexcept {
        double sums[Group] = {};
        for (std::size_t i = at; i < at + Group; ++i) {
            sums[i - at] = _firstSum = _firstSum - _releasedBefore[i] + _released[i];
        }
        V::Store(_averaged + at, Quotient(V::Join(sums)));
    }
    void Second(std::size_t at) noexcept {
        double sums[Group] = {};
        for (std::size_t i = at; i < at + Group; ++i) {
            sums[i - at] = _secondSum = _secondSum - _averagedBefore[i] + _averaged[i];
        }
        const V::Doubles gains = Quotient(V::Join(sums));
        V::Store(_gains + (at + _skipped) % GainCount, gains);
        _lowest = V::Min(gains, _lowest);
    }

    /// Divided by the size of the averages.
    double Quotient(double sum) const noexcept {
#if defined(__FMA__)
        return ExactQuotient(sum, _divisor, _reciprocal);
#else
        return sum / _divisor;
#endif
    }
    V::Doubles Quotient(V::Doubles sum) const noexcept {
#if defined(__FMA__) // see ExactQuotient()
        const V::Doubles quotient = V::Multiply(sum, V::Same(_reciprocal));
        const V::Doubles remainder = _mm256_fnmadd_pd(quotient, V::Same(_divisor), sum);
        return _mm256_fmadd_pd(remainder, V::Same(_reciprocal), quotient);
#else
        return V::Divide(sum, V::Same(_divisor));
#endif
    }

    double* _released;
    const double* _releasedBefore; // what leaves the window
    double* _averaged;
    const double* _averagedBefore;
    double* _gains;
    double _divisor;
    [[maybe_unused]] double _reciprocal; // used only by fused arithmetic
    double _firstSum;
    double _secondSum;
    V::Doubles _lowest;
    std::size_t _taken = 0;   // a multiple of Group until the last few
    std::size_t _due = 0;     // how many of them since everything was drained
    std::size_t _skipped = 0; // a multiple of Chunk until the last few
};

class CLimiterPasses final {
public:
    /// The arrays are written before they are read; clearing them costs as much as limiting ten samples.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
    explicit CLimiterPasses(SLimiterRun& run) noexcept : _run(run) { RecallMaxima(); }

    template<typename TRelease>
    void Process(const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
        SGainPath<TRelease> path{{coefficients, state}, {_run, state, _gains}, state.equalGainsInARow};
        const std::size_t full = _run.length / Chunk;
        for (std::size_t step = 0; step < full + 2; ++step) {
            if (step >= 2) Release(path, (step - 2) * Chunk, Chunk);
            if (step >= 3) Amplify(_run.channels, (step - 3) * Chunk, (step - 3) * Chunk);
            if (step < full) Prepare(_run.channels, step * Chunk, step * Chunk);
        }
        path.averages.Drain();
        if (full > 0) Amplify(_run.channels, (full - 1) * Chunk, (full - 1) * Chunk);
        const std::size_t rest = _run.length % Chunk;
        if (rest != 0) path = ProcessRest(path, full * Chunk, rest);
        path.release.Finish(state);
        path.averages.Finish(_run, state);
        state.equalGainsInARow = path.equalGainsInARow;
    }

private:
    using V = SLanes;
    static constexpr std::size_t FloatVectors = Chunk / V::FloatCount;
    /// One value per sample of a chunk. It is not cleared before it is filled: clearing would force it into
    /// memory instead of registers.
    struct SFloats {
        V::Floats of[FloatVectors];
    };
    /// A chunk that waits for its release.
    struct SRequired {
        alignas(64) double gains[Chunk];
        bool isQuiet; // nothing has to be limited
    };
    SRequired& RequiredAt(std::size_t at) noexcept { return _required[at / Chunk % 3]; }

    /// The steps from required gains to applied ones.
    template<typename TRelease>
    struct SGainPath {
        TRelease release;
        CAverages averages;
        std::size_t equalGainsInARow = 0; // see SLimiterState
    };

    /// An incomplete last chunk works on copies. What it writes to the histories past the run is overwritten
    /// later.
    template<typename TRelease>
    [[gnu::noinline]] SGainPath<TRelease> ProcessRest(
        SGainPath<TRelease> path, std::size_t at, std::size_t count) noexcept {
        float copies[SLimiterRun::MaxChannels][Chunk];
        float* channels[SLimiterRun::MaxChannels];
        for (std::size_t c = 0; c < _run.channelCount; ++c) {
            for (std::size_t i = 0; i < Chunk; ++i)
                copies[c][i] = i < count ? _run.channels[c][at + i] : 0.0f;
            channels[c] = copies[c];
        }
        for (std::size_t i = 0; i < Chunk; ++i) _gains[at % CAverages::GainCount + i] = 0.0;
        Prepare(channels, 0, at);
        Release(path, at, count);
        path.averages.Drain();
        Amplify(channels, 0, at);
        for (std::size_t c = 0; c < _run.channelCount; ++c) {
            for (std::size_t i = 0; i < count; ++i) _run.channels[c][at + i] = copies[c][i];
        }
        return path;
    }

    /// Everything that doesn't depend on previous gains. The chunk is at `place` in its channels and at `at`
    /// in the run.
    void Prepare(float* const* channels, std::size_t place, std::size_t at) noexcept {
        const SFloats highest = WindowMaximum(DriveAndPeak(channels, place, at), at);
        SRequired& required = RequiredAt(at);
        required.isQuiet = !IsAboveUnity(highest);
        Require(highest, required.gains);
    }

    template<typename TRelease>
    void Release(SGainPath<TRelease>& path, std::size_t at, std::size_t count) noexcept {
        auto& [release, averages, equalGainsInARow] = path;
        SRequired& required = RequiredAt(at);
        if (required.isQuiet && release.IsAtRest()) {
            if (equalGainsInARow >= 2 * _run.size) {
                averages.Drain();
                if (averages.AreSteady(release.Gain())) {
                    averages.Repeat(count);
                    release.Rest();
                    return;
                }
            }
            equalGainsInARow += count;
        } else {
            equalGainsInARow = 0;
        }
        constexpr std::size_t group = CAverages::Group;
        const std::size_t grouped = count / group * group;
        release.Begin(required.gains, count);
        for (std::size_t i = 0; i < grouped; i += group) {
            __m128d released[group] = {};
            for (std::size_t j = 0; j < group; ++j) released[j] = release.Step(required.gains + i + j);
            averages.Push(released);
        }
        if (grouped == count) return;
        averages.Drain();
        for (std::size_t i = grouped; i < count; ++i) {
            averages.PushOne(_mm_cvtsd_f64(release.Step(required.gains + i)));
        }
    }

    /// Drives the channels into their histories and returns the highest magnitude of each sample over all of
    /// them; not-a-number is never the highest.
    SFloats DriveAndPeak(float* const* channels, std::size_t place, std::size_t at) const noexcept {
        SFloats peaks; // NOLINT(cppcoreguidelines-pro-type-member-init)
        for (V::Floats& peak : peaks.of) peak = V::Same(0.0f);
        const V::Doubles drive = V::Same(_run.drive);
        for (std::size_t c = 0; c < _run.channelCount; ++c) {
            const float* from = channels[c] + place;
            float* to = _run.driven[c] + at;
            for (std::size_t v = 0; v < FloatVectors; ++v) {
                const V::Floats x = V::Narrow(V::Multiply(V::Widen(from + v * V::FloatCount), drive),
                    V::Multiply(V::Widen(from + v * V::FloatCount + V::DoubleCount), drive));
                V::Store(to + v * V::FloatCount, x);
                peaks.of[v] = V::Max(V::Magnitude(x), peaks.of[v]);
            }
        }
        for (std::size_t v = 0; v < FloatVectors; ++v) {
            V::Store(_run.peaks + at + v * V::FloatCount, peaks.of[v]);
        }
        return peaks;
    }

    /// The highest of the last `lookahead` peaks at each sample. Each step doubles its window by including
    /// the result that the same step had one window ago: up to 16 in registers, above that through the
    /// histories. A last step extends the window to a length that isn't a power of 2.
    SFloats WindowMaximum(SFloats x, std::size_t at) noexcept {
        x = TakeIn<1>(_before[0], x);
        x = TakeIn<2>(_before[1], x);
        x = TakeIn<4>(_before[2], x);
        x = TakeIn<8>(_before[3], x);
        std::size_t window = Chunk;
        for (std::size_t k = 0; window < _run.lookahead; ++k) {
            float* history = _run.maxima[k] + at;
            const std::size_t rest = _run.lookahead - window;
            const std::size_t back = rest < window ? rest : window;
            for (std::size_t v = 0; v < FloatVectors; ++v) {
                float* place = history + v * V::FloatCount;
                V::Store(place, x.of[v]);
                x.of[v] = V::Max(x.of[v], V::Load(place - back));
            }
            window += back;
        }
        return x;
    }

    /// The higher of each value and the one BY places earlier. `before` holds the previous chunk and receives
    /// this one.
    template<std::size_t BY>
    static SFloats TakeIn(SFloats& before, const SFloats& x) noexcept {
        SFloats higher; // NOLINT(cppcoreguidelines-pro-type-member-init)
        for (std::size_t v = 0; v < FloatVectors; ++v) {
            constexpr std::size_t whole = BY / V::FloatCount;
            const auto earlier = [&](std::size_t vectors) {
                return v >= vectors ? x.of[v - vectors] : before.of[v + FloatVectors - vectors];
            };
            if constexpr (BY % V::FloatCount == 0) {
                higher.of[v] = V::Max(x.of[v], earlier(whole));
            } else {
                higher.of[v] = V::Max(x.of[v], V::template MoveUp<BY>(earlier(1), x.of[v]));
            }
        }
        before = x;
        return higher;
    }

    /// Restores the values that WindowMaximum() keeps in registers, from the peaks before the run. Its
    /// windows of up to 16 reach back no further than one chunk.
    void RecallMaxima() noexcept {
        SFloats x; // NOLINT(cppcoreguidelines-pro-type-member-init)
        for (std::size_t v = 0; v < FloatVectors; ++v) {
            x.of[v] = V::Load(_run.peaks - Chunk + v * V::FloatCount);
        }
        x = Recall<1>(_before[0], x);
        x = Recall<2>(_before[1], x);
        x = Recall<4>(_before[2], x);
        Recall<8>(_before[3], x);
    }
    /// The maxima at the end of a chunk, whatever came before it.
    template<std::size_t BY>
    static SFloats Recall(SFloats& before, const SFloats& x) noexcept {
        before = x;
        return TakeIn<BY>(before, x);
    }

    static bool IsAboveUnity(const SFloats& x) noexcept {
        V::Floats highest = x.of[0];
        for (std::size_t v = 1; v < FloatVectors; ++v) highest = V::Max(highest, x.of[v]);
        return V::AnyAbove(highest, V::Same(1.0f));
    }

    /// The gains that bring peaks down to 1; 1 for those below.
    static void Require(const SFloats& peaks, double* required) noexcept {
        const V::Doubles unity = V::Same(1.0);
        const V::Floats limit = V::Same(1.0f);
        for (std::size_t v = 0; v < FloatVectors; ++v) {
            const V::Floats peak = V::Max(peaks.of[v], limit);
            double* to = required + v * V::FloatCount;
            V::Store(to, V::Divide(unity, V::WidenLow(peak)));
            V::Store(to + V::DoubleCount, V::Divide(unity, V::WidenHigh(peak)));
        }
    }

    void Amplify(float* const* channels, std::size_t place, std::size_t at) const noexcept {
        const V::Doubles ceiling = V::Same(_run.ceiling);
        const double* gains = _gains + at % CAverages::GainCount;
        for (std::size_t c = 0; c < _run.channelCount; ++c) {
            const float* delayed = _run.driven[c] + at - _run.lookahead;
            float* to = channels[c] + place;
            for (std::size_t v = 0; v < FloatVectors; ++v) {
                V::Doubles y[2];
                for (std::size_t half = 0; half < 2; ++half) {
                    const std::size_t i = v * V::FloatCount + half * V::DoubleCount;
                    y[half] = V::Multiply(V::Multiply(V::Widen(delayed + i), V::Load(gains + i)), ceiling);
                }
                V::Store(to + v * V::FloatCount, V::Narrow(y[0], y[1]));
            }
        }
    }

    SLimiterRun& _run;
    SFloats _before[4]; // TakeIn()'s: the chunk before, in windows of 1, 2, 4 and 8
    SRequired _required[3];
    alignas(64) double _gains[CAverages::GainCount];
};

inline void RunLimiter(
    SLimiterRun& run, const SReleaseCoefficients& coefficients, SLimiterState& state) noexcept {
    CLimiterPasses passes(run);
    if (coefficients.automatic) {
        passes.Process<CAutomaticRelease>(coefficients, state);
    } else {
        passes.Process<CFixedRelease>(coefficients, state);
    }
}

} // namespace
} // namespace KAV::DSP

#endif
