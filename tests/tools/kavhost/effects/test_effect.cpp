#include "tests/tools/kavhost/effects/test_effect.h"

#include "utils/text.h"

namespace KAV::Tests {

using namespace VST;

namespace {

std::intptr_t Give(void* buffer, const std::string& text, std::size_t capacity) {
    Utils::CopyText(text, {static_cast<char*>(buffer), capacity});
    return 1;
}

} // namespace

CTestEffect::CTestEffect(HostCallback host, std::int32_t uniqueId, std::int32_t parameters) : _host(host) {
    _record.magic = kEffectMagic;
    _record.dispatcher = [](AEffect* record, std::int32_t opcode, std::int32_t index, std::intptr_t value,
                             void* pointer, float option) -> std::intptr_t {
        if (opcode == effClose) {
            delete &Of(record);
            return 1;
        }
        return Of(record).Dispatch(opcode, index, value, pointer, option);
    };
    _record.setParameter = [](AEffect* record, std::int32_t index, float value) {
        Of(record).SetParameter(index, value);
    };
    _record.getParameter = [](AEffect* record, std::int32_t index) { return Of(record).Parameter(index); };
    _record.processReplacing = [](AEffect* record, float** inputs, float** outputs, std::int32_t frames) {
        Of(record).Process(inputs, outputs, frames);
    };
    _record.numParams = parameters;
    _record.numInputs = 2;
    _record.numOutputs = 2;
    _record.flags = effFlagsCanReplacing;
    _record.object = this;
    _record.uniqueID = uniqueId;
    _record.version = 7;
}

std::intptr_t CTestEffect::Dispatch(
    std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
    switch (opcode) {
    case effGetParamName:
        return Give(pointer, ParameterName(index), kVstMaxParamStrLen);
    case effGetParamDisplay:
        return Give(pointer, ParameterDisplay(index), kVstMaxParamStrLen);
    case effGetParamLabel:
        return Give(pointer, ParameterLabel(index), kVstMaxParamStrLen);
    case effGetEffectName:
        return Give(pointer, Name(), kVstMaxEffectNameLen);
    case effGetVendorString:
        return Give(pointer, "Tests", kVstMaxVendorStrLen);
    case effGetProductString:
        return Give(pointer, Name(), kVstMaxProductStrLen);
    case effGetVstVersion:
        return kVstVersion;
    case effSetSampleRate:
        SetRate(static_cast<double>(option));
        return 0;
    case effMainsChanged:
        if (value != 0) Activate();
        return 0;
    case effSetSpeakerArrangement: {
        const auto* in = reinterpret_cast<const VstSpeakerArrangement*>(value);
        const auto* out = static_cast<const VstSpeakerArrangement*>(pointer);
        if (in->numChannels != out->numChannels || !TakesChannels(in->numChannels)) return 0;
        _record.numInputs = _record.numOutputs = in->numChannels;
        return 1;
    }
    default:
        return Answer(opcode, index, value, pointer);
    }
}

} // namespace KAV::Tests
