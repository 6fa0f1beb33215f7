#include "tools/kavhost/target/target_search.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

using namespace KAV::Host;

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

/// A tenth of a second of a synthetic programme: its loudness, its peak above that, and how much of what its
/// peak is beyond the limiter's threshold it loses in loudness.
struct STenth {
    double lufs;
    double crestDb;
    double lost;
};

/// A limiter on paper, whose threshold is full scale, and a programme for it.
struct SPaper {
    std::string name;
    std::vector<STenth> tenths;
    double restGainDb = 0;
    double overshootDb = 0; ///< of the true peak over the threshold; its waves go with the gain
    double storedHigherDb = 0;

    STrial At(double inputGainDb) const {
        STrial trial;
        trial.programme.tenths.resize(1);
        for (const auto& tenth : tenths) {
            const double level = tenth.lufs + inputGainDb + restGainDb;
            const double beyond = std::max(level + tenth.crestDb, 0.0);
            trial.programme.tenths[0].push_back(EnergyOf(level - tenth.lost * beyond));
            trial.reductionDb = std::max(trial.reductionDb, beyond);
            const double over = beyond > 0 ? overshootDb * (1 + std::sin(9 * inputGainDb)) / 2 : 0;
            trial.programme.truePeakDbtp =
                std::max(trial.programme.truePeakDbtp, std::min(level + tenth.crestDb, 0.0) + over);
        }
        return trial;
    }

    SOutset Outset() const {
        SOutset outset;
        outset.tenths.resize(1);
        outset.tenthPeaksDb.resize(1);
        outset.truePeakDbtp = -Infinity;
        for (const auto& tenth : tenths) {
            outset.tenths[0].push_back(EnergyOf(tenth.lufs));
            outset.tenthPeaksDb[0].push_back(tenth.lufs + tenth.crestDb);
            outset.truePeakDbtp = std::max(outset.truePeakDbtp, tenth.lufs + tenth.crestDb);
        }
        outset.restGainDb = restGainDb;
        outset.onsetDb = -restGainDb;
        return outset;
    }
};

std::ostream& operator<<(std::ostream& out, const SPaper& paper) {
    return out << paper.name;
}

std::vector<STenth> Repeated(std::size_t count, const std::vector<STenth>& tenths) {
    std::vector<STenth> all;
    while (all.size() < count) all.insert(all.end(), tenths.begin(), tenths.end());
    return all;
}

SPaper Song() {
    SPaper paper{"song", {}, 12, 0.1};
    for (int i = 0; i < 200; ++i) {
        const double wave = std::sin(0.7 * i) + std::sin(0.11 * i);
        paper.tenths.push_back({-22 + 4 * wave, 11 + 2 * std::cos(2.3 * i), 0.4});
    }
    return paper;
}

SPaper Crescendo() {
    SPaper paper{"crescendo", {}, 0, 0};
    for (int i = 0; i < 100; ++i) paper.tenths.push_back({-60 + 0.5 * i, 8, 0.7});
    return paper;
}

SPaper Clicks() {
    return {"clicks over a soft tone",
        Repeated(60, {{-24, 24, 0.9}, {-45, 3, 1}, {-45, 3, 1}, {-45, 3, 1}, {-45, 3, 1}})};
}

SPaper Halves() {
    auto tenths = Repeated(50, {{-20, 12, 0.8}});
    const auto quiet = Repeated(50, {{-34, 12, 0.8}});
    tenths.insert(tenths.end(), quiet.begin(), quiet.end());
    return {"a loud and a quiet half", tenths};
}

SPaper Sine() {
    return {"sine", Repeated(40, {{-20, 0, 1}})};
}

SPaper Speech() {
    SPaper paper{"speech with pauses",
        Repeated(90, {{-28, 15, 0.3}, {-24, 14, 0.4}, {-31, 13, 0.3}, {-80, 12, 0}, {-80, 12, 0}}), 0, 0.03};
    return paper;
}

/// Renders at all gains of a grid in steps of a tenth of a decibel.
std::vector<STrial> GridOf(const SPaper& paper) {
    std::vector<STrial> grid;
    for (int i = -240; i <= 240; ++i) grid.push_back(paper.At(0.1 * i));
    return grid;
}

/// What the output gain leaves of it, by the definition alone.
double LufsUnder(const STrial& trial, const STargets& targets) {
    double change = 0;
    if (targets.truePeakDbtp)
        change = std::min(0.0, *targets.truePeakDbtp - 0.1 - trial.programme.truePeakDbtp);
    return GatedLufs(trial.programme.tenths, change);
}

/// The lowest gain of the grid whose loudness fits; nothing if none does.
std::optional<double> LowestOf(const std::vector<STrial>& grid, const STargets& targets) {
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const double lufs = LufsUnder(grid[i], targets);
        if (std::abs(lufs - *targets.loudnessLufs) <= CTargetSearch::LoudnessTolerance)
            return -24 + 0.1 * static_cast<double>(i);
    }
    return {};
}

struct SSearched {
    SFound found;
    std::vector<double> tries;
    int stores = 0;
};

SSearched Search(const SPaper& paper, const STargets& targets, SGains start = {}) {
    SSearched searched;
    CTargetSearch search(targets, start, {-24, 24}, {-24, 24}, paper.Outset());
    searched.found = search.Find(
        [&](double gain) {
            searched.tries.push_back(gain);
            return paper.At(gain);
        },
        [&](const SGains& gains) {
            ++searched.stores;
            const auto trial = paper.At(gains.inputDb);
            const double change = gains.outputDb - start.outputDb;
            return SReached{GatedLufs(trial.programme.tenths, change),
                trial.programme.truePeakDbtp + change + paper.storedHigherDb};
        });
    return searched;
}

class TargetSearchOf : public testing::TestWithParam<SPaper> {};

INSTANTIATE_TEST_SUITE_P(
    All, TargetSearchOf, testing::Values(Song(), Crescendo(), Clicks(), Halves(), Sine(), Speech()));

} // namespace

TEST_P(TargetSearchOf, FindsTheLowestGainOfAGridInAtMostTenRenders) {
    const auto grid = GridOf(GetParam());
    for (const std::optional<double> peak :
        {std::optional<double>{}, std::optional<double>{-1}, std::optional<double>{-6}}) {
        for (double lufs = -39.87; lufs <= -3; lufs += 0.9) {
            const STargets targets{lufs, peak, {}, false};
            const auto expected = LowestOf(grid, targets);
            const auto [found, tries, stores] = Search(GetParam(), targets);
            SCOPED_TRACE(std::to_string(lufs) + " LUFS, " + (peak ? std::to_string(*peak) : "any") + " dBTP");
            EXPECT_EQ(found.renders, static_cast<int>(tries.size()) + stores);
            EXPECT_LE(found.renders, 10);
            if (!expected) {
                EXPECT_NE(found.obstacle, EObstacle::None)
                    << found.gains.inputDb << " " << found.reached.loudnessLufs;
                EXPECT_FALSE(found.isStored);
                continue;
            }
            EXPECT_EQ(found.obstacle, EObstacle::None) << *expected;
            EXPECT_NEAR(found.gains.inputDb, *expected, 0.2);
            EXPECT_NEAR(found.reached.loudnessLufs, lufs, 0.1);
            if (peak) {
                EXPECT_LE(found.reached.truePeakDbtp, *peak);
            }
        }
    }
}
