#include "tools/kavhost/effect/effect.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/effect_library.h"

#include <algorithm>
#include <array>

namespace KAV::Host {

namespace {

/// The interface allows 8 to 64 bytes for texts, but some effects write more.
constexpr std::size_t TextCapacity = 1024;

constexpr std::size_t MostChannels = 64;
using SSpeakers = VST::SpeakerArrangement<MostChannels>;

enum ESpeakers : std::int32_t { UserDefined = -2, Mono = 0, Stereo = 1 };
enum ESpeaker : std::int32_t { Undefined = 0x7FFFFFFF, Middle = 0, Left = 1, Right = 2 };

SSpeakers Arrangement(int channels) {
    SSpeakers speakers{};
    speakers.numChannels = channels;
    speakers.type = channels == 1 ? Mono : channels == 2 ? Stereo : UserDefined;
    for (auto& speaker : speakers.speakers) speaker.type = Undefined;
    if (channels == 1) speakers.speakers[0].type = Middle;
    if (channels == 2) {
        speakers.speakers[0].type = Left;
        speakers.speakers[1].type = Right;
    }
    return speakers;
}

std::string Channels(int count) {
    return std::to_string(count) + (count == 1 ? " channel" : " channels");
}

} // namespace

CEffect::CEffect(const CEffectLibrary& library, const SStream& stream, IEffectHost* host)
    : _stream(stream), _file(Utf8(library.File().filename())), _host(host) {
    {
        const CEntryScope entry(_stream);
        _effect = library.Entry()(HostCallback);
    }
    if (_effect == nullptr) throw CFailure(_file + ": not a VST 2 effect: its entry point returned nothing");
    // A record with another mark is not ours to call into, not even to close it.
    if (_effect->magic != VST::kEffectMagic)
        throw CFailure(_file + ": not a VST 2 effect: its record lacks the magic number");
    if (_effect->dispatcher == nullptr || _effect->setParameter == nullptr ||
        _effect->getParameter == nullptr ||
        (_effect->processReplacing == nullptr && _effect->process == nullptr)) {
        throw CFailure(_file + ": not a VST 2 effect: its record lacks a function");
    }
    RememberEffect(_effect, _stream, _host);
    Dispatch(VST::effOpen);
    PrepareAgain();
}

CEffect::~CEffect() {
    CloseEditor();
    Stop();
    Dispatch(VST::effClose); // the record is gone now
    ForgetEffect(_effect);
}

void CEffect::SetChannels(int channels) {
    const int inputs = Inputs();
    const int outputs = Outputs();
    if (channels >= 1 && static_cast<std::size_t>(channels) <= MostChannels) {
        auto in = Arrangement(channels);
        auto out = in;
        Dispatch(VST::effSetSpeakerArrangement, 0, reinterpret_cast<std::intptr_t>(&in), &out);
    }
    // The counts decide, not the answer: an effect of fixed size may refuse the very layout that it has.
    if (Inputs() == channels && Outputs() == channels) return;
    throw CFailure("unsupported channel count: " + _file + " cannot run with " + Channels(channels) +
                   " (it has " + std::to_string(inputs) + " in, " + std::to_string(outputs) + " out)");
}

void CEffect::PrepareAgain() {
    Dispatch(VST::effSetSampleRate, 0, 0, nullptr, static_cast<float>(_stream.rateHz));
    Dispatch(VST::effSetBlockSize, 0, _stream.blockSize);
}

void CEffect::Start() {
    if (_started) return;
    Dispatch(VST::effMainsChanged, 0, 1);
    Dispatch(VST::effStartProcess);
    _started = true;
}

void CEffect::Stop() noexcept {
    if (!_started) return;
    Dispatch(VST::effStopProcess);
    Dispatch(VST::effMainsChanged, 0, 0);
    _started = false;
}

void CEffect::Process(float** inputs, float** outputs, std::int32_t frames) {
    const CProcessScope scope(_effect, _stream, _host);
    const bool replaces = (_effect->flags & VST::effFlagsCanReplacing) != 0 || _effect->process == nullptr;
    if (replaces && _effect->processReplacing != nullptr) {
        _effect->processReplacing(_effect, inputs, outputs, frames);
        return;
    }
    for (std::int32_t c = 0; c < Outputs(); ++c) std::fill_n(outputs[c], frames, 0.0f); // the older call adds
    _effect->process(_effect, inputs, outputs, frames);
}

CEffect::SEditorSize CEffect::EditorSize() {
    VST::ERect* rect = nullptr; // the effect's own
    Dispatch(VST::effEditGetRect, 0, 0, &rect);
    if (rect == nullptr) return {};
    return {rect->right - rect->left, rect->bottom - rect->top};
}

bool CEffect::OpenEditor(std::uintptr_t parent) {
    // What it answers differs between effects, but 0 means that there is no window.
    _editorIsOpen = Dispatch(VST::effEditOpen, 0, 0, reinterpret_cast<void*>(parent)) != 0;
    return _editorIsOpen;
}

void CEffect::CloseEditor() noexcept {
    if (!_editorIsOpen) return;
    _editorIsOpen = false;
    Dispatch(VST::effEditClose);
}

std::string CEffect::Chunk(EChunk kind) const {
    if (!HasChunks()) return {};
    void* bytes = nullptr; // the effect's own, until the next call
    const auto size = Dispatch(VST::effGetChunk, kind == EChunk::Program ? 1 : 0, 0, &bytes);
    if (bytes == nullptr || size <= 0) return {};
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

bool CEffect::SetChunk(std::string bytes, EChunk kind) {
    if (!HasChunks()) return false;
    const auto size = static_cast<std::intptr_t>(bytes.size());
    return Dispatch(VST::effSetChunk, kind == EChunk::Program ? 1 : 0, size, bytes.data()) != 0;
}

std::string CEffect::Name() const {
    for (auto name : {Text(VST::effGetEffectName, 0), Product()}) {
        if (!name.empty()) return name;
    }
    return Utf8(PathOf(_file).stem());
}

std::int32_t CEffect::VstVersion() const {
    return static_cast<std::int32_t>(Dispatch(VST::effGetVstVersion));
}

std::intptr_t CEffect::Dispatch(
    std::int32_t opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) const {
    return _effect->dispatcher(_effect, opcode, index, value, pointer, option);
}

std::string CEffect::Text(std::int32_t opcode, std::int32_t index) const {
    std::array<char, TextCapacity> text{};
    Dispatch(opcode, index, 0, text.data());
    text.back() = '\0';
    return std::string(Trim(text.data()));
}

} // namespace KAV::Host
