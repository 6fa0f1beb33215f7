#pragma once

#include "utils/shared.h"
#include "vst/aeff_editor.h"
#include "vst/vst2.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace KAV {

/// The effect's side of the VST 2.4 interface: owns the record, turns the host's calls into virtual
/// operations, and makes the calls to the host. A derived class overrides the calls that it answers; by
/// default they do nothing.
///
/// No exception leaves the record's entries: an operation that throws answers 0. Pointers from the host are
/// checked here, so operations never receive null.
///
/// Threads: processReplacing() on the host's audio thread; everything else on any thread of the host.
class AudioEffectX {
public:
    AudioEffectX(const AudioEffectX&) = delete;
    AudioEffectX& operator=(const AudioEffectX&) = delete;

    /// The record that the host gets. Lives as long as this object.
    VST::AEffect* Record() noexcept { return &_record; }

    // Calls to the host, also used by the editor's side. Without a host callback they do nothing.
    /// The host reads this field whenever it wants to.
    void setInitialDelay(std::int32_t samples) noexcept {
        std::atomic_ref(_record.initialDelay).store(samples, std::memory_order_relaxed);
    }
    void ioChanged() noexcept;
    void setParameterAutomated(std::int32_t index, float value) noexcept;
    void beginEdit(std::int32_t index) noexcept;
    void endEdit(std::int32_t index) noexcept;
    /// Asks for another size of the editor's window, in pixels. False if the host leaves the size as it is.
    bool sizeWindow(std::int32_t width, std::int32_t height) noexcept;

protected:
    AudioEffectX(VST::HostCallback audioMaster, std::int32_t parameters, std::int32_t uniqueId,
        std::int32_t version, std::int32_t inputs, std::int32_t outputs, std::int32_t flags) noexcept;
    virtual ~AudioEffectX();

    // Calls from the host. Indexes are the host's own and may be any number. Text buffers have the sizes of
    // vst2.h, which include the closing zero.
    virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames) noexcept = 0;
    virtual void setParameter(std::int32_t index, float value) = 0;
    virtual float getParameter(std::int32_t index) = 0;
    virtual void getParameterLabel(std::int32_t index, char* text) = 0;
    virtual void getParameterDisplay(std::int32_t index, char* text) = 0;
    virtual void getParameterName(std::int32_t index, char* text) = 0;
    virtual std::int32_t getProgram() = 0;
    virtual void setProgramName(const char* text) = 0;
    virtual void getProgramName(char* text) = 0;
    virtual void getProgramNameIndexed(std::int32_t index, char* text) = 0;
    virtual void setSampleRate(float rateHz);
    virtual void setBlockSize(std::int32_t frames);
    virtual std::int32_t getChunk(void** data, bool isPreset) = 0;
    virtual std::int32_t setChunk(const void* data, std::size_t size, bool isPreset) = 0;
    virtual bool setSpeakerArrangement(
        const VST::VstSpeakerArrangement* input, const VST::VstSpeakerArrangement* output) = 0;
    virtual bool getSpeakerArrangement(
        VST::VstSpeakerArrangement** input, VST::VstSpeakerArrangement** output) = 0;
    virtual void getEffectName(char* text) = 0;
    virtual void getVendorString(char* text) = 0;
    virtual std::int32_t getPlugCategory() = 0;

    /// Makes any call to the host. Without a host callback it does nothing and returns 0.
    std::intptr_t CallHost(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
        void* pointer = nullptr, float option = 0.0f) noexcept;

    /// Takes the editor, which is destroyed with this object. The host only hears of an editor that has a
    /// window.
    void setEditor(std::unique_ptr<AEffEditor> editor) noexcept;

    // Fields of the record
    void setNumInputs(std::int32_t inputs) noexcept { _record.numInputs = inputs; }
    void setNumOutputs(std::int32_t outputs) noexcept { _record.numOutputs = outputs; }
    std::int32_t NumInputs() const noexcept { return _record.numInputs; }
    std::int32_t NumPrograms() const noexcept { return _record.numPrograms; }

    float sampleRate = 44100.0f;   ///< Hz, as the host last said
    std::int32_t blockSize = 1024; ///< frames, as the host last said
    /// 0 once construction has ended. Any thread of the host may change it while another one reads it.
    Utils::CShared<std::int32_t> curProgram = -1;

private:
    std::intptr_t dispatcher(
        std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option);

    static AudioEffectX* Of(VST::AEffect* record) noexcept;
    static std::intptr_t DispatcherThunk(VST::AEffect* record, std::int32_t opcode, std::int32_t index,
        std::intptr_t value, void* pointer, float option) noexcept;
    static void ProcessThunk(
        VST::AEffect* record, float** inputs, float** outputs, std::int32_t frames) noexcept;
    static void ProcessReplacingThunk(
        VST::AEffect* record, float** inputs, float** outputs, std::int32_t frames) noexcept;
    static void ProcessDoubleReplacingThunk(
        VST::AEffect* record, double** inputs, double** outputs, std::int32_t frames) noexcept;
    static void SetParameterThunk(VST::AEffect* record, std::int32_t index, float value) noexcept;
    static float GetParameterThunk(VST::AEffect* record, std::int32_t index) noexcept;

    VST::HostCallback _audioMaster; // null if the host gave none
    VST::AEffect _record{};
    std::unique_ptr<AEffEditor> _editor; // null only while the effect is being built
};

} // namespace KAV
