#pragma once

#include "dsp/plugin_dsp.h"
#include "plugin/vst_dsp_v2.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace KAV {

/// One instance of the limiter: the parameters, the engine and the host's record. The DSP object owns every
/// value; there is no lock between those who write values and the audio thread, which reads each of them once
/// per block.
///
/// Threads: Process() on the audio thread; SetSampleRate() and SetBlockSize() while audio is stopped;
/// everything else on any thread.
class CDeviceDSP final : public CVSTDSPv2, public CPluginDSP<float, float, DSP::CPluginMC<float, float>> {
public:
    using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

    /// Asks the host about itself; `audioMaster` may be null.
    explicit CDeviceDSP(VST::HostCallback audioMaster);
    ~CDeviceDSP() override = default;

    // CXXXDSP
    void Process(float** channels, float** side, int channelCount, int frames) noexcept override;
    void GetParamLabel(std::int32_t hostIndex, std::span<char> text) override;
    void SetBlockSize(std::int32_t frames) override;
    void SetSampleRate(float rateHz) override;
    int GetGroupCount() const noexcept override { return DeviceGroups; }
    int GetCurrentGroup() const noexcept override;
    int GetMaxChannels() const noexcept override { return DeviceChannels; }
    void GetTagName(std::int32_t tag, std::span<char> text) override;
    float GetParam(std::int32_t tag, std::uint32_t flags) override;
    void SetParam(std::int32_t tag, float value, std::uint32_t flags) override;
    std::string GetRouting(int group) override;
    void SetRouting(std::string_view text, int group) override;
    void SetHostBypass(bool bypass) override { hostBypass = bypass; }
    bool GetHostBypass() const noexcept override { return hostBypass; }
    void GetParamDisplay(std::int32_t hostIndex, std::span<char> text) override;
    int GetLatency() const noexcept override { return Latency(); }

    /// The group that the editor shows; held to 0..3.
    void SetCurrentGroup(int group) noexcept;
    void SetSimd(bool use) noexcept { simd = use; }
    bool GetSimd() const noexcept { return simd; }
    void SetGroupsParallel(bool parallel) noexcept { groupsParallel = parallel; }
    bool GetGroupsParallel() const noexcept { return groupsParallel; }
    /// Gain-reduction feed of a group 0..3: the lowest gain between the last two requests, linear; and the
    /// request.
    double GetReportedGain(int group) noexcept { return Limiter(group).ReportedGain(); }
    void RequestReportedGain(int group) noexcept { Limiter(group).Latch(); }

private:
    /// Macros that are being spread in a chain of calls, one bit each: a macro that moves itself, directly or
    /// through others, ends there.
    using MacroChain = std::uint32_t;

    std::int32_t Resolve(std::int32_t tag, std::uint32_t flags) const noexcept;
    float GetMeter(std::int32_t tag) const noexcept;
    void Write(std::int32_t tag, float value, std::uint32_t flags, MacroChain chain);
    void Store(const SParameter& parameter, float value, std::uint32_t flags) noexcept;
    void Spread(std::size_t macro, float value, MacroChain chain);
};

} // namespace KAV
