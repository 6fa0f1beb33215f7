#include "tests/dsp/reference/meters.h"

#include <cmath>

namespace KAV::Reference {

float PeakOf(const float* channel, int length, float atLeast) {
    float peak = atLeast;
    for (int i = 0; i < length; ++i) {
        if (std::fabs(channel[i]) > peak) peak = std::fabs(channel[i]);
    }
    return peak;
}

void CMeters::SetRate(float blocksPerSecond) {
    _level.SetRate(blocksPerSecond);
    _channel.SetRate(blocksPerSecond);
}

double CMeters::ToDb(float peak) {
    const double db = peak > 0.0f ? 20.0 * std::log10(static_cast<double>(peak)) : -999.9;
    _coverage.HitIf(db >= 0.0, ECase::MeterFull);
    _coverage.HitIf(db < 0.0 && db > -12.0, ECase::MeterUpperSegments);
    _coverage.HitIf(db <= -12.0 && db > -48.0, ECase::MeterMiddleSegments);
    _coverage.HitIf(db <= -48.0 && db > -192.0, ECase::MeterLowerSegments);
    _coverage.HitIf(db <= -192.0, ECase::MeterEmpty);
    return db;
}

double CMeters::SevenPoints(double db) {
    const double table[7] = {-192.0, -96.0, -48.0, -24.0, -12.0, -6.0, 0.0};
    if (db >= 0.0) return 1.0;
    if (db <= -192.0) return 0.0;
    for (int i = 0; i < 6; ++i) {
        if (db > table[i] && db <= table[i + 1])
            return (i + 2 - (table[i + 1] - db) / (table[i + 1] - table[i])) / 7;
    }
    return 0.0;
}

double CMeters::FivePoints(double db) {
    const double table[5] = {-48.0, -24.0, -12.0, -6.0, 0.0};
    if (db <= -48.0) return 0.0;
    if (db >= 0.0) return 1.0;
    for (int i = 0; i < 4; ++i) {
        if (db > table[i] && db <= table[i + 1])
            return (1 - std::fabs((table[i + 1] - db) / (table[i + 1] - table[i])) + i) * 0.25;
    }
    return 0.0;
}

void CMeters::Move(float& meter, const CSmoother& smoother, double target) {
    meter = smoother.Step(meter, static_cast<float>(target), _coverage);
}

void CMeters::Source(int entry, float peak) {
    Move(_values[static_cast<std::size_t>(entry)], _level, SevenPoints(ToDb(peak)));
}

void CMeters::Group(int group, float peak) {
    Move(_values[static_cast<std::size_t>(16 + group)], _level, SevenPoints(ToDb(peak)));
}

void CMeters::Entry(int entry, float in, float out) {
    Move(_values[static_cast<std::size_t>(20 + entry)], _channel, FivePoints(ToDb(in)));
    Move(_values[static_cast<std::size_t>(36 + entry)], _channel, FivePoints(ToDb(out)));
}

float CMeters::Read(int tag) const {
    return _values[static_cast<std::size_t>(-4 - tag)];
}

} // namespace KAV::Reference
