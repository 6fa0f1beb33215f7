#include "tests/editor/editor_host.h"

#include <chrono>
#include <utility>

namespace KAV::Tests {

using namespace VST;

bool Until(const std::function<bool()>& holds) {
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > guard) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

CEditorHost::CEditorHost(const CLoadedLibrary& library, int idleHz) : _loop(idleHz, [this] { Idle(); }) {
    Run([&] {
        _effect = library.Entry()(Answer);
        if (_effect == nullptr) return;
        _effect->user = this;
        _effect->dispatcher(_effect, effOpen, 0, 0, nullptr, 0.0f);
        _effect->dispatcher(_effect, effSetSampleRate, 0, 0, nullptr, 48000.0f);
        _effect->dispatcher(_effect, effSetBlockSize, 0, 512, nullptr, 0.0f);
        _effect->dispatcher(_effect, effMainsChanged, 0, 1, nullptr, 0.0f);
    });
    EXPECT_NE(_effect, nullptr);
}

CEditorHost::~CEditorHost() {
    if (_effect != nullptr) {
        Run([this] {
            _isOpen = false; // no idle call follows
            _effect->dispatcher(_effect, effClose, 0, 0, nullptr, 0.0f);
        });
    }
}

std::intptr_t CEditorHost::Dispatch(
    EffectOpcode opcode, std::int32_t index, std::intptr_t value, void* pointer, float option) {
    std::intptr_t result = 0;
    Run([&] { result = _effect->dispatcher(_effect, opcode, index, value, pointer, option); });
    return result;
}

bool CEditorHost::Open(std::uintptr_t parent) {
    const bool isOpen = Dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(parent)) == 1;
    _isOpen = isOpen;
    return isOpen;
}

void CEditorHost::Close() {
    _isOpen = false;
    Dispatch(effEditClose);
}

ERect CEditorHost::Rect() {
    ERect* rect = nullptr;
    Dispatch(effEditGetRect, 0, 0, &rect);
    return rect != nullptr ? *rect : ERect{};
}

void CEditorHost::Inside(std::int32_t opcode, std::function<void()> work) {
    const std::scoped_lock lock(_mutex);
    _insideOf = opcode;
    _inside = std::move(work);
}

std::vector<SHostCall> CEditorHost::Calls() const {
    const std::scoped_lock lock(_mutex);
    return _calls;
}

std::vector<SHostCall> CEditorHost::Calls(std::int32_t opcode) const {
    std::vector<SHostCall> calls;
    for (const auto& call : Calls()) {
        if (call.opcode == opcode) calls.push_back(call);
    }
    return calls;
}

std::string CEditorHost::Chunk() {
    void* data = nullptr;
    const auto size = Dispatch(effGetChunk, 0, 0, &data);
    return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                    : std::string();
}

std::int32_t CEditorHost::IndexOf(std::string_view name) {
    for (std::int32_t index = 0; index < _effect->numParams; ++index) {
        char text[256] = {};
        Dispatch(effGetParamName, index, 0, text);
        if (name.starts_with(text) && text[0] != 0) return index;
    }
    ADD_FAILURE() << "no parameter " << name;
    return 0;
}

std::intptr_t CEditorHost::Answer(
    AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value, void*, float option) {
    if (opcode == audioMasterVersion) return kVstVersion;
    auto* const host = effect != nullptr ? static_cast<CEditorHost*>(effect->user) : nullptr;
    return host != nullptr ? host->Note(opcode, index, value, option) : 0;
}

std::intptr_t CEditorHost::Note(std::int32_t opcode, std::int32_t index, std::intptr_t value, float option) {
    std::function<void()> inside;
    {
        const std::scoped_lock lock(_mutex);
        _calls.push_back({opcode, index, value, option, std::this_thread::get_id()});
        if (opcode == _insideOf) {
            inside = std::exchange(_inside, nullptr);
            _insideOf = -1;
        }
    }
    if (inside) inside();
    return opcode == audioMasterSizeWindow && _acceptsSizes ? 1 : 0;
}

void CEditorHost::Idle() {
    if (!_isOpen) return;
    const auto idle = [this] { _effect->dispatcher(_effect, effEditIdle, 0, 0, nullptr, 0.0f); };
    if (_idlesElsewhere) {
        std::thread(idle).join();
    } else {
        idle();
    }
    ++_idles;
}

} // namespace KAV::Tests
