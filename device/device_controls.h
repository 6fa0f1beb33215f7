#pragma once

#include "dsp/auto_gain.h"
#include "utils/shared.h"

#include <cstdint>

namespace KAV {

/// What patches and the editor set in addition to parameters. The host isn't notified of these changes.
/// Groups are 0..3.
/// Threads: any. Every value is one word, of which the audio thread sees either the old or the new value.
class IDeviceControls {
public:
    /// What `tag` stands for if `flags` contains GroupRelative: the same parameter of the current group, if
    /// there is one.
    virtual std::int32_t ResolveTag(std::int32_t tag, std::uint32_t flags) const noexcept = 0;
    /// The group that the editor shows; clamped to 0..3.
    virtual void SetCurrentGroup(int group) noexcept = 0;
    /// Whether the processor's vector instructions are used.
    virtual Utils::CShared<bool>& Simd() noexcept = 0;
    /// Whether the groups work in parallel instead of in series.
    virtual Utils::CShared<bool>& GroupsParallel() noexcept = 0;
    virtual DSP::AutoGainSettings& AutoGain() noexcept = 0;
    virtual Utils::CShared<bool>& Solo(int group) noexcept = 0;
    virtual Utils::CShared<bool>& Mute(int group) noexcept = 0;
    /// Whether several groups may have solo at the same time. Nothing sets it.
    virtual Utils::CShared<bool>& SeveralSolos() noexcept = 0;
    /// Lowest linear gain since the previous request (GetReportedGain); RequestReportedGain() starts the next
    /// interval.
    virtual double GetReportedGain(int group) noexcept = 0;
    virtual void RequestReportedGain(int group) noexcept = 0;
    /// How many channels the host provides.
    virtual std::int32_t Channels() const noexcept = 0;

protected:
    IDeviceControls() = default;
    ~IDeviceControls() = default;
};

} // namespace KAV
