#include "tests/dsp/reference/coverage.h"

namespace KAV::Reference {

namespace {

// In the order of the enumeration.
constexpr std::array Names = std::to_array<std::string_view>({"RateChange", "RateSame", "RateIgnored",
    "BlockSizeAnnounced", "BlockSizeIgnored", "EmptyCall", "SlicedBlock", "BlockBeforeAnyAnnouncement",
    "ChannelCountChange", "BlockLengthChange", "SixteenChannels", "NanInput", "InfiniteInput",
    "DenormalInput", "GateCloses", "GateReopens", "GateLimitPassed", "ChannelSkipped", "AllChannelsSkipped",
    "MainInputSteps", "MainInputSettled", "MainInputZeroFromStart", "MainOutputSteps", "MainOutputSettled",
    "MainOutputZeroFromStart", "SmootherRises", "SmootherFalls", "SmootherSnapsUp", "SmootherSnapsDown",
    "GainUnity", "GainApplied", "GainOnInfinity", "GroupEmpty", "GroupFirstBlock", "GroupFirstBlockEmpty",
    "GroupMuted", "GroupSoloed", "GroupSoloedAndMuted", "GroupShutOutBySolo", "SoloZeroesChannel",
    "SoloKeepsTakenChannel", "SoloWithSkippedChannel", "EntrySingle", "EntryPair", "EntryWithoutChannel",
    "ChannelOutOfRange", "ChannelSkippedInList", "ChannelTwiceSerial", "ChannelTwiceParallel", "ListStopped",
    "SerialSingle", "SerialChain", "SerialUntaken", "ParallelSingle", "ParallelSum", "ParallelUntaken",
    "BecomesParallel", "BecomesSerial", "BypassBegins", "BypassEnds", "BypassTurnsMidway",
    "BypassEndsFromFull", "MixZero", "MixBetween", "MixOne", "MixBetweenParallel", "InputGainMoves",
    "ThresholdMoves", "CeilingMoves", "ReleaseMoves", "LimiterOn", "LimiterOff", "LimiterSwitchedOn",
    "LimiterSwitchedOff", "AutoSwitchedOn", "AutoSwitchedOff", "LimiterRestarts", "WindowSubstitute",
    "WindowShortest", "WindowLonger", "ListLengthChange", "FixedAttack", "FixedRecover", "AutoAttack",
    "AutoRecover", "SlowEnvelopeFalls", "SlowEnvelopeRises", "FloorTaken", "FloorNotTaken", "CurveFlat",
    "CurveFirst", "CurveSecond", "CurveThird", "NanIgnoredByPeak", "RequiredGainZero", "DriveOverflows",
    "NanLeavesDelay", "InfinityLeavesDelay", "MinimumLowered", "LatchAnswered", "LatchWaits",
    "LatencySerialNone", "LatencySerialOne", "LatencySerialSeveral", "LatencyParallelNone",
    "LatencyParallelFirst", "LatencyParallelLater", "MidAlone", "SideAlone", "MidAndSide", "MidSoloed",
    "SideSoloed", "MidSideOfOneChannel", "MidSideOfManyChannels", "MidSideEntryOff", "MidSideOfOneBuffer",
    "FactorTwo", "FactorFour", "FactorEight", "FactorChanges", "QualityUsed", "QualitySwitched", "PassPlain",
    "PassPlainLeftOver", "PassFusedPart", "PassFusedFull", "FilterRecovers", "RaisedWithSkippedChannel",
    "MeterFull", "MeterUpperSegments", "MeterMiddleSegments", "MeterLowerSegments", "MeterEmpty",
    "MeterOfSkippedChannel", "MeterOfPair", "MeterOfEmptyGroup", "MeterOfInactiveGroup",
    "MeterShowsOtherGroup", "MeterTakesOldPeak"});
static_assert(Names.size() == static_cast<std::size_t>(ECase::Count), "each case has one name");

} // namespace

std::string_view NameOf(ECase which) {
    return Names[static_cast<std::size_t>(which)];
}

void CCoverage::CloseBlock() {
    for (std::size_t i = 0; i < CaseCount; ++i) {
        if (_seen.test(i)) ++_occurrences[i];
    }
    _seen.reset();
}

std::size_t CCoverage::Occurrences(ECase which) const {
    return _occurrences[static_cast<std::size_t>(which)];
}

std::vector<std::string> CCoverage::UncoveredBelow(int least) const {
    std::vector<std::string> missing;
    for (std::size_t i = 0; i < CaseCount; ++i) {
        if (_occurrences[i] >= static_cast<std::size_t>(least)) continue;
        missing.push_back(std::string(Names[i]) + " " + std::to_string(_occurrences[i]));
    }
    return missing;
}

std::string CCoverage::Table() const {
    std::string table;
    for (std::size_t i = 0; i < CaseCount; ++i) {
        table += std::string(Names[i]) + " " + std::to_string(_occurrences[i]) + "\n";
    }
    return table;
}

} // namespace KAV::Reference
