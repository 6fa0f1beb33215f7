#pragma once

#include "device/xxx_dsp.h"
#include "plugin/host_survey.h"
#include "state/device_state.h"
#include "utils/shared.h"
#include "vst/audio_effect_x.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace KAV {

/// Connects the device to a VST 2.4 host: every host call is passed to the matching operation of CXXXDSP.
/// Holds no audio and no parameter state. Threads: as AudioEffectX.
class CVSTDSPv2 : public CXXXDSP, public AudioEffectX {
public:
    static constexpr std::int32_t UniqueId = VST::FourCharacters('s', 'o', 'r', 'l');

    // CXXXDSP
    std::int32_t GetChunk(void** data, bool isPreset) final;
    std::int32_t SetChunk(const void* data, std::size_t size, bool isPreset) final;
    void SetProgramName(std::string_view text) final;
    void BeginEdit(std::int32_t tag) final;
    void SetParameterAutomated(std::int32_t tag, float value) final;
    void EndEdit(std::int32_t tag) final;

    virtual bool GetInputProperties() { return false; }
    virtual bool GetOutputProperties() { return false; }
    virtual void GetProgramName(std::span<char> text);
    virtual void GetProgramNameIndexed(std::int32_t index, std::span<char> text);
    virtual std::int32_t GetProgram() { return curProgram; }
    virtual void SetProgramPlain(std::int32_t index) { SetProgram(index, false); }
    virtual void GetEffectName(std::span<char> text);
    virtual void GetVendorString(std::span<char> text);
    virtual void GetProductString(std::span<char> text);
    virtual std::int32_t GetPlugCategory() { return VST::kPlugCategEffect; }

    void SetProgram(std::int32_t index, bool force) final;

    const SHostSurvey& HostSurvey() const noexcept { return _survey; }

protected:
    explicit CVSTDSPv2(VST::HostCallback audioMaster);
    ~CVSTDSPv2() override = default;

    /// Updates the delay in the record without notifying the host, which reads it whenever it wants to.
    void RefreshInitialDelay() noexcept { setInitialDelay(GetLatency()); }

    CDeviceState* state = nullptr; ///< not owned; null only while the device is being built

    // AudioEffectX
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) noexcept final;
    void setParameter(std::int32_t index, float value) final;
    float getParameter(std::int32_t index) final;
    void getParameterLabel(std::int32_t index, char* text) final;
    void getParameterDisplay(std::int32_t index, char* text) final;
    void getParameterName(std::int32_t index, char* text) final;
    std::int32_t getProgram() final { return GetProgram(); }
    void setProgramName(const char* text) final;
    void getProgramName(char* text) final;
    void getProgramNameIndexed(std::int32_t index, char* text) final;
    void setSampleRate(float rateHz) final;
    void setBlockSize(std::int32_t frames) final;
    std::int32_t getChunk(void** data, bool isPreset) final;
    std::int32_t setChunk(const void* data, std::size_t size, bool isPreset) final;
    bool setSpeakerArrangement(
        const VST::VstSpeakerArrangement* input, const VST::VstSpeakerArrangement* output) final;
    bool getSpeakerArrangement(VST::VstSpeakerArrangement** input, VST::VstSpeakerArrangement** output) final;
    void getEffectName(char* text) final;
    void getVendorString(char* text) final;
    std::int32_t getPlugCategory() final { return GetPlugCategory(); }

private:
    using Arrangement = VST::SpeakerArrangement<64>;

    static constexpr std::int32_t HighestRelativeTag = 99;

    SHostSurvey AskHost();
    /// The host index of an edited group-relative tag 0..99, or NoHostIndex.
    std::int32_t EditedHostIndex(std::int32_t tag) const noexcept;
    void MarkEditing(std::int32_t hostIndex, bool edited) noexcept;

    /// By tag: the host index whose edit has begun, NoHostIndex counting as 1, the first index as 2; 0: none
    /// has.
    std::array<Utils::CShared<std::int32_t>, HighestRelativeTag + 1> _begun;
    std::int32_t _sideChannels = 0; // host input channels that are a side chain; always 0 in this device
    Arrangement _inputArrangement{};
    Arrangement _outputArrangement{};
    bool _arrangementsValid = false; // the host has set both
    SHostSurvey _survey;
};

} // namespace KAV
