#include "plugin/vst_dsp_v2.h"

#include "patch/patch_flags.h"
#include "utils/product.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace KAV {

using namespace VST;

namespace {

constexpr std::int32_t FirstBegun = 2; // an index that is kept as begun, so that 0 means none

std::span<char> ParameterText(char* text) noexcept {
    return {text, kVstMaxParamStrLen};
}

/// A copy of the header and of `channels` speakers; the host's record may end right after those.
template<typename TRecord>
TRecord CopyArrangement(const VstSpeakerArrangement& from, std::int32_t channels) noexcept {
    TRecord copy{};
    const std::size_t size =
        offsetof(TRecord, speakers) + static_cast<std::size_t>(channels) * sizeof(VstSpeakerProperties);
    std::memcpy(&copy, &from, size);
    return copy;
}

} // namespace

CVSTDSPv2::CVSTDSPv2(HostCallback audioMaster)
    : AudioEffectX(audioMaster, static_cast<std::int32_t>(HostParamTable().size()), UniqueId,
          Utils::VersionDigits(Utils::ProductVersionUtf8), 2, 2,
          effFlagsCanReplacing | effFlagsProgramChunks),
      _survey(AskHost()) {}

SHostSurvey CVSTDSPv2::AskHost() {
    SHostSurvey survey;
    const auto askText = [this](std::int32_t opcode, std::size_t length) {
        std::array<char, 256> answer{}; // some hosts write more than the interface's 64 bytes
        CallHost(opcode, 0, 0, answer.data());
        const auto end =
            std::find(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(length - 1), '\0');
        return std::string(answer.begin(), end);
    };
    survey.vendor = askText(audioMasterGetVendorString, kVstMaxVendorStrLen);
    survey.product = askText(audioMasterGetProductString, kVstMaxProductStrLen);
    survey.version = FormatVendorVersion(CallHost(audioMasterGetVendorVersion));
    for (const char* const text : HostCanDoTexts()) {
        std::string question(
            text); // a copy, because the interface's pointer isn't const and a host might write to it
        if (CallHost(audioMasterCanDo, 0, 0, question.data()) != 0) survey.canDo.append(text).append(";");
    }
    LogHostSurvey(survey);
    return survey;
}

void CVSTDSPv2::processReplacing(float** inputs, float** outputs, std::int32_t frames) noexcept {
    if (inputs == nullptr || outputs == nullptr || frames <= 0) return;
    const std::int32_t channels = NumInputs() - _sideChannels;
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        if (inputs[channel] == nullptr || outputs[channel] == nullptr) return;
    }
    for (std::int32_t channel = 0; channel < channels; ++channel) {
        // Hosts pass the same buffer for both. Buffers that overlap in another way would be the host's error,
        // but still cause no overrun.
        std::memmove(outputs[channel], inputs[channel], static_cast<std::size_t>(frames) * sizeof(float));
    }
    Process(outputs, _sideChannels > 0 ? inputs + channels : nullptr, channels, frames);
}

void CVSTDSPv2::setParameter(std::int32_t index, float value) {
    if (index < 0 || static_cast<std::size_t>(index) >= HostParamTable().size()) return;
    SetParam(HostParamTable()[static_cast<std::size_t>(index)], value, Normalized | RawBase);
}

float CVSTDSPv2::getParameter(std::int32_t index) {
    return GetHostParameter(index);
}

void CVSTDSPv2::getParameterLabel(std::int32_t index, char* text) {
    GetParamLabel(index, ParameterText(text));
}

void CVSTDSPv2::getParameterDisplay(std::int32_t index, char* text) {
    GetParamDisplay(index, ParameterText(text));
}

void CVSTDSPv2::getParameterName(std::int32_t index, char* text) {
    GetParamName(index, ParameterText(text));
}

void CVSTDSPv2::setProgramName(const char* text) {
    SetProgramName(text);
}

void CVSTDSPv2::getProgramName(char* text) {
    GetProgramName({text, kVstMaxProgNameLen});
}

void CVSTDSPv2::getProgramNameIndexed(std::int32_t index, char* text) {
    GetProgramNameIndexed(index, {text, kVstMaxProgNameLen});
}

void CVSTDSPv2::setSampleRate(float rateHz) {
    AudioEffectX::setSampleRate(rateHz);
    SetSampleRate(rateHz);
    RefreshInitialDelay();
}

void CVSTDSPv2::setBlockSize(std::int32_t frames) {
    AudioEffectX::setBlockSize(frames);
    SetBlockSize(frames);
    RefreshInitialDelay();
}

std::int32_t CVSTDSPv2::getChunk(void** data, bool isPreset) {
    return GetChunk(data, isPreset);
}

std::int32_t CVSTDSPv2::setChunk(const void* data, std::size_t size, bool isPreset) {
    const std::int32_t result = SetChunk(data, size, isPreset);
    RefreshInitialDelay();
    return result;
}

bool CVSTDSPv2::setSpeakerArrangement(
    const VstSpeakerArrangement* input, const VstSpeakerArrangement* output) {
    const std::int32_t channels = input->numChannels;
    if (channels != output->numChannels || channels < 0 || channels > GetMaxChannels()) return false;
    // Both are copied before either is stored: hosts pass back records that they got from here, possibly
    // swapped.
    const auto newInput = CopyArrangement<Arrangement>(*input, channels);
    const auto newOutput = CopyArrangement<Arrangement>(*output, channels);
    _inputArrangement = newInput;
    _outputArrangement = newOutput;
    dspChannels = channels;
    _arrangementsValid = true;
    setNumInputs(channels + _sideChannels);
    setNumOutputs(channels);
    ioChanged();
    return true;
}

bool CVSTDSPv2::getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output) {
    if (!_arrangementsValid) return false;
    // A longer record that begins in the same way; the host reads as many speakers as the header states.
    if (input != nullptr) *input = reinterpret_cast<VstSpeakerArrangement*>(&_inputArrangement);
    if (output != nullptr) *output = reinterpret_cast<VstSpeakerArrangement*>(&_outputArrangement);
    return true;
}

void CVSTDSPv2::getEffectName(char* text) {
    GetEffectName({text, kVstMaxEffectNameLen});
}

void CVSTDSPv2::getVendorString(char* text) {
    GetVendorString({text, kVstMaxVendorStrLen});
}

void CVSTDSPv2::BeginEdit(std::int32_t tag) {
    if (tag < 0 || tag > HighestRelativeTag) return;
    const std::int32_t index = EditedHostIndex(tag);
    _begun[static_cast<std::size_t>(tag)] = index + FirstBegun;
    MarkEditing(index, true);
    if (index != NoHostIndex) state->ReportBegin(index);
}

void CVSTDSPv2::EndEdit(std::int32_t tag) {
    if (tag < 0 || tag > HighestRelativeTag) return;
    // The current group may have changed since: what has begun ends.
    auto& kept = _begun[static_cast<std::size_t>(tag)];
    const std::int32_t begun = kept;
    const std::int32_t index = begun != 0 ? begun - FirstBegun : EditedHostIndex(tag);
    kept = 0;
    MarkEditing(index, false);
    if (index != NoHostIndex) state->ReportEnd(index);
}

std::int32_t CVSTDSPv2::EditedHostIndex(std::int32_t tag) const noexcept {
    const std::int32_t inGroup = HostIndexOf(GetCurrentGroup() * GroupTagStep + tag);
    return inGroup != NoHostIndex ? inGroup : HostIndexOf(tag);
}

void CVSTDSPv2::MarkEditing(std::int32_t hostIndex, bool edited) noexcept {
    editing[static_cast<std::size_t>(hostIndex - NoHostIndex)] = edited;
}

void CVSTDSPv2::SetParameterAutomated(std::int32_t tag, float value) {
    const std::int32_t index = HostIndexOf(tag);
    if (index != NoHostIndex) state->ReportValue(index, value);
}

std::int32_t CVSTDSPv2::GetChunk(void** data, bool isPreset) {
    const std::size_t size = state->WriteChunk(data, isPreset ? 0 : HostChunkFlags);
    return static_cast<std::int32_t>(size);
}

std::int32_t CVSTDSPv2::SetChunk(const void* data, std::size_t size, bool isPreset) {
    return state->ApplyPatchData(data, size, isPreset ? 0 : HostChunkFlags) ? 1 : 0;
}

void CVSTDSPv2::SetProgramName(std::string_view text) {
    state->SetPatchName(Utils::ToUtf16(text));
}

void CVSTDSPv2::GetProgramName(std::span<char> text) {
    Utils::CopyText(Utils::ToUtf8(state->PatchName()), text);
}

void CVSTDSPv2::GetProgramNameIndexed(std::int32_t index, std::span<char> text) {
    Utils::CopyText(Utils::ToUtf8(state->PatchNameAt(index)), text);
}

void CVSTDSPv2::GetEffectName(std::span<char> text) {
    Utils::CopyText(KAV_PRODUCT, text);
}

void CVSTDSPv2::GetVendorString(std::span<char> text) {
    Utils::CopyText(KAV_VENDOR, text);
}

void CVSTDSPv2::GetProductString(std::span<char> text) {
    Utils::CopyText(KAV_PRODUCT, text);
}

void CVSTDSPv2::SetProgram(std::int32_t index, bool force) {
    std::int32_t program = index < 0 ? NumPrograms() - 1 : index;
    if (program >= NumPrograms()) program = 0;
    if (!force && program == curProgram) return;
    curProgram = program;
    state->SelectPatch(program, force);
}

} // namespace KAV
