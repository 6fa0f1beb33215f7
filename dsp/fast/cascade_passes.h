#pragma once

// Cascades of biquads in vector registers: the code of cascade_narrow.cpp and cascade_wide.cpp, which compile
// it for their processors. The plain path in biquad_cascade.cpp does the same, one stage at a time.
//
// A stage needs the output of the previous stage for the same sample, so the stages of one sample can't run
// in parallel; those of different samples can. Each lane is a part of the cascade and works a few samples
// behind the previous lane. Eight stages in two registers of four lanes:
//
//             lane  3   2   1   0
//   sample in ->    0   2   4   6     first register      hands over to the second one at once, whose lanes
//                   1   3   5   7     second register     turn by one place and some samples later are what
//                   |_<-|_<-|_<-|--> sample out           the first one takes in
//
// Two registers of stages for two channels fill a processor's sixteen registers with delays and coefficients;
// their four chains of arithmetic keep it busy. A long cascade runs as several such sections over short
// strips of samples. At both ends of a block some lanes have no sample, and their delays are left as they
// are.

#include "dsp/cascade_run.h"
#include "dsp/fast/lanes.h"

#if defined(__x86_64__)

namespace KAV::DSP {
namespace {

/// The arithmetic of one stage, in plain steps or fused.
template<bool FUSED>
struct SArithmetic {
    using V = SLanes;

    /// a - b x c
    static V::Doubles Less(V::Doubles a, V::Doubles b, V::Doubles c) noexcept {
#if defined(__FMA__)
        if constexpr (FUSED) return _mm256_fnmadd_pd(b, c, a);
#endif
        return V::Subtract(a, V::Multiply(b, c));
    }
    /// a + b x c
    static V::Doubles More(V::Doubles a, V::Doubles b, V::Doubles c) noexcept {
#if defined(__FMA__)
        if constexpr (FUSED) return _mm256_fmadd_pd(b, c, a);
#endif
        return V::Add(a, V::Multiply(b, c));
    }
    /// a + 2 x b, where the product is exact and needs no rounding of its own.
    static V::Doubles MoreTwice(V::Doubles a, V::Doubles b) noexcept {
#if defined(__FMA__)
        return _mm256_fmadd_pd(V::Same(2.0), b, a);
#else
        return V::Add(a, V::Add(b, b));
#endif
    }
};

/// Stages of two channels in two registers each; see above. Ticks count the samples that the first lane takes
/// in, starting at the first one of the block.
template<bool FUSED, bool FIRST>
class CSection final { // NOLINT(cppcoreguidelines-pro-type-member-init): a strip is written before it is read
public:
    using V = SLanes;
    static constexpr std::size_t Registers = 2;
    static constexpr std::size_t Stages = Registers * V::DoubleCount;
    /// Ticks from one lane to the next: long enough that the next lane never waits for its input.
    static constexpr std::size_t Turn = 6;
    static constexpr std::size_t Lag = (V::DoubleCount - 1) * Turn; // of the output
    static constexpr std::size_t Strip = 64;                        // ticks at a time

    void Load(
        const SCascadeRun& run, const SCascadeCoefficients& coefficients, std::size_t firstStage) noexcept {
        for (std::size_t i = 0; i < 2 * Turn; ++i) _out[i] = V::Same(0.0);
        _length = run.length;
        _stage = firstStage;
        _coefficients.scale = First(coefficients.scale, 1.0);
        _coefficients.twice = First(2.0 * coefficients.scale, 2.0);
        _flip = First(-0.0, 0.0);
        for (std::size_t j = 0; j < Registers; ++j) {
            _coefficients.a1[j] = Gather(coefficients.a1, j);
            _coefficients.a2[j] = Gather(coefficients.a2, j);
        }
        for (std::size_t c = 0; c < 2; ++c) {
            SChannel& channel = _channels[c];
            channel.extra = First(run.extra[c], 0.0);
            channel.first = {Gather(run.delays[c]->w1, 0), Gather(run.delays[c]->w2, 0)};
            channel.second = {Gather(run.delays[c]->w1, 1), Gather(run.delays[c]->w2, 1)};
        }
    }
    void Keep(const SCascadeRun& run) const noexcept {
        for (std::size_t c = 0; c < run.channelCount; ++c) {
            Scatter(_channels[c].first.w1, run.delays[c]->w1, 0);
            Scatter(_channels[c].first.w2, run.delays[c]->w2, 0);
            Scatter(_channels[c].second.w1, run.delays[c]->w1, 1);
            Scatter(_channels[c].second.w2, run.delays[c]->w2, 1);
        }
    }

    /// Where the input of some ticks comes from: the channels themselves, or the output of the previous
    /// section, which is Lag ticks later and alternates between both channels. Addresses are only computed
    /// for what is read, because the last ticks are past the end of the block.
    struct SIn {
        const float* left;
        const float* right;
        const V::Doubles* before;
        std::size_t at; // ticks from its start

        SIn operator+(std::size_t ticks) const noexcept { return {left, right, before, at + ticks}; }
        V::Doubles Left() const noexcept {
            if constexpr (FIRST) return V::WidenFirst(left + at);
            return before[2 * at];
        }
        V::Doubles Right() const noexcept {
            if constexpr (FIRST) return V::WidenFirst(right + at);
            return before[2 * at + 1];
        }
    };
    /// Ticks `from` to `to`, at most a strip, following those of the previous call. The output is valid until
    /// the next call.
    void Run(std::size_t from, std::size_t to, const SIn& in) noexcept {
        for (std::size_t i = 0; i < 2 * Turn; ++i) _out[i] = _out[2 * _ticks + i];
        _from = from;
        _ticks = to - from;
        const std::size_t start = Cut(Lag, from, to);
        const std::size_t stop = Cut(_length, start, to);
        for (std::size_t t = from; t < start; ++t) RunAtAnEnd(t, in + (t - from));
        RunSteadily(start, stop, in + (start - from));
        for (std::size_t t = stop; t < to; ++t) RunAtAnEnd(t, in + (t - from));
    }
    /// The output of tick `t` of the last call in lane 0, for both channels: sample t - Lag.
    const V::Doubles* Out(std::size_t t) const noexcept { return _out + 2 * (Turn + t - _from); }

private:
    using A = SArithmetic<FUSED>;

    struct SCoefficients {
        V::Doubles a1[Registers];
        V::Doubles a2[Registers];
        V::Doubles scale; // of the first register's numerators
        V::Doubles twice;
    };
    /// The delays of one register's stages. Not arrays: compilers keep variables without an index in
    /// registers.
    struct SDelays {
        V::Doubles w1;
        V::Doubles w2;
    };
    struct SChannel {
        SDelays first;
        SDelays second;
        V::Doubles extra; // in the first stage's lane
    };

    std::size_t StageOf(std::size_t j, std::size_t lane) const noexcept {
        return _stage + (V::DoubleCount - 1 - lane) * Registers + j;
    }
    /// `first` in the first stage's lane, `rest` in the others of its register.
    static V::Doubles First(double first, double rest) noexcept {
        double values[V::DoubleCount];
        for (double& value : values) value = rest;
        values[V::DoubleCount - 1] = first;
        return V::Load(values);
    }
    V::Doubles Gather(const double* stages, std::size_t j) const noexcept {
        double values[V::DoubleCount];
        for (std::size_t lane = 0; lane < V::DoubleCount; ++lane) values[lane] = stages[StageOf(j, lane)];
        return V::Load(values);
    }
    void Scatter(
        V::Doubles x, double (&stages)[SCascadeCoefficients::MaxStages], std::size_t j) const noexcept {
        double values[V::DoubleCount];
        V::Store(values, x);
        for (std::size_t lane = 0; lane < V::DoubleCount; ++lane) stages[StageOf(j, lane)] = values[lane];
    }

    /// A tick stores its values over the oldest ones, so that nothing has to move. `x` is the input of the
    /// lanes.
    static V::Doubles Tick(const SCoefficients& coefficients, SDelays& first, SDelays& second,
        V::Doubles extra, V::Doubles x) noexcept {
        if constexpr (FIRST) {
            x = FirstStep(coefficients, first.w1, first.w2, x, extra);
        } else {
            x = Step(coefficients.a1[0], coefficients.a2[0], first.w1, first.w2, x);
        }
        return Step(coefficients.a1[1], coefficients.a2[1], second.w1, second.w2, x);
    }
    static V::Doubles TickSwapped(const SCoefficients& coefficients, SDelays& first, SDelays& second,
        V::Doubles extra, V::Doubles x) noexcept {
        if constexpr (FIRST) {
            x = FirstStep(coefficients, first.w2, first.w1, x, extra);
        } else {
            x = Step(coefficients.a1[0], coefficients.a2[0], first.w2, first.w1, x);
        }
        return Step(coefficients.a1[1], coefficients.a2[1], second.w2, second.w1, x);
    }

    // Only the first stage adds something against denormals. Adding 0 elsewhere would only turn a negative
    // zero into a positive one, which makes no difference, because NarrowFirst() does that anyway.
    static V::Doubles Step(
        V::Doubles a1, V::Doubles a2, V::Doubles recent, V::Doubles& oldest, V::Doubles x) noexcept {
        if constexpr (FUSED) {
            const V::Doubles w = A::Less(A::Less(x, a2, oldest), a1, recent);
            const V::Doubles y = V::Add(w, A::MoreTwice(oldest, recent));
            oldest = w;
            return y;
        } else {
            const V::Doubles w = A::Less(A::Less(x, a1, recent), a2, oldest);
            const V::Doubles y = V::Add(A::MoreTwice(w, recent), oldest);
            oldest = w;
            return y;
        }
    }
    static V::Doubles FirstStep(const SCoefficients& coefficients, V::Doubles recent, V::Doubles& oldest,
        V::Doubles x, V::Doubles extra) noexcept {
        if constexpr (FUSED) {
            return V::Multiply(coefficients.scale,
                Step(coefficients.a1[0], coefficients.a2[0], recent, oldest, V::Add(x, extra)));
        } else {
            const V::Doubles w =
                V::Add(A::Less(A::Less(x, coefficients.a1[0], recent), coefficients.a2[0], oldest), extra);
            const V::Doubles y =
                A::More(A::More(V::Multiply(coefficients.scale, w), coefficients.twice, recent),
                    coefficients.scale, oldest);
            oldest = w;
            return y;
        }
    }

    static SDelays Choose(V::Doubles which, const SDelays& a, const SDelays& b) noexcept {
        return {V::Choose(which, a.w1, b.w1), V::Choose(which, a.w2, b.w2)};
    }
    static std::size_t Cut(std::size_t t, std::size_t from, std::size_t to) noexcept {
        if (t < from) return from;
        return t < to ? t : to;
    }

    /// Ticks where all lanes have a sample. A separate function, so that no other code competes for the
    /// registers.
    [[gnu::noinline]] void RunSteadily(std::size_t from, std::size_t to, SIn in) noexcept {
        const SCoefficients coefficients = _coefficients; // copies, which no store can alias
        SDelays leftFirst = _channels[0].first;
        SDelays leftSecond = _channels[0].second;
        SDelays rightFirst = _channels[1].first;
        SDelays rightSecond = _channels[1].second;
        V::Doubles leftExtra = _channels[0].extra;
        V::Doubles rightExtra = _channels[1].extra;
        const V::Doubles flippedLeft = V::Xor(leftExtra, _flip);
        const V::Doubles flippedRight = V::Xor(rightExtra, _flip);
        V::Doubles* out = OutOf(from);
        std::size_t t = from;
        for (; t + 2 <= to; t += 2) {
            const V::Doubles* turned = out - 2 * Turn;
            out[0] = Tick(coefficients, leftFirst, leftSecond, flippedLeft, V::Turn(turned[0], in.Left()));
            out[1] =
                Tick(coefficients, rightFirst, rightSecond, flippedRight, V::Turn(turned[1], in.Right()));
            in = in + 1;
            out[2] =
                TickSwapped(coefficients, leftFirst, leftSecond, leftExtra, V::Turn(turned[2], in.Left()));
            out[3] = TickSwapped(
                coefficients, rightFirst, rightSecond, rightExtra, V::Turn(turned[3], in.Right()));
            in = in + 1;
            out += 4;
        }
        _channels[0] = {leftFirst, leftSecond, leftExtra};
        _channels[1] = {rightFirst, rightSecond, rightExtra};
        if (t < to) TickOnce(t, in.Left(), in.Right());
    }
    V::Doubles* OutOf(std::size_t t) noexcept { return _out + 2 * (Turn + t - _from); }
    void TickOnce(std::size_t t, V::Doubles left, V::Doubles right) noexcept {
        V::Doubles* out = OutOf(t);
        for (std::size_t c = 0; c < 2; ++c, ++out) {
            SChannel& channel = _channels[c];
            channel.extra = V::Xor(channel.extra, _flip);
            *out = Tick(_coefficients, channel.first, channel.second, channel.extra,
                V::Turn(*(out - 2 * Turn), c == 0 ? left : right));
            channel.first = {channel.first.w2, channel.first.w1};
            channel.second = {channel.second.w2, channel.second.w1};
        }
    }

    /// A tick where some lanes have no sample; their delays stay unchanged.
    void RunAtAnEnd(std::size_t t, const SIn& in) noexcept {
        const V::Doubles isActive = Active(t);
        const SChannel before[2] = {_channels[0], _channels[1]};
        const bool isOver = t >= _length;
        TickOnce(t, isOver ? V::Same(0.0) : in.Left(), isOver ? V::Same(0.0) : in.Right());
        for (std::size_t c = 0; c < 2; ++c) {
            _channels[c].first = Choose(isActive, _channels[c].first, before[c].first);
            _channels[c].second = Choose(isActive, _channels[c].second, before[c].second);
        }
    }
    /// Negative in the lanes that have a sample at tick `t`.
    V::Doubles Active(std::size_t t) const noexcept {
        const V::Doubles begun = Uppermost(LanesAt(t, 0));
        const V::Doubles over = Uppermost(LanesAt(t, _length));
        return V::Choose(over, V::Same(1.0), begun);
    }
    /// How many lanes have received by tick `t` what the uppermost one receives at tick `first`.
    static std::size_t LanesAt(std::size_t t, std::size_t first) noexcept {
        if (t < first) return 0;
        return t - first < Lag ? (t - first) / Turn + 1 : V::DoubleCount;
    }
    /// Negative in the `count` uppermost lanes.
    static V::Doubles Uppermost(std::size_t count) noexcept {
        static constexpr double signs[8] = {1.0, 1.0, 1.0, 1.0, -1.0, -1.0, -1.0, -1.0};
        return V::Load(signs + (4 - V::DoubleCount) + count);
    }

    std::size_t _length = 0; // of the block
    std::size_t _stage = 0;  // index of the first one
    SCoefficients _coefficients{};
    V::Doubles _flip{};
    SChannel _channels[2] = {};
    std::size_t _from = 0;  // first tick of the last call
    std::size_t _ticks = 0; // in the last call
    V::Doubles
        _out[2 * (Turn + Strip)]; // of both channels, alternating: first the last ones of the previous call
};

/// Sixteen stages of two channels.
template<bool FUSED>
class CLongCascade final {
public:
    explicit CLongCascade(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept
        : _run(run) {
        _first.Load(run, coefficients, 0);
        for (std::size_t k = 0; k < Others; ++k) _others[k].Load(run, coefficients, (k + 1) * CFirst::Stages);
    }

    void Process() noexcept {
        const std::size_t end = _run.length + CFirst::Lag; // of each section's ticks
        for (std::size_t start = 0; start < end + Others * CFirst::Lag; start += CFirst::Strip) {
            const SRange ticks = Ticks(start, 0, end);
            _first.Run(ticks.from, ticks.to, {_run.channels[0], _run.channels[1], nullptr, ticks.from});
            for (std::size_t k = 0; k < Others; ++k) {
                const SRange its = Ticks(start, (k + 1) * CFirst::Lag, end);
                const std::size_t taken = its.from + CFirst::Lag; // tick of the previous section
                const V::Doubles* before = k == 0 ? _first.Out(taken) : _others[k - 1].Out(taken);
                _others[k].Run(its.from, its.to, {nullptr, nullptr, before, 0});
            }
            PutOut(Ticks(start, Others * CFirst::Lag, end));
        }
        _first.Keep(_run);
        for (const auto& section : _others) section.Keep(_run);
    }

private:
    using V = SLanes;
    using CFirst = CSection<FUSED, true>;
    using COther = CSection<FUSED, false>;
    static constexpr std::size_t Others = SCascadeCoefficients::MaxStages / CFirst::Stages - 1;

    struct SRange {
        std::size_t from;
        std::size_t to;
    };
    /// The ticks of a strip for a section that is `behind` ticks after the first one.
    static SRange Ticks(std::size_t start, std::size_t behind, std::size_t end) noexcept {
        const auto cut = [&](std::size_t t) { return t < behind ? 0 : t - behind < end ? t - behind : end; };
        return {cut(start), cut(start + CFirst::Strip)};
    }

    /// Writes the last section's output of these of its ticks.
    void PutOut(SRange ticks) noexcept {
        std::size_t t = ticks.from < CFirst::Lag ? CFirst::Lag : ticks.from;
        for (; t + 4 <= ticks.to; t += 4) {
            const V::Doubles* out = _others[Others - 1].Out(t);
            const __m128 early = _mm_movelh_ps(V::NarrowFirst(out), V::NarrowFirst(out + 2));
            const __m128 late = _mm_movelh_ps(V::NarrowFirst(out + 4), V::NarrowFirst(out + 6));
            _mm_storeu_ps(
                _run.channels[0] + (t - CFirst::Lag), _mm_shuffle_ps(early, late, _MM_SHUFFLE(2, 0, 2, 0)));
            _mm_storeu_ps(
                _run.channels[1] + (t - CFirst::Lag), _mm_shuffle_ps(early, late, _MM_SHUFFLE(3, 1, 3, 1)));
        }
        for (; t < ticks.to; ++t) {
            const __m128 both = V::NarrowFirst(_others[Others - 1].Out(t));
            _run.channels[0][t - CFirst::Lag] = _mm_cvtss_f32(both);
            _run.channels[1][t - CFirst::Lag] = _mm_cvtss_f32(_mm_shuffle_ps(both, both, 1));
        }
    }

    SCascadeRun _run;
    CFirst _first;
    COther _others[Others];
};

/// Both stages of two channels in four lanes, in one register or in two: first those of the second stage,
/// four samples behind, then those of the first stage.
struct SQuad {
    using V = SLanes;
    static constexpr std::size_t Count = 4 / V::DoubleCount;
    V::Doubles of[Count];

    static SQuad Of(double a, double b, double c, double d) noexcept {
        const double values[4] = {a, b, c, d};
        SQuad quad{};
        for (std::size_t i = 0; i < Count; ++i) quad.of[i] = V::Load(values + i * V::DoubleCount);
        return quad;
    }
    void Store(double* to) const noexcept {
        for (std::size_t i = 0; i < Count; ++i) V::Store(to + i * V::DoubleCount, of[i]);
    }
    /// The upper half of `before`, and above it one half of two samples of each channel.
    template<std::size_t HALF>
    static SQuad HandOver(const SQuad& before, const SQuad& in) noexcept {
        SQuad quad{};
#if defined(__AVX__)
        quad.of[0] = _mm256_permute2f128_pd(before.of[0], in.of[0], HALF == 0 ? 0x21 : 0x31);
#else
        quad.of[0] = before.of[1];
        quad.of[1] = in.of[HALF];
#endif
        return quad;
    }
    /// Two samples of each channel, alternating.
    static SQuad Widen(const float* pairs) noexcept {
        SQuad quad{};
        for (std::size_t i = 0; i < Count; ++i) quad.of[i] = V::Widen(pairs + i * V::DoubleCount);
        return quad;
    }
    /// The lower halves, which hold the output, alternating.
    static __m128 NarrowLow(const SQuad& first, const SQuad& second) noexcept {
#if defined(__AVX__)
        return _mm256_cvtpd_ps(_mm256_permute2f128_pd(first.of[0], second.of[0], 0x20));
#else
        return V::Narrow(first.of[0], second.of[0]);
#endif
    }
};

/// Two stages of two channels. The second stage lags far enough behind the first that it never waits for it
/// longer than for its own delays.
template<bool FUSED>
class CShortCascade final {
public:
    CShortCascade(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept
        : _run(run),
          _a1(SQuad::Of(coefficients.a1[1], coefficients.a1[1], coefficients.a1[0], coefficients.a1[0])),
          _a2(SQuad::Of(coefficients.a2[1], coefficients.a2[1], coefficients.a2[0], coefficients.a2[0])),
          _scale(SQuad::Of(1.0, 1.0, coefficients.scale, coefficients.scale)),
          _twice(SQuad::Of(2.0, 2.0, 2.0 * coefficients.scale, 2.0 * coefficients.scale)),
          _flip(SQuad::Of(0.0, 0.0, -0.0, -0.0)) {
        const SCascadeDelays& a = *run.delays[0];
        const SCascadeDelays& b = *run.delays[1];
        _state.w1 = SQuad::Of(a.w1[1], b.w1[1], a.w1[0], b.w1[0]);
        _state.w2 = SQuad::Of(a.w2[1], b.w2[1], a.w2[0], b.w2[0]);
        _state.extra = SQuad::Of(0.0, 0.0, run.extra[0], run.extra[1]);
    }

    void Process() noexcept {
        float* const a = _run.channels[0];
        float* const b = _run.channels[1];
        const std::size_t end = _run.length + Lag;
        std::size_t t = 0;
        for (; t < Lag; ++t) TickAtAnEnd(t, a, b);
        SState state = _state; // a local copy, which the compiler knows is not aliased
        for (; t + 4 <= _run.length; t += 4) {
            const __m128 left = _mm_loadu_ps(a + t);
            const __m128 right = _mm_loadu_ps(b + t);
            float pairs[8];
            _mm_storeu_ps(pairs, _mm_unpacklo_ps(left, right));
            _mm_storeu_ps(pairs + 4, _mm_unpackhi_ps(left, right));
            const SQuad early = SQuad::Widen(pairs);
            const SQuad late = SQuad::Widen(pairs + 4);
            state.y[0] = Step(state, SQuad::HandOver<0>(state.y[0], early));
            state.y[1] = Step(state, SQuad::HandOver<1>(state.y[1], early));
            state.y[2] = Step(state, SQuad::HandOver<0>(state.y[2], late));
            state.y[3] = Step(state, SQuad::HandOver<1>(state.y[3], late));
            const __m128 first = SQuad::NarrowLow(state.y[0], state.y[1]);
            const __m128 second = SQuad::NarrowLow(state.y[2], state.y[3]);
            _mm_storeu_ps(a + (t - Lag), _mm_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0)));
            _mm_storeu_ps(b + (t - Lag), _mm_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1)));
        }
        _state = state;
        for (; t < end; ++t) TickAtAnEnd(t, a, b);
        Keep();
    }

private:
    using V = SLanes;
    using A = SArithmetic<FUSED>;
    static constexpr std::size_t Lag = 4;

    struct SState {
        SQuad w1;
        SQuad w2;
        SQuad y[Lag]; // of sample t in y[t % Lag]
        SQuad extra;
    };

    SQuad Step(SState& state, const SQuad& x) const noexcept {
        SQuad y{};
        for (std::size_t i = 0; i < SQuad::Count; ++i) {
            const V::Doubles w1 = state.w1.of[i];
            const V::Doubles w2 = state.w2.of[i];
            state.extra.of[i] = V::Xor(state.extra.of[i], _flip.of[i]);
            if constexpr (FUSED) {
                const V::Doubles in = V::Add(x.of[i], state.extra.of[i]);
                const V::Doubles w = A::Less(A::Less(in, _a2.of[i], w2), _a1.of[i], w1);
                state.w1.of[i] = w;
                state.w2.of[i] = w1;
                y.of[i] = V::Multiply(_scale.of[i], V::Add(w, A::MoreTwice(w2, w1)));
            } else {
                const V::Doubles w =
                    V::Add(A::Less(A::Less(x.of[i], _a1.of[i], w1), _a2.of[i], w2), state.extra.of[i]);
                state.w1.of[i] = w;
                state.w2.of[i] = w1;
                y.of[i] = A::More(A::More(V::Multiply(_scale.of[i], w), _twice.of[i], w1), _scale.of[i], w2);
            }
        }
        return y;
    }

    /// A step where one stage has no sample; its delays stay unchanged.
    void TickAtAnEnd(std::size_t t, float* a, float* b) noexcept {
        const bool isFirstActive = t < _run.length;
        const bool isSecondActive = t >= Lag;
        const float pairs[4] = {isFirstActive ? a[t] : 0.0f, isFirstActive ? b[t] : 0.0f, 0.0f, 0.0f};
        const SState before = _state;
        SQuad& y = _state.y[t % Lag];
        y = Step(_state, SQuad::HandOver<0>(y, SQuad::Widen(pairs)));
        const double first = isFirstActive ? -1.0 : 1.0; // the sign decides
        const double second = isSecondActive ? -1.0 : 1.0;
        const SQuad active = SQuad::Of(second, second, first, first);
        for (std::size_t i = 0; i < SQuad::Count; ++i) {
            _state.w1.of[i] = V::Choose(active.of[i], _state.w1.of[i], before.w1.of[i]);
            _state.w2.of[i] = V::Choose(active.of[i], _state.w2.of[i], before.w2.of[i]);
        }
        if (!isSecondActive) return;
        const __m128 out = SQuad::NarrowLow(y, y);
        a[t - Lag] = _mm_cvtss_f32(out);
        b[t - Lag] = _mm_cvtss_f32(_mm_shuffle_ps(out, out, 1));
    }

    void Keep() const noexcept {
        double w1[4];
        double w2[4];
        _state.w1.Store(w1);
        _state.w2.Store(w2);
        for (std::size_t c = 0; c < _run.channelCount; ++c) {
            for (std::size_t stage = 0; stage < 2; ++stage) {
                _run.delays[c]->w1[stage] = w1[2 * (1 - stage) + c];
                _run.delays[c]->w2[stage] = w2[2 * (1 - stage) + c];
            }
        }
    }

    SCascadeRun _run;
    SQuad _a1;
    SQuad _a2;
    SQuad _scale; // the numerators
    SQuad _twice;
    SQuad _flip;
    SState _state{};
};

/// A single channel takes both places.
inline SCascadeRun WithTwoChannels(SCascadeRun run) noexcept {
    if (run.channelCount == 1) {
        run.channels[1] = run.channels[0];
        run.delays[1] = run.delays[0];
        run.extra[1] = run.extra[0];
    }
    return run;
}

template<bool FUSED>
void RunShortCascade(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept {
    CShortCascade<FUSED>(WithTwoChannels(run), coefficients).Process();
}

template<bool FUSED>
void RunLongCascade(const SCascadeRun& run, const SCascadeCoefficients& coefficients) noexcept {
    CLongCascade<FUSED>(WithTwoChannels(run), coefficients).Process();
}

} // namespace
} // namespace KAV::DSP

#endif
