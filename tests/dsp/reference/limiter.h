#pragma once

#include "tests/dsp/reference/coverage.h"

#include <array>
#include <cstddef>
#include <deque>
#include <span>
#include <vector>

namespace KAV::Reference {

/// Minimum of the last `length` values. Only candidates are kept, each lower than all before it: a value can
/// no longer become the minimum once a lower one has arrived.
class CWindowMinimum final {
public:
    void SetLength(std::size_t length); // then as if `length` ones had been pushed
    double Push(double value);

private:
    struct SCandidate {
        double value;
        std::size_t leaves; // with this push
    };
    std::deque<SCandidate> _candidates;
    std::size_t _length = 0;
    std::size_t _pushes = 0;
};

/// Mean of the last `length` values by a running sum, which keeps the rounding errors of all earlier samples.
class CMovingAverage final {
public:
    void SetLength(std::size_t length); // then as if `length` ones had been pushed
    double Push(double value);

private:
    std::vector<double> _values;
    std::size_t _write = 0;
    double _sum = 0.0;
};

class CDelay final {
public:
    void SetLength(std::size_t length); // then silence
    double Push(double value);          // returns what was pushed `length` samples ago

private:
    std::vector<double> _values;
    std::size_t _write = 0;
};

/// Look-ahead brick-wall limiter; all channels of a call share one gain.
class CLimiter final {
public:
    explicit CLimiter(CCoverage& coverage);

    void SetRate(double rateHz); // restarts with unity gain and empty delays
    double Rate() const;
    std::size_t LookAhead() const;                 // samples
    static std::size_t LookAheadAt(double rateHz); // samples at a rate

    void SetParams(double thresholdPos, double ceilingPos, double releasePos, bool automatic);
    void Process(std::span<float* const> channels, int length);

    void SetLatch();
    bool LatchPending() const;
    double ReportedGain() const;

private:
    double CoefficientOf(double seconds) const;
    double DriveAndRequire(std::span<float* const> channels, int i); // returns the required gain
    double ReleaseFixed(double m);
    double ReleaseAuto(double m);
    double Curve(double u);
    void Output(std::span<float* const> channels, int i, double gain);

    CCoverage& _coverage;
    double _rate = 0.0;
    double _tau = 0.0; // samples: a one-pole of t * tau falls to 10 % in t seconds
    std::size_t _lookAhead = 0;

    double _thresholdPos = 0.0;
    double _ceilingPos = 0.0;
    double _releasePos = 0.0;
    bool _auto = false;

    double _drive = 1.0;
    double _ceiling = 1.0;
    double _limit = 1.0;
    double _manualState = 1.0;
    double _manualCoefficient = 0.0;

    double _slow = 1.0;
    double _slowFall = 0.0;
    double _slowRise = 0.0;
    double _autoState = 1.0;
    double _autoCoefficient = 0.0;
    double _coefficientFloor;
    double _curve1 = 0.0;
    double _curve2 = 0.0;
    double _curve3 = 0.0;

    CWindowMinimum _minimum;
    CMovingAverage _average1;
    CMovingAverage _average2;
    std::array<CDelay, 16> _delays;

    double _minimumGain = 1.0; // since the last answered latch
    double _reportedGain = 1.0;
    bool _latch = false;
    std::size_t _lastCount = 0; // channels of the last call; only used for coverage
};

} // namespace KAV::Reference
