#include "vst/audio_effect_x.h"

#include <utility>

namespace KAV {

using namespace VST;

namespace {

/// The index is the character, the value the key, and the option the modifiers, although it isn't an integer.
VstKeyCode KeyCode(std::int32_t index, std::intptr_t value, float option) noexcept {
    return {index, static_cast<std::uint8_t>(value),
        option >= 0.0f && option <= 255.0f ? static_cast<std::uint8_t>(option) : std::uint8_t{0}};
}

} // namespace

AudioEffectX::AudioEffectX(HostCallback audioMaster, std::int32_t parameters, std::int32_t uniqueId,
    std::int32_t version, std::int32_t inputs, std::int32_t outputs, std::int32_t flags) noexcept
    : _audioMaster(audioMaster) {
    _record.magic = kEffectMagic;
    _record.dispatcher = DispatcherThunk;
    _record.process = ProcessThunk;
    _record.setParameter = SetParameterThunk;
    _record.getParameter = GetParameterThunk;
    _record.numParams = parameters;
    _record.numInputs = inputs;
    _record.numOutputs = outputs;
    _record.flags = flags;
    _record.ioRatio = 1.0f;
    _record.object = this;
    _record.uniqueID = uniqueId;
    _record.version = version;
    _record.processReplacing = ProcessReplacingThunk;
    _record.processDoubleReplacing = ProcessDoubleReplacingThunk;
}

AudioEffectX::~AudioEffectX() = default;

void AudioEffectX::setEditor(std::unique_ptr<AEffEditor> editor) noexcept {
    _editor = std::move(editor);
    const bool hasWindow = _editor != nullptr && _editor->hasWindow();
    _record.flags = hasWindow ? _record.flags | effFlagsHasEditor : _record.flags & ~effFlagsHasEditor;
}

void AudioEffectX::setSampleRate(float rateHz) {
    sampleRate = rateHz;
}

void AudioEffectX::setBlockSize(std::int32_t frames) {
    blockSize = frames;
}

std::intptr_t AudioEffectX::CallHost(
    std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) noexcept {
    return _audioMaster == nullptr ? 0 : _audioMaster(&_record, opcode, index, value, pointer, option);
}

void AudioEffectX::setParameterAutomated(std::int32_t index, float value) noexcept {
    CallHost(audioMasterAutomate, index, 0, nullptr, value);
}

void AudioEffectX::beginEdit(std::int32_t index) noexcept {
    CallHost(audioMasterBeginEdit, index);
}

void AudioEffectX::endEdit(std::int32_t index) noexcept {
    CallHost(audioMasterEndEdit, index);
}

void AudioEffectX::ioChanged() noexcept {
    CallHost(audioMasterIOChanged);
}

bool AudioEffectX::sizeWindow(std::int32_t width, std::int32_t height) noexcept {
    return CallHost(audioMasterSizeWindow, width, height) != 0;
}

std::intptr_t AudioEffectX::dispatcher(
    std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
    auto* const text = static_cast<char*>(pointer);
    switch (opcode) {
    case effGetProgram:
        return getProgram();
    case effSetProgramName:
        if (text != nullptr) setProgramName(text);
        return 0;
    case effGetProgramName:
        if (text != nullptr) getProgramName(text);
        return 0;
    case effGetParamLabel:
        if (text != nullptr) getParameterLabel(index, text);
        return 0;
    case effGetParamDisplay:
        if (text != nullptr) getParameterDisplay(index, text);
        return 0;
    case effGetParamName:
        if (text != nullptr) getParameterName(index, text);
        return 0;
    case effSetSampleRate:
        setSampleRate(option);
        return 0;
    case effSetBlockSize:
        // The interface passes a count as 64 bits, although it never needs them: a number that is too large
        // is clamped, not wrapped.
        setBlockSize(value > INT32_MAX ? INT32_MAX : value < 0 ? 0 : static_cast<std::int32_t>(value));
        return 0;
    case effEditGetRect:
        return _editor != nullptr && pointer != nullptr && _editor->getRect(static_cast<ERect**>(pointer))
                   ? 1
                   : 0;
    case effEditOpen:
        return _editor != nullptr && pointer != nullptr && _editor->open(pointer) ? 1 : 0;
    case effEditClose:
        if (_editor != nullptr) _editor->close();
        return 0;
    case effEditIdle:
        if (_editor != nullptr) _editor->idle();
        return 0;
    case effEditKeyDown:
        return _editor != nullptr && _editor->onKeyDown(KeyCode(index, value, option)) ? 1 : 0;
    case effEditKeyUp:
        return _editor != nullptr && _editor->onKeyUp(KeyCode(index, value, option)) ? 1 : 0;
    case effSetEditKnobMode:
        return _editor != nullptr && _editor->setKnobMode(static_cast<std::int32_t>(value)) ? 1 : 0;
    case effGetChunk:
        return pointer == nullptr ? 0 : getChunk(static_cast<void**>(pointer), index != 0);
    case effSetChunk:
        return pointer == nullptr || value <= 0
                   ? 0
                   : setChunk(pointer, static_cast<std::size_t>(value), index != 0);
    case effCanBeAutomated:
        return 1;
    case effGetProgramNameIndexed:
        if (text != nullptr) getProgramNameIndexed(index, text);
        return 1;
    case effGetPlugCategory:
        return getPlugCategory();
    case effSetSpeakerArrangement: {
        // The input record arrives as a number, because the interface has only one pointer per call.
        const auto* input = reinterpret_cast<const VstSpeakerArrangement*>(value);
        if (input == nullptr || pointer == nullptr) return 0;
        return setSpeakerArrangement(input, static_cast<const VstSpeakerArrangement*>(pointer)) ? 1 : 0;
    }
    case effGetSpeakerArrangement:
        return getSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement**>(value),
                   static_cast<VstSpeakerArrangement**>(pointer))
                   ? 1
                   : 0;
    case effGetEffectName:
    case effGetProductString:
        if (text != nullptr) getEffectName(text);
        return 1;
    case effGetVendorString:
        if (text != nullptr) getVendorString(text);
        return 1;
    case effGetVstVersion:
        return kVstVersion;
    case effGetCurrentMidiProgram:
        return -1;
    case effSetTotalSampleToProcess:
        return value;

    // These calls are known, and answered with 0: opening, closing, mains, start and stop change no state;
    // there are no programs in the host's sense, no MIDI, no offline processing and no soft bypass, and no
    // canDo text is confirmed.
    default:
        return 0;
    }
}

AudioEffectX* AudioEffectX::Of(AEffect* record) noexcept {
    return record == nullptr ? nullptr : static_cast<AudioEffectX*>(record->object);
}

std::intptr_t AudioEffectX::DispatcherThunk(AEffect* record, std::int32_t opcode, std::int32_t index,
    std::intptr_t value, void* pointer, float option) noexcept {
    AudioEffectX* const effect = Of(record);
    if (effect == nullptr) return 0;
    std::intptr_t result = 0;
    try {
        result = effect->dispatcher(opcode, index, value, pointer, option);
    } catch (...) { // the host's side of this call can't handle exceptions
        result = 0;
    }
    if (opcode == effClose) {
        delete effect;
        return 1;
    }
    return result;
}

/// The accumulating entry is obsolete; a host that calls it gets its buffers back unchanged.
void AudioEffectX::ProcessThunk(AEffect*, float**, float**, std::int32_t) noexcept {}

void AudioEffectX::ProcessReplacingThunk(
    AEffect* record, float** inputs, float** outputs, std::int32_t frames) noexcept {
    AudioEffectX* const effect = Of(record);
    if (effect != nullptr) effect->processReplacing(inputs, outputs, frames);
}

void AudioEffectX::ProcessDoubleReplacingThunk(AEffect*, double**, double**, std::int32_t) noexcept {}

void AudioEffectX::SetParameterThunk(AEffect* record, std::int32_t index, float value) noexcept {
    AudioEffectX* const effect = Of(record);
    if (effect == nullptr) return;
    try {
        effect->setParameter(index, value);
    } catch (...) { // as in the dispatcher
        return;
    }
}

float AudioEffectX::GetParameterThunk(AEffect* record, std::int32_t index) noexcept {
    AudioEffectX* const effect = Of(record);
    if (effect == nullptr) return 0.0f;
    try {
        return effect->getParameter(index);
    } catch (...) { // as in the dispatcher
        return 0.0f;
    }
}

} // namespace KAV
