#pragma once

#include "device/parameter_table.h"
#include "device/value_flags.h"
#include "patch/macro.h"
#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace KAV {

class CXXXGUI;

/// The device without any host interface: every host call and every request of the editor ends at one of
/// these operations. The order of the virtual operations is fixed.
///
/// Tags are parameter numbers 1..337, or -4..-56 for meters; host indexes are 0..108. Other numbers are
/// allowed everywhere and have no effect. Texts are UTF-8, cut to the buffer, with a closing zero. Threads:
/// Process() on the audio thread; the rest on any thread unless stated otherwise.
class CXXXDSP : public CMacro {
public:
    virtual void Process(float** channels, float** side, int channelCount, int frames) noexcept = 0;
    virtual void ProcessSecond(
        float** channels, float** side, int channelCount, int frames) noexcept; ///< no audio work
    virtual void GetParamName(std::int32_t hostIndex, std::span<char> text);
    /// The state as a patch text with its closing zero, as a project's or a preset's chunk. Returns its size;
    /// the data is valid until the next call.
    virtual std::int32_t GetChunk(void** data, bool isPreset) = 0;
    /// Takes any patch: a text or the older binary format. Returns 1, or 0 if it is neither, and then nothing
    /// changes.
    virtual std::int32_t SetChunk(const void* data, std::size_t size, bool isPreset) = 0;
    virtual void SetProgramName(std::string_view text) = 0; ///< the patch's name
    virtual void GetParamLabel(std::int32_t hostIndex, std::span<char> text) = 0;
    virtual void SetBlockSize(std::int32_t frames) = 0; ///< audio is stopped
    virtual void SetSampleRate(float rateHz) = 0;       ///< audio is stopped
    virtual ~CXXXDSP() = default;
    virtual int GetGroupCount() const noexcept = 0;
    virtual int GetCurrentGroup() const noexcept = 0;
    virtual int GetMaxChannels() const noexcept = 0;
    virtual void GetTagName(std::int32_t tag, std::span<char> text) = 0; ///< the full name
    virtual float GetParam(std::int32_t tag, std::uint32_t flags) = 0;   ///< `flags`: ValueFlag bits
    virtual void SetParam(std::int32_t tag, float value, std::uint32_t flags) = 0;
    virtual std::string GetRouting(int group) = 0; ///< a copy of the document
    /// One thread at a time, also while audio runs. A group outside 0..3 does nothing.
    virtual void SetRouting(std::string_view text, int group) = 0;
    virtual void Spare1() {}
    virtual void Spare2() {}
    virtual void Spare3() {}
    virtual void Spare4() {}
    virtual void Spare5() {}
    virtual void Spare6() {}
    virtual float GetHostParameter(std::int32_t hostIndex);
    /// A negative index means the last program. Without `force` the current program isn't selected again.
    virtual void SetProgram(std::int32_t index, bool force) = 0;
    virtual void SetHostBypass(bool bypass) = 0;
    virtual bool GetHostBypass() const noexcept = 0;
    virtual void GetParamDisplay(std::int32_t hostIndex, std::span<char> text) = 0;
    virtual void BeginEdit(std::int32_t tag) = 0; ///< `tag`: 0..99, relative to the current group
    virtual void SetParameterAutomated(std::int32_t tag, float value) = 0;
    virtual void EndEdit(std::int32_t tag) = 0;
    virtual void OnValueChanged() {}             ///< after every SetParam() and at every tick of the editor
    virtual int GetLatency() const noexcept = 0; ///< samples of the oversampled rate

    /// The user holds this parameter in the editor, between BeginEdit() and EndEdit(). NoHostIndex asks about
    /// controls that aren't host parameters; they share one flag. False for other numbers.
    bool IsEdited(std::int32_t hostIndex) const noexcept;

protected:
    CXXXDSP() = default;

    CXXXGUI* gui = nullptr; ///< null only while the device is being built; owned by the effect's record
    Utils::CShared<std::int32_t> dspChannels{2}; ///< as the host's speaker arrangement says
    /// See IsEdited(): the flag of NoHostIndex, then one per host index.
    std::array<Utils::CShared<bool>, HostParameters + 1> editing;
};

} // namespace KAV
