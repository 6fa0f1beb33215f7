#pragma once

#include "tools/kavhost/effect/host_callback.h"
#include "vst/vst2.h"

#include <cstdint>
#include <string>

namespace KAV::Host {

class CEffectLibrary;

/// What the state in an effect's chunk belongs to.
enum class EChunk { Bank, Program };

/// One instance of an effect, opened for a stream. The library must outlive it.
/// Threads: the one that made it; Process() may be on another one if no other call is made meanwhile but
/// those of the editor, parameters and chunks.
class CEffect final {
public:
    /// Throws CFailure if the library's entry point returns no effect.
    /// `host`, which may be null, outlives the effect.
    CEffect(const CEffectLibrary& library, const SStream& stream, IEffectHost* host = nullptr);
    ~CEffect();
    CEffect(const CEffect&) = delete;
    CEffect& operator=(const CEffect&) = delete;

    /// Requests `channels` inputs and outputs; throws CFailure unless the effect then has exactly these.
    /// While stopped.
    void SetChannels(int channels);
    void Start();
    void Stop() noexcept;
    /// Sets the stream's rate and block size once more, as hosts do before they start an effect again. Some
    /// effects report a new latency only then. While stopped.
    void PrepareAgain();

    /// Processes `inputs` into `outputs`. Each has as many pointers as the effect has channels; `frames` is
    /// at most the stream's block size. While started.
    void Process(float** inputs, float** outputs, std::int32_t frames);

    bool HasEditor() const noexcept { return (Flags() & VST::effFlagsHasEditor) != 0; }
    struct SEditorSize {
        std::int32_t width = 0;
        std::int32_t height = 0;
    };
    SEditorSize EditorSize(); ///< 0 x 0 if it reports none
    /// In the system's window `parent`; false if the effect refuses.
    bool OpenEditor(std::uintptr_t parent);
    void IdleEditor() { Dispatch(VST::effEditIdle); }
    void CloseEditor() noexcept;

    void SetParameter(std::int32_t index, float value) { _effect->setParameter(_effect, index, value); }
    float Parameter(std::int32_t index) const { return _effect->getParameter(_effect, index); }
    std::int32_t Parameters() const noexcept { return _effect->numParams; }
    std::string ParameterName(std::int32_t index) const { return Text(VST::effGetParamName, index); }
    std::string ParameterDisplay(std::int32_t index) const { return Text(VST::effGetParamDisplay, index); }
    std::string ParameterLabel(std::int32_t index) const { return Text(VST::effGetParamLabel, index); }

    bool HasChunks() const noexcept { return (Flags() & VST::effFlagsProgramChunks) != 0; }
    std::string Chunk(EChunk kind) const; ///< empty if the effect provides none
    /// False if the effect refuses the bytes, or keeps no state in chunks. While stopped.
    bool SetChunk(std::string bytes, EChunk kind);

    std::string ProgramName() const { return Text(VST::effGetProgramName, 0); }
    std::string ProgramName(std::int32_t program) const {
        return Text(VST::effGetProgramNameIndexed, program);
    }
    void SetProgramName(std::string name) { Dispatch(VST::effSetProgramName, 0, 0, name.data()); }

    std::string Name() const;
    std::string Vendor() const { return Text(VST::effGetVendorString, 0); }
    std::string Product() const { return Text(VST::effGetProductString, 0); }
    std::int32_t VstVersion() const;
    std::int32_t Inputs() const noexcept { return _effect->numInputs; }
    std::int32_t Outputs() const noexcept { return _effect->numOutputs; }
    std::int32_t Flags() const noexcept { return _effect->flags; }
    std::int32_t Programs() const noexcept { return _effect->numPrograms; }
    std::int32_t UniqueId() const noexcept { return _effect->uniqueID; }
    std::int32_t Version() const noexcept { return _effect->version; }
    std::int32_t ReportedDelay() const noexcept { return _effect->initialDelay; } ///< may be wrong
    const SStream& Stream() const noexcept { return _stream; }

private:
    std::intptr_t Dispatch(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
        void* pointer = nullptr, float option = 0) const;
    std::string Text(std::int32_t opcode, std::int32_t index) const;

    SStream _stream;
    std::string _file; ///< for messages
    IEffectHost* _host;
    VST::AEffect* _effect = nullptr;
    bool _started = false;
    bool _editorIsOpen = false;
};

} // namespace KAV::Host
