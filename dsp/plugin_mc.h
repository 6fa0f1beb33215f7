#pragma once

#include "dsp/auto_gain.h"
#include "dsp/channel_buffers.h"
#include "dsp/fx_group.h"
#include "dsp/gain_stage.h"
#include "dsp/meters.h"
#include "dsp/mid_side.h"
#include "dsp/oversampler.h"
#include "dsp/plugin_dsp_base.h"
#include "dsp/silence_gate.h"
#include "dsp/smoother.h"
#include "utils/realtime.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace KAV::DSP {

/// The frame around the effect groups: main gains, oversampling, which channels go through which group, solo,
/// mute, serial or parallel connection, bypass.
///
/// Threads: SetSampleRate(), SetBlockSize() and SetAutoGainLinks() while audio is stopped; ProcessBlock() on
/// the audio thread; the public words on any thread; Latency() on any thread.
template<typename TSample, typename TValue>
class CPluginMC : public CPluginDSP_base<TSample, TValue, 16, 4> {
public:
    using Base = CPluginDSP_base<TSample, TValue, 16, 4>;
    using Base::Groups;
    using Base::MaxChannels;

    Utils::CShared<std::uint32_t> currentGroup{0}; ///< the group that the editor shows, 0..3
    Utils::CShared<bool> hostBypass{false};
    Utils::CShared<bool> simd{false};           ///< whether the processor's features are used
    Utils::CShared<bool> groupsParallel{false}; ///< connection of the groups: serial or parallel
    Utils::CShared<bool> severalSolos{false};   ///< for the editor: a group's solo leaves the others'
    AutoGainSettings autoGain;

    /// What switches the automatic gain stage on and off.
    struct SAutoGainLinks {
        bool enable = false;
        const Utils::CShared<bool>* on = nullptr;        ///< disabled if null
        const Utils::CShared<bool>* automatic = nullptr; ///< auto mode is off if null
        Utils::CShared<float>* adjusting = nullptr;      ///< is set to 1 while the gain moves
    };
    /// No caller in this device, so the stage stays off. Its windows, which hold ten seconds, are allocated
    /// by the first links that enable it, and kept. Throws std::bad_alloc, and then the old links stay.
    void SetAutoGainLinks(const SAutoGainLinks& links);

    /// Delay in samples of the oversampled rate, as reported to the host: in parallel the first used group's
    /// look-ahead, in series the sum over all used groups. A group is used when one of its channel toggles is
    /// on. The value follows the present settings even before a block has run with them, because hosts ask at
    /// that time.
    int Latency() const noexcept;

    /// The limiter of a group 0..3, for its gain-reduction feed.
    LookaheadLimiter& Limiter(int group) noexcept {
        return _groups[static_cast<std::size_t>(group)].Limiter();
    }

    const CMeters& Meters() const noexcept { return _meters; }

protected:
    CPluginMC();
    ~CPluginMC() = default;

    void SetSampleRate(float rateHz);
    void SetBlockSize(std::size_t frames);
    /// One block of up to 16 channels in place; `frames` at least 1 and at most the last SetBlockSize().
    KAV_REALTIME void ProcessBlock(std::span<TSample* const> channels, std::size_t frames) noexcept;

private:
    static constexpr std::size_t GroupCount = std::size_t{Groups};
    static constexpr std::size_t ChannelCount = std::size_t{MaxChannels};

    /// A smoothed gain of -24..+24 dB on all channels.
    struct SMainGain {
        GainStage stage;
        float position = 0.0f; // smoothed, 0..1

        void Move(const Smoother& smoother, float target, bool refresh = false) noexcept;
    };
    /// The settings as the whole block uses them, even if they change meanwhile.
    struct SBlock {
        std::size_t channels = 0; // host channels
        std::size_t frames = 0;   // at the base rate
        std::int32_t factor = 1;
        std::size_t length = 0; // oversampled: frames x factor
        std::uint64_t features = 0;
        bool bypass = false;
        bool parallel = false;
        bool anySolo = false;
        std::size_t shownGroup = 0;                      // the group whose entries are metered
        std::array<std::uint32_t, GroupCount> entries{}; // bit k: the group takes the channels of entry k
        std::array<bool, GroupCount> solo{};
        std::array<bool, GroupCount> mute{};
        std::array<EMidSide, GroupCount> midSide{};
    };
    /// The channels that one group takes in one block: `count` places.
    struct SGroupList { // NOLINT(cppcoreguidelines-pro-type-member-init)
        std::size_t count = 0;
        std::array<TSample*, ChannelCount> buffers;
        std::array<std::size_t, ChannelCount> channels; // host channel of each place
        std::array<std::size_t, ChannelCount> entries;  // routing entry of each place
    };

    SBlock Snapshot(std::size_t channels, std::size_t frames) const noexcept;
    void SnapshotGroup(std::size_t group, SBlock& block) const noexcept;
    SGroupSettings GroupSettings(std::size_t group, const SBlock& block) const noexcept;
    void ListenForSilence(std::span<TSample* const> channels, const SBlock& block) noexcept;
    void MeterSources(std::span<TSample* const> channels, const SBlock& block) noexcept;
    void MeterGroup(std::size_t group, const SGroupList& list, bool shown) noexcept;
    void ApplyMainGain(const SMainGain& gain, const SBlock& block) noexcept;
    void Gather(std::size_t group, const SBlock& block, SGroupList& list) noexcept;
    void Take(std::size_t entry, std::int32_t number, const SBlock& block, SGroupList& list) noexcept;
    void RunGroup(std::size_t group, const SBlock& block) noexcept;
    void LimitGroup(std::size_t group, const SBlock& block, bool shown) noexcept;
    void AddToSums(const SGroupList& list, std::size_t length) noexcept;
    void TakeSums(const SBlock& block) noexcept;
    void PrepareAutoGain(const SBlock& block) noexcept;
    void ApplyOutput(const SBlock& block) noexcept;
    void SilenceUnused(const SBlock& block) noexcept;

    Utils::CShared<float> _rateHz{44100.0f};
    std::array<TSample*, ChannelCount>
        _active{}; // each input channel's buffer in this block, null when it is skipped
    std::array<bool, ChannelCount> _used{}; // some group took this channel in this block
    CChannelBuffers _scratch;               // parallel: the groups' own copies
    CChannelBuffers _sums;                  // parallel: the output of the groups
    CChannelBuffers _dry;                   // of the running group, while it crossfades to or from bypass
    Oversampler _oversampler;
    std::array<SilenceGate, ChannelCount> _gates;
    SMainGain _input;
    SMainGain _output;
    Smoother _gainSmoother; // steps once per block
    std::array<FxGroup, GroupCount> _groups;
    CMeters _meters;
    SAutoGainLinks _autoGainLinks;
    AutoGain _autoGain;      // allocated once it has been enabled
    std::size_t _frames = 0; // longest block announced
};

extern template class CPluginMC<float, float>;

} // namespace KAV::DSP
