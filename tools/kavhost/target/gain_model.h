#pragma once

#include "tools/kavhost/target/programme.h"

#include <cstddef>
#include <span>
#include <vector>

namespace KAV::Host {

/// What a render at an input gain showed, with the output gain where it stands at the start.
struct STrial {
    SProgramme programme;
    double reductionDb = 0;        ///< the largest
    std::size_t reductionFile = 0; ///< where that is
    double reductionSeconds = 0;
    bool isFinite = true; ///< no sample of it was infinite or not a number
};

/// What is known before the first render.
struct SOutset {
    std::vector<Tenths> tenths;                    ///< of the input's files
    std::vector<std::vector<double>> tenthPeaksDb; ///< the sample peaks of the same tenths, in dBFS
    double truePeakDbtp = 0;                       ///< of the input
    double restGainDb = 0; ///< of the effect at an input gain of 0 dB while it limits nothing
    double onsetDb = 0;    ///< a sample peak plus input gain above this is limited; infinity if nothing is
};

/// Predicts what a limiter makes of a programme at an input gain, from the renders at others. Each tenth of a
/// second has a curve of its own: it rises with the gain up to where its peak begins to be limited, passes
/// through what the renders showed, and rises more slowly from there. Summing them tells where quiet passages
/// come over the gate, which no curve through the loudness of whole renders can tell.
class CGainModel final {
public:
    explicit CGainModel(SOutset outset);

    void Add(double inputGainDb, const STrial& trial);

    struct SPrediction {
        std::vector<Tenths> tenths;
        double truePeakDbtp = 0;
        double reductionDb = 0;
    };
    /// Valid until the next call.
    const SPrediction& At(double inputGainDb);

    /// The highest input gain at which nothing is limited, as far as is known.
    double OnsetGainDb() const noexcept { return _onsetDb - _highestPeakDb; }

private:
    /// A render: what each curve has at its gain.
    struct SKnot {
        double gainDb;
        std::vector<double> levelsDb; ///< of all tenths, one file after the other
        double truePeakDbtp;
        double reductionDb;
    };

    SOutset _outset;
    std::vector<double> _restDb;  ///< of all tenths, at an input gain of 0 dB without limiting
    std::vector<double> _peaksDb; ///< of all tenths
    double _highestPeakDb;
    double _onsetDb;
    std::vector<SKnot> _knots; ///< by rising gain
    SPrediction _prediction;
};

} // namespace KAV::Host
