#pragma once

#include "tools/kavhost/target/gain_model.h"

#include <functional>
#include <map>
#include <optional>

namespace KAV::Host {

/// What the user wants.
struct STargets {
    std::optional<double> loudnessLufs;
    std::optional<double> truePeakDbtp;    ///< never to be exceeded
    std::optional<double> mostReductionDb; ///< never to be exceeded
    bool takesNearest = false;             ///< the best that can be had, where the targets can't

    bool AreWanted() const noexcept { return loudnessLufs || truePeakDbtp; }
};

/// The effect's main gains in decibels.
struct SGains {
    double inputDb = 0;
    double outputDb = 0;
};

struct SReach {
    double lowestDb;
    double highestDb;
};

/// What was in the way.
enum class EObstacle {
    None,
    NotFinite,   ///< samples that are not numbers
    NoLoudness,  ///< silent, below the gate, or too short for a block
    LowestGain,  ///< even the lowest input gain makes it too loud
    HighestGain, ///< the highest input gain does not suffice
    OutputGain,  ///< the lowest output gain does not suffice for the true peak
    Reduction,   ///< it takes more reduction than the user wants
    NoFit        ///< the loudness jumps over the target, or rises and falls before it
};

struct SReached {
    double loudnessLufs = 0;
    double truePeakDbtp = 0;
};

struct SFound {
    SGains gains;
    EObstacle obstacle = EObstacle::None;
    bool isStored = false;
    bool peakBinds = false; ///< the output gain had to fall
    SReached reached;       ///< of what is stored, or would be
    int renders = 0;        ///< those that only measured, and those that were to be stored
    STrial needed; ///< of the obstacle Reduction: the render that fits all but that; its levels are empty
};

/// Searches the lowest input gain at which a programme has the wanted loudness. Where its true peak would be
/// too high then, the output gain falls by the excess and the input gain makes up for it. What comes out is
/// linear in the output gain, so that one render at an input gain tells the result for all output gains.
class CTargetSearch final {
public:
    static constexpr int MostRenders = 10;
    static constexpr double LoudnessTolerance = 0.1; ///< LU, to both sides
    static constexpr double PeakTolerance = 0.15;    ///< dB, downwards, where the true peak binds

    /// Renders with that input gain, and the output gain as it stands at the start; stores nothing.
    using Try = std::function<STrial(double inputGainDb)>;
    /// Renders with these gains and keeps the result in place of an earlier one; tells what is stored.
    using Store = std::function<SReached(const SGains& gains)>;

    CTargetSearch(const STargets& targets, const SGains& start, SReach input, SReach output, SOutset outset);

    /// Nothing is stored for good that does not meet the targets, unless the nearest will do.
    SFound Find(const Try& render, const Store& store);

private:
    /// What a programme comes to with the output gain that its true peak leaves.
    struct SOutcome {
        double outputDb;
        double lufs;
        double truePeakDbtp;
    };
    /// A render that has been made.
    struct STried {
        SOutcome outcome;
        double reductionDb;
    };
    struct SFit {
        int lowest; ///< where the loudness begins to fit
        int aim;    ///< where it is best to render
    };
    enum class ESide { Below, Inside, Above };

    void TryAt(int gain);
    SOutcome OutcomeOf(std::span<const Tenths> tenths, double truePeakDbtp) const;
    double LufsAt(int gain) { return OutcomeAt(gain).lufs; }
    SOutcome OutcomeAt(int gain);
    double MissOf(double lufs) const;
    ESide SideOf(double lufs) const;
    bool Fits(const SReached& reached, double outputDb) const;
    bool PeakFits(const SReached& reached, double outputDb) const;
    std::optional<int> EntryBetween(int from, int to, ESide side);
    double GainOf(int steps) const;
    std::optional<SFit> PredictFit();
    int NearestPrediction();
    int PastFlat(int aim);
    std::optional<int> FindFit();
    int NearestTried() const;
    EObstacle WhyNoFit(int gain) const;
    int FindWithin(double mostReductionDb, int from);
    int Choose(SFound& found);
    bool StoreAt(int gain, SFound& found, const Store& store);
    int Left() const noexcept { return MostRenders - _renders; }

    STargets _targets;
    SGains _start;
    SReach _output;
    int _lowest; ///< input gains are counted in hundredths of a decibel
    int _highest;
    CGainModel _model;
    bool _hasLoudness;
    const Try* _render = nullptr;
    std::map<int, STried> _tried;
    std::map<int, STrial> _trials; ///< without their levels
    bool _isFinite = true;
    int _renders = 0;
    bool _hasMissed = false;  ///< something was stored that did not fit
    double _storedLouder = 0; ///< what storing adds: a coder's or a coarse format's part
    double _storedHigher = 0;
};

} // namespace KAV::Host
