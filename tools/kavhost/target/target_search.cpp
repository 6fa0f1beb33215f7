#include "tools/kavhost/target/target_search.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace KAV::Host {

namespace {

constexpr double StepDb = 0.01;
constexpr int ScanSteps = 10;     // less than the window of loudness that fits is wide
constexpr int BestBeyond = 10;    // steps past the lowest fit in which a better one is welcome
constexpr int LowestWithin = 15;  // steps: a fit this close to the lowest one counts as the lowest
constexpr int SameGain = 5;       // steps: a render this close shows what another one would
constexpr int LongestStep = 100;  // that a flat is crossed by, before it is doubled
constexpr double Margin = 0.002;  // of what only measured, for the rounding of what is stored
constexpr double PeakAimDb = 0.1; // the meter reads less than a finer one
constexpr double ReductionBelowDb = 0.1;
constexpr double Infinity = std::numeric_limits<double>::infinity();

int Steps(double decibels) {
    return static_cast<int>(std::lround(decibels / StepDb));
}

double Decibels(int steps) {
    return steps * StepDb;
}

} // namespace

CTargetSearch::CTargetSearch(
    const STargets& targets, const SGains& start, SReach input, SReach output, SOutset outset)
    : _targets(targets), _start(start), _output(output), _lowest(Steps(input.lowestDb)),
      _highest(Steps(input.highestDb)), _model(outset),
      _hasLoudness(std::isfinite(GatedLufs(outset.tenths))) {}

SFound CTargetSearch::Find(const Try& render, const Store& store) {
    _render = &render;
    SFound found;
    for (;;) {
        const int gain = Choose(found);
        const bool mayStore = found.obstacle == EObstacle::None || _targets.takesNearest;
        if (_isFinite && mayStore && Left() > 0) {
            found.isStored = StoreAt(gain, found, store);
            if (!found.isStored && Left() > 1) continue;
            if (!found.isStored) {
                found.obstacle = EObstacle::NoFit;
                const auto most = _targets.truePeakDbtp;
                found.isStored = _targets.takesNearest && !(most && found.reached.truePeakDbtp > *most);
            }
        }
        found.renders = _renders;
        return found;
    }
}

/// The input gain with which the programme is stored, or would be if nothing were in the way.
int CTargetSearch::Choose(SFound& found) {
    found.obstacle = EObstacle::None;
    int gain = Steps(_start.inputDb);
    if (_targets.loudnessLufs && _hasLoudness) {
        const auto fit = FindFit();
        gain = fit ? *fit : NearestTried();
        if (!fit) found.obstacle = WhyNoFit(gain);
    } else {
        if (!_tried.contains(gain)) TryAt(gain);
        if (_targets.loudnessLufs) found.obstacle = EObstacle::NoLoudness;
    }
    if (!_isFinite) found.obstacle = EObstacle::NotFinite;
    const auto most = _targets.mostReductionDb;
    if (_isFinite && _hasLoudness && most && _model.At(Decibels(gain)).reductionDb > *most) {
        // Where even the highest gain is too low, it is still the reduction that keeps it from being taken.
        const bool isInTheWay = found.obstacle == EObstacle::None || found.obstacle == EObstacle::HighestGain;
        if (isInTheWay && _trials.contains(gain)) {
            found.obstacle = EObstacle::Reduction;
            found.needed = _trials.at(gain);
        }
        gain = FindWithin(*most, gain);
    }
    const auto outcome = OutcomeAt(gain);
    found.gains = {GainOf(gain), outcome.outputDb};
    found.peakBinds = outcome.outputDb < _start.outputDb;
    found.reached = {outcome.lufs, outcome.truePeakDbtp};
    if (found.obstacle == EObstacle::None && outcome.outputDb <= _output.lowestDb && _targets.truePeakDbtp &&
        outcome.truePeakDbtp > *_targets.truePeakDbtp) {
        found.obstacle = EObstacle::OutputGain;
    }
    return gain;
}

/// False if what is stored does not fit; then it is known why, and another choice may do.
bool CTargetSearch::StoreAt(int gain, SFound& found, const Store& store) {
    const auto expected = OutcomeAt(gain);
    ++_renders;
    found.reached = store(found.gains);
    const bool fits = found.obstacle == EObstacle::None ? Fits(found.reached, found.gains.outputDb)
                                                        : found.obstacle == EObstacle::OutputGain ||
                                                              PeakFits(found.reached, found.gains.outputDb);
    if (fits) return true;
    const auto more = [](double reached, double forecast) {
        return std::isfinite(reached) && std::isfinite(forecast) ? reached - forecast : 0.0;
    };
    // What a coder adds to the peak differs from one gain to the next, so later misses count in part.
    const double part = std::exchange(_hasMissed, true) ? 0.5 : 1.0;
    _storedLouder += part * more(found.reached.loudnessLufs, expected.lufs);
    _storedHigher += part * more(found.reached.truePeakDbtp, expected.truePeakDbtp);
    for (auto& [tried, result] : _tried) result.outcome = OutcomeAt(tried);
    return false;
}

void CTargetSearch::TryAt(int gain) {
    ++_renders;
    auto trial = (*_render)(GainOf(gain));
    _isFinite = _isFinite && trial.isFinite;
    _model.Add(Decibels(gain), trial);
    _tried[gain].reductionDb = trial.reductionDb;
    trial.programme = {};
    _trials[gain] = std::move(trial);
    _tried[gain].outcome = OutcomeAt(gain);
}

/// A gain that stays as it stands is no rounder than it was.
double CTargetSearch::GainOf(int steps) const {
    return steps == Steps(_start.inputDb) ? _start.inputDb : Decibels(steps);
}

CTargetSearch::SOutcome CTargetSearch::OutcomeOf(std::span<const Tenths> tenths, double truePeakDbtp) const {
    double output = _start.outputDb;
    if (_targets.truePeakDbtp) {
        const double most = *_targets.truePeakDbtp - PeakAimDb - truePeakDbtp - _storedHigher;
        if (most < 0) output = std::floor((output + most) / StepDb + 1e-6) * StepDb;
        output = std::max(output, std::min(_output.lowestDb, _start.outputDb));
    }
    const double change = output - _start.outputDb;
    return {output, GatedLufs(tenths, change) + _storedLouder, truePeakDbtp + change + _storedHigher};
}

/// As a render has shown or, at another gain, as the model has it.
CTargetSearch::SOutcome CTargetSearch::OutcomeAt(int gain) {
    const auto& prediction = _model.At(Decibels(gain));
    return OutcomeOf(prediction.tenths, prediction.truePeakDbtp);
}

double CTargetSearch::MissOf(double lufs) const {
    return std::isfinite(lufs) ? std::abs(lufs - *_targets.loudnessLufs) : Infinity;
}

CTargetSearch::ESide CTargetSearch::SideOf(double lufs) const {
    const double beyond = lufs - *_targets.loudnessLufs;
    if (beyond < -(LoudnessTolerance - Margin)) return ESide::Below;
    return beyond > LoudnessTolerance - Margin ? ESide::Above : ESide::Inside;
}

bool CTargetSearch::PeakFits(const SReached& reached, double outputDb) const {
    if (!_targets.truePeakDbtp) return true;
    const double room = *_targets.truePeakDbtp - reached.truePeakDbtp;
    return room >= 0 && (outputDb >= _start.outputDb || room <= PeakTolerance);
}

bool CTargetSearch::Fits(const SReached& reached, double outputDb) const {
    if (!PeakFits(reached, outputDb)) return false;
    return !_targets.loudnessLufs || MissOf(reached.loudnessLufs) <= LoudnessTolerance;
}

/// Where the predicted loudness begins to fit between two neighbours of the scan, the first of which is on
/// `side` and the other one is not.
std::optional<int> CTargetSearch::EntryBetween(int from, int to, ESide side) {
    while (to - from > 1) {
        const int middle = from + (to - from) / 2;
        (SideOf(LufsAt(middle)) == side ? from : to) = middle;
    }
    if (SideOf(LufsAt(to)) != ESide::Inside) return {}; // it jumps over the target
    return to;
}

/// The lowest input gain whose predicted loudness fits.
std::optional<CTargetSearch::SFit> CTargetSearch::PredictFit() {
    std::optional<int> lowest;
    auto side = SideOf(LufsAt(_lowest));
    if (side == ESide::Inside) lowest = _lowest;
    for (int gain = _lowest; !lowest && gain < _highest; gain += ScanSteps) {
        const int next = std::min(gain + ScanSteps, _highest);
        const auto nextSide = SideOf(LufsAt(next));
        if (nextSide != side) lowest = EntryBetween(gain, next, side);
        side = nextSide;
    }
    if (!lowest) return {};
    SFit fit{*lowest, *lowest};
    double least = Infinity;
    for (int gain = *lowest; gain <= std::min(*lowest + BestBeyond, _highest); ++gain) {
        const double miss = MissOf(LufsAt(gain));
        if (miss >= least) continue;
        least = miss;
        fit.aim = gain;
    }
    return fit;
}

/// The input gain, the lowest of several, whose predicted loudness is nearest to the target.
int CTargetSearch::NearestPrediction() {
    int nearest = _highest;
    double least = MissOf(LufsAt(_highest));
    for (int gain = _lowest; gain < _highest; gain += ScanSteps) {
        const double miss = MissOf(LufsAt(gain));
        if (miss >= least) continue;
        least = miss;
        nearest = gain;
    }
    return nearest;
}

/// Where to render, so that no flat is crossed by small steps: each of several upwards is twice the last one.
int CTargetSearch::PastFlat(int aim) {
    const auto above = _tried.lower_bound(aim);
    if (above != _tried.end() || above == _tried.begin()) return aim;
    const auto last = std::prev(above);
    if (last == _tried.begin() || SideOf(last->second.outcome.lufs) != ESide::Below) return aim;
    const int step = last->first - std::prev(last)->first;
    return std::min(std::max(aim, last->first + 2 * std::min(step, LongestStep)), _highest);
}

/// A render that fits, of which none is known to fit with a clearly lower input gain.
std::optional<int> CTargetSearch::FindFit() {
    for (;;) {
        const auto predicted = PredictFit();
        const auto tried = std::ranges::find_if(
            _tried, [this](const auto& one) { return SideOf(one.second.outcome.lufs) == ESide::Inside; });
        const bool isTried = tried != _tried.end();
        if (_hasMissed && predicted) return predicted->aim; // only storing tells more
        if (isTried && predicted && predicted->lowest >= tried->first - LowestWithin) return tried->first;
        const int next = predicted ? PastFlat(predicted->aim) : NearestPrediction();
        const int near = predicted ? 0 : SameGain;
        const auto known = _tried.lower_bound(next - near);
        const bool isKnown = known != _tried.end() && known->first <= next + near;
        if (!_isFinite || Left() <= 1 || isKnown) {
            if (isTried) return tried->first;
            return {};
        }
        TryAt(next);
    }
}

int CTargetSearch::NearestTried() const {
    return std::ranges::min_element(_tried, {}, [this](const auto& one) {
        return MissOf(one.second.outcome.lufs);
    })->first;
}

EObstacle CTargetSearch::WhyNoFit(int gain) const {
    const bool isBelow = _tried.at(gain).outcome.lufs < *_targets.loudnessLufs;
    if (!isBelow && gain - _lowest <= SameGain) return EObstacle::LowestGain;
    if (isBelow && _highest - gain <= SameGain) return EObstacle::HighestGain;
    return EObstacle::NoFit;
}

/// The highest input gain up to `from` with no more reduction than that.
int CTargetSearch::FindWithin(double mostReductionDb, int from) {
    const double aim = std::max(mostReductionDb - ReductionBelowDb / 2, 0.0);
    for (;;) {
        int within = _lowest, beyond = from;
        while (beyond - within > 1) {
            const int middle = within + (beyond - within) / 2;
            (_model.At(Decibels(middle)).reductionDb > aim ? beyond : within) = middle;
        }
        int best = _lowest;
        for (const auto& [gain, tried] : _tried) {
            if (gain < from && tried.reductionDb <= mostReductionDb) best = gain;
        }
        const bool isTried = _tried.contains(best);
        const bool isClose = isTried && (_tried.at(best).reductionDb > mostReductionDb - ReductionBelowDb ||
                                            within - best <= SameGain);
        if (isClose || _tried.contains(within) || Left() <= 1) return isTried ? best : _tried.begin()->first;
        TryAt(within);
    }
}

} // namespace KAV::Host
