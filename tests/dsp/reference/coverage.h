#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Reference {

/// Every mode, transition and clause of the signal path that a comparison must have passed through.
enum class ECase : std::size_t {
    // Calls from the host.
    RateChange,
    RateSame,
    RateIgnored,
    BlockSizeAnnounced,
    BlockSizeIgnored,
    EmptyCall,
    SlicedBlock,
    BlockBeforeAnyAnnouncement,
    ChannelCountChange,
    BlockLengthChange,
    SixteenChannels,
    // Input material and the silence gates.
    NanInput,
    InfiniteInput,
    DenormalInput,
    GateCloses,
    GateReopens,
    GateLimitPassed,
    ChannelSkipped,
    AllChannelsSkipped,
    // Main gains.
    MainInputSteps,
    MainInputSettled,
    MainInputZeroFromStart,
    MainOutputSteps,
    MainOutputSettled,
    MainOutputZeroFromStart,
    // Smoothers and gain stages.
    SmootherRises,
    SmootherFalls,
    SmootherSnapsUp,
    SmootherSnapsDown,
    GainUnity,
    GainApplied,
    GainOnInfinity,
    // Which channels a group gets.
    GroupEmpty,
    GroupFirstBlock,
    GroupFirstBlockEmpty,
    GroupMuted,
    GroupSoloed,
    GroupSoloedAndMuted,
    GroupShutOutBySolo,
    SoloZeroesChannel,
    SoloKeepsTakenChannel,
    SoloWithSkippedChannel,
    EntrySingle,
    EntryPair,
    EntryWithoutChannel,
    ChannelOutOfRange,
    ChannelSkippedInList,
    ChannelTwiceSerial,
    ChannelTwiceParallel,
    ListStopped,
    // How groups connect.
    SerialSingle,
    SerialChain,
    SerialUntaken,
    ParallelSingle,
    ParallelSum,
    ParallelUntaken,
    BecomesParallel,
    BecomesSerial,
    // Bypass.
    BypassBegins,
    BypassEnds,
    BypassTurnsMidway,
    BypassEndsFromFull,
    MixZero,
    MixBetween,
    MixOne,
    MixBetweenParallel,
    // Group parameters.
    InputGainMoves,
    ThresholdMoves,
    CeilingMoves,
    ReleaseMoves,
    LimiterOn,
    LimiterOff,
    LimiterSwitchedOn,
    LimiterSwitchedOff,
    AutoSwitchedOn,
    AutoSwitchedOff,
    // Limiter.
    LimiterRestarts,
    WindowSubstitute,
    WindowShortest,
    WindowLonger,
    ListLengthChange,
    FixedAttack,
    FixedRecover,
    AutoAttack,
    AutoRecover,
    SlowEnvelopeFalls,
    SlowEnvelopeRises,
    FloorTaken,
    FloorNotTaken,
    CurveFlat,
    CurveFirst,
    CurveSecond,
    CurveThird,
    NanIgnoredByPeak,
    RequiredGainZero,
    DriveOverflows,
    NanLeavesDelay,
    InfinityLeavesDelay,
    MinimumLowered,
    LatchAnswered,
    LatchWaits,
    // Latency.
    LatencySerialNone,
    LatencySerialOne,
    LatencySerialSeveral,
    LatencyParallelNone,
    LatencyParallelFirst,
    LatencyParallelLater,
    // Mid/side.
    MidAlone,
    SideAlone,
    MidAndSide,
    MidSoloed,
    SideSoloed,
    MidSideOfOneChannel,
    MidSideOfManyChannels,
    MidSideEntryOff,
    MidSideOfOneBuffer,
    // Oversampling.
    FactorTwo,
    FactorFour,
    FactorEight,
    FactorChanges,
    QualityUsed,
    QualitySwitched,
    PassPlain,
    PassPlainLeftOver,
    PassFusedPart,
    PassFusedFull,
    FilterRecovers,
    RaisedWithSkippedChannel,
    // Meters.
    MeterFull,
    MeterUpperSegments,
    MeterMiddleSegments,
    MeterLowerSegments,
    MeterEmpty,
    MeterOfSkippedChannel,
    MeterOfPair,
    MeterOfEmptyGroup,
    MeterOfInactiveGroup,
    MeterShowsOtherGroup,
    MeterTakesOldPeak,
    Count
};

std::string_view NameOf(ECase which);

/// Counts in how many blocks each case occurred. A case that occurs many times in one block counts once, so a
/// high number means many situations and not one long buffer.
class CCoverage final {
public:
    void Hit(ECase which) { _seen.set(static_cast<std::size_t>(which)); }
    void HitIf(bool condition, ECase which) {
        if (condition) Hit(which);
    }
    void CloseBlock(); // what was hit since the last call becomes one occurrence

    std::size_t Occurrences(ECase which) const; // closed blocks only
    std::vector<std::string> UncoveredBelow(int least) const;
    std::string Table() const; // one "name count" line per case

private:
    static constexpr std::size_t CaseCount = static_cast<std::size_t>(ECase::Count);
    std::bitset<CaseCount> _seen;
    std::array<std::size_t, CaseCount> _occurrences{};
};

} // namespace KAV::Reference
