#include "tools/kavhost/target/gain_model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace KAV::Host {

namespace {

constexpr double FirstSlope = 0.6;      // of a tenth that is limited, until two renders have shown it
constexpr double LeastSlope = 0.1;      // less is believed only between two renders
constexpr double LeastStretchDb = 0.05; // a slope over less is noise
constexpr double NoReductionDb = 0.02;  // the meter's own uncertainty
constexpr double Infinity = std::numeric_limits<double>::infinity();

struct SPoint {
    double gainDb;
    double levelDb;
};

/// A level over the input gain: a slope of 1 up to the bend, and then what the points show. `below` and
/// `above` are the nearest renders on both sides, `before` is the one below `below`; any may be null.
struct SCurve {
    double restDb = 0; ///< level minus gain below the bend, if no render shows it
    double bendDb = 0;
    double firstSlope = 0;
    double leastSlope = 0; ///< that is believed beyond the last render, and the most
    double mostSlope = 1;

    double At(double gainDb, const SPoint* before, const SPoint* below, const SPoint* above) const {
        if (below != nullptr && above != nullptr) return Between(gainDb, *below, *above);
        if (below != nullptr) return Beyond(gainDb, before, *below);
        if (above != nullptr) return Before(gainDb, *above);
        return restDb + std::min(gainDb, bendDb) + firstSlope * std::max(gainDb - bendDb, 0.0);
    }

private:
    double Between(double gainDb, SPoint below, const SPoint& above) const {
        if (bendDb > below.gainDb) {
            const double bend = std::min(bendDb, above.gainDb);
            if (gainDb <= bend) return std::min(below.levelDb + gainDb - below.gainDb, Most(below, above));
            below = {bend, std::min(below.levelDb + bend - below.gainDb, Most(below, above))};
        }
        const double share = (gainDb - below.gainDb) / (above.gainDb - below.gainDb);
        return below.levelDb + share * (above.levelDb - below.levelDb);
    }

    static double Most(const SPoint& a, const SPoint& b) { return std::max(a.levelDb, b.levelDb); }

    double Beyond(double gainDb, const SPoint* before, const SPoint& below) const {
        if (gainDb <= bendDb) return below.levelDb + gainDb - below.gainDb;
        if (bendDb > below.gainDb)
            return below.levelDb + bendDb - below.gainDb + firstSlope * (gainDb - bendDb);
        SPoint from{bendDb, restDb + bendDb};
        if (before != nullptr) {
            const double bend = std::max(bendDb, before->gainDb);
            from = {bend, before->levelDb + bend - before->gainDb};
        }
        return below.levelDb + Slope(from, below) * (gainDb - below.gainDb);
    }

    double Before(double gainDb, const SPoint& above) const {
        if (bendDb >= above.gainDb) return above.levelDb - (above.gainDb - gainDb);
        const double slope = Slope({bendDb, restDb + bendDb}, above);
        const double limited = above.gainDb - std::max(gainDb, bendDb);
        return above.levelDb - slope * limited - std::max(bendDb - gainDb, 0.0);
    }

    double Slope(const SPoint& from, const SPoint& to) const {
        const double stretch = to.gainDb - from.gainDb;
        if (!(stretch >= LeastStretchDb) || !std::isfinite(stretch)) return firstSlope;
        return std::clamp((to.levelDb - from.levelDb) / stretch, leastSlope, mostSlope);
    }
};

} // namespace

CGainModel::CGainModel(SOutset outset) : _outset(std::move(outset)), _onsetDb(_outset.onsetDb) {
    for (std::size_t f = 0; f < _outset.tenths.size(); ++f) {
        const auto& file = _outset.tenths[f];
        for (std::size_t i = 0; i < file.size(); ++i) {
            _restDb.push_back(LufsOf(file[i]) + _outset.restGainDb);
            _peaksDb.push_back(_outset.tenthPeaksDb[f][i]);
        }
    }
    _highestPeakDb = _peaksDb.empty() ? -Infinity : *std::ranges::max_element(_peaksDb);
    _prediction.tenths = _outset.tenths;
}

void CGainModel::Add(double inputGainDb, const STrial& trial) {
    SKnot knot{inputGainDb, {}, trial.programme.truePeakDbtp, trial.reductionDb};
    for (std::size_t f = 0; f < _outset.tenths.size(); ++f) {
        const auto& file = trial.programme.tenths[f];
        for (std::size_t i = 0; i < _outset.tenths[f].size(); ++i)
            knot.levelsDb.push_back(i < file.size() ? LufsOf(file[i]) : -Infinity);
    }
    const double driven = inputGainDb + _highestPeakDb;
    if (trial.reductionDb <= NoReductionDb) {
        _onsetDb = std::max(_onsetDb, driven);
    } else {
        _onsetDb = std::min(_onsetDb, driven);
    }
    const auto place = std::ranges::lower_bound(_knots, inputGainDb, {}, &SKnot::gainDb);
    if (place != _knots.end() && place->gainDb == inputGainDb)
        *place = std::move(knot);
    else
        _knots.insert(place, std::move(knot));
}

const CGainModel::SPrediction& CGainModel::At(double inputGainDb) {
    const auto place = std::ranges::upper_bound(_knots, inputGainDb, {}, &SKnot::gainDb);
    const SKnot* const above = place != _knots.end() ? &*place : nullptr;
    const SKnot* const below = place != _knots.begin() ? &*std::prev(place) : nullptr;
    const SKnot* const before = below != nullptr && below != _knots.data() ? below - 1 : nullptr;
    const auto at = [&](const SCurve& curve, const auto& levelOf) {
        SPoint points[3];
        const auto point = [&](const SKnot* knot, SPoint& to) -> const SPoint* {
            if (knot == nullptr) return nullptr;
            to = {knot->gainDb, levelOf(*knot)};
            return &to;
        };
        return curve.At(
            inputGainDb, point(before, points[0]), point(below, points[1]), point(above, points[2]));
    };
    std::size_t k = 0;
    for (auto& file : _prediction.tenths) {
        for (auto& tenth : file) {
            const SCurve curve{_restDb[k], _onsetDb - _peaksDb[k], FirstSlope, LeastSlope};
            const double level = at(curve, [k](const SKnot& knot) { return knot.levelsDb[k]; });
            tenth = std::isfinite(level) ? EnergyOf(level) : 0;
            ++k;
        }
    }
    const double bend = OnsetGainDb();
    _prediction.truePeakDbtp = at({_outset.truePeakDbtp + _outset.restGainDb, bend, 0, 0, 0},
        [](const SKnot& knot) { return knot.truePeakDbtp; });
    // The reduction is what the gain is ahead of a level that stands still.
    const double kept = at({0, bend, 0, 0}, [](const SKnot& knot) { return knot.gainDb - knot.reductionDb; });
    _prediction.reductionDb = std::max(inputGainDb - kept, 0.0);
    return _prediction;
}

} // namespace KAV::Host
