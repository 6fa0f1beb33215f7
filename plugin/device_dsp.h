#pragma once

#include "device/device_controls.h"
#include "device_gui/editor_system.h"
#include "dsp/plugin_dsp.h"
#include "plugin/host_road.h"
#include "plugin/vst_dsp_v2.h"
#include "state/device_state.h"
#include "utils/maker_service.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace KAV {

/// One instance of the limiter: the parameters, the engine and the host's record. The device owns every
/// value. There is no lock between the threads that write values and the audio thread, which reads each value
/// once per block.
///
/// Threads: Process() on the audio thread; SetSampleRate() and SetBlockSize() while audio is stopped;
/// everything else on any thread.
class CDeviceDSP final : public CVSTDSPv2,
                         public CPluginDSP<float, float, DSP::CPluginMC<float, float>>,
                         public IDeviceControls {
public:
    using Engine = CPluginDSP<float, float, DSP::CPluginMC<float, float>>;

    /// Queries the host, builds the editor's half, which needs no window, and loads the first patch and the
    /// first routing of the user's lists. `audioMaster` may be null. If `service` names a server, two helper
    /// threads ask it for the latest version and send it the previous session's log; the destructor waits for
    /// them. `system` has the windows of the editor; it isn't null.
    explicit CDeviceDSP(VST::HostCallback audioMaster,
        const Utils::SMakerService& service = Utils::ConfiguredService(),
        std::unique_ptr<IEditorSystem> system = MakeEditorSystem());
    /// Closes the editor, if it is open.
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

    // IDeviceControls
    std::int32_t ResolveTag(std::int32_t tag, std::uint32_t flags) const noexcept override;
    void SetCurrentGroup(int group) noexcept override;
    Utils::CShared<bool>& Simd() noexcept override { return simd; }
    Utils::CShared<bool>& GroupsParallel() noexcept override { return groupsParallel; }
    DSP::AutoGainSettings& AutoGain() noexcept override { return autoGain; }
    Utils::CShared<bool>& Solo(int group) noexcept override { return parameters.solo[Place(group)]; }
    Utils::CShared<bool>& Mute(int group) noexcept override { return parameters.mute[Place(group)]; }
    Utils::CShared<bool>& SeveralSolos() noexcept override { return severalSolos; }
    double GetReportedGain(int group) noexcept override { return Limiter(group).ReportedGain(); }
    void RequestReportedGain(int group) noexcept override { Limiter(group).Latch(); }
    std::int32_t Channels() const noexcept override { return dspChannels; }

    /// What the instance keeps in addition to its values.
    CDeviceState& State() noexcept { return _state; }
    /// The editor's half, with or without a window.
    CXXXGUI& GUI() noexcept { return *gui; }

private:
    /// The macros that the current chain of calls is applying, one bit each. The chain ends at a macro that
    /// would move itself, directly or through others.
    using MacroChain = std::uint32_t;

    /// Closes and destroys the editor, which the host's record owns, before the state that it shows.
    struct SEditorEnd {
        CDeviceDSP& device;
        ~SEditorEnd() { device.setEditor(nullptr); }
    };

    static std::size_t Place(int group) noexcept { return static_cast<std::size_t>(group); }
    float GetMeter(std::int32_t tag) const noexcept;
    void Write(std::int32_t tag, float value, std::uint32_t flags, MacroChain chain);
    void Store(const SParameter& parameter, float value, std::uint32_t flags) noexcept;
    void Spread(std::size_t macro, float value, MacroChain chain);

    std::unique_ptr<IEditorSystem> _system;
    CHostRoad _road{*this};
    CDeviceState _state{*this, *this, _road};
    SEditorEnd _editorEnd{*this};
};

} // namespace KAV
