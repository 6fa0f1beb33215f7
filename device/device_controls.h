#pragma once

#include "dsp/auto_gain.h"
#include "utils/shared.h"

#include <cstdint>

namespace KAV {

/// What patches and the editor set besides parameters. None of it is told to the host. Groups are 0..3.
/// Threads: any; every value is one word, of which the audio thread sees the old or the new one.
class IDeviceControls {
public:
    /// The tag that `tag` means under GroupRelative in `flags`: that of the current group, if there is one.
    virtual std::int32_t ResolveTag(std::int32_t tag, std::uint32_t flags) const noexcept = 0;
    /// The group that the editor shows; held to 0..3.
    virtual void SetCurrentGroup(int group) noexcept = 0;
    /// Whether the processor's vector instructions are used.
    virtual Utils::CShared<bool>& Simd() noexcept = 0;
    /// Whether the groups work side by side instead of one behind the other.
    virtual Utils::CShared<bool>& GroupsParallel() noexcept = 0;
    virtual DSP::AutoGainSettings& AutoGain() noexcept = 0;
    virtual Utils::CShared<bool>& Solo(int group) noexcept = 0;
    virtual Utils::CShared<bool>& Mute(int group) noexcept = 0;
    /// Gain-reduction feed: the lowest gain between the last two requests, linear; and the request.
    virtual double GetReportedGain(int group) noexcept = 0;
    virtual void RequestReportedGain(int group) noexcept = 0;
    /// Channels that the host gives.
    virtual std::int32_t Channels() const noexcept = 0;

protected:
    IDeviceControls() = default;
    ~IDeviceControls() = default;
};

} // namespace KAV
