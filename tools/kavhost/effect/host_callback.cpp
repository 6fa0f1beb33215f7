#include "tools/kavhost/effect/host_callback.h"

#include "utils/product.h"
#include "utils/text.h"

#include <cmath>
#include <map>
#include <mutex>
#include <string_view>

namespace KAV::Host {

namespace {

constexpr std::intptr_t ProcessLevelUser = 1;
constexpr std::intptr_t ProcessLevelRealtime = 2;
constexpr std::intptr_t ProcessLevelOffline = 4;
constexpr std::intptr_t LanguageEnglish = 1;

/// What is known of an effect.
struct SKnown {
    SStream stream{44100, 512};
    IEffectHost* host = nullptr;
};

std::mutex mutex; // an effect may call from threads of its own
std::map<const VST::AEffect*, SKnown> effects;
thread_local const SStream* entryStream = nullptr;
thread_local const VST::AEffect* processed = nullptr; // what this thread is processing with
thread_local SKnown processedKnown;

SKnown KnownOf(const VST::AEffect* effect) {
    if (effect != nullptr && effect == processed) return processedKnown;
    const std::lock_guard lock(mutex);
    if (const auto known = effects.find(effect); known != effects.end()) return known->second;
    return {entryStream != nullptr ? *entryStream : SStream{44100, 512}, nullptr};
}

std::intptr_t Answer(void* buffer, std::string_view text, std::size_t capacity) noexcept {
    if (buffer == nullptr) return 0;
    Utils::CopyText(text, {static_cast<char*>(buffer), capacity});
    return 1;
}

/// What this host does of what an effect may ask for.
bool CanDo(const char* feature, bool hasWindow) noexcept {
    if (feature == nullptr) return false;
    const std::string_view name(feature);
    if (name == "startStopProcess" || name == "acceptIOChanges") return true;
    if (hasWindow) return name == "sizeWindow" || name == "supplyIdle" || name == "sendVstTimeInfo";
    return name == "offline";
}

std::intptr_t ProcessLevel(const VST::AEffect* effect, bool hasWindow) noexcept {
    if (!hasWindow) return ProcessLevelOffline;
    return effect == processed ? ProcessLevelRealtime : ProcessLevelUser;
}

/// What only a host with a window and a transport does.
std::intptr_t AnswerOf(
    IEffectHost& host, std::int32_t opcode, std::int32_t index, std::intptr_t value) noexcept {
    switch (opcode) {
    case VST::audioMasterGetTime:
        return reinterpret_cast<std::intptr_t>(host.Time());
    case VST::audioMasterSizeWindow:
        return host.ResizeEditor(index, static_cast<std::int32_t>(value)) ? 1 : 0;
    case VST::audioMasterIOChanged:
        host.NoteIoChange();
        return 1;
    case VST::audioMasterAutomate: // nothing is recorded, and nothing shows the values but the editor
    case VST::audioMasterBeginEdit:
    case VST::audioMasterEndEdit:
    case VST::audioMasterUpdateDisplay:
        return 1;
    default:
        return 0;
    }
}

} // namespace

std::intptr_t HostCallback(VST::AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value,
    void* pointer, float) {
    const auto known = KnownOf(effect);
    switch (opcode) {
    case VST::audioMasterVersion:
        return VST::kVstVersion;
    case VST::audioMasterGetSampleRate:
        return std::lround(known.stream.rateHz);
    case VST::audioMasterGetBlockSize:
        return known.stream.blockSize;
    case VST::audioMasterGetCurrentProcessLevel:
        return ProcessLevel(effect, known.host != nullptr);
    case VST::audioMasterGetVendorString:
        return Answer(pointer, KAV_VENDOR, VST::kVstMaxVendorStrLen);
    case VST::audioMasterGetProductString:
        return Answer(pointer, "kavhost", VST::kVstMaxProductStrLen);
    case VST::audioMasterGetVendorVersion:
        return Utils::VersionDigits(Utils::ProductVersionUtf8);
    case VST::audioMasterCanDo:
        return CanDo(static_cast<const char*>(pointer), known.host != nullptr) ? 1 : 0;
    case VST::audioMasterGetLanguage:
        return LanguageEnglish;
    default:
        if (known.host != nullptr) return AnswerOf(*known.host, opcode, index, value);
        return opcode == VST::audioMasterIOChanged ? 1 : 0; // counts and delay are read before they are used
    }
}

CEntryScope::CEntryScope(const SStream& stream) noexcept : _outer(entryStream) {
    entryStream = &stream;
}

CEntryScope::~CEntryScope() {
    entryStream = _outer;
}

CProcessScope::CProcessScope(const VST::AEffect* effect, const SStream& stream, IEffectHost* host) noexcept {
    processedKnown = {stream, host};
    processed = effect;
}

CProcessScope::~CProcessScope() {
    processed = nullptr;
}

void RememberEffect(const VST::AEffect* effect, const SStream& stream, IEffectHost* host) {
    const std::lock_guard lock(mutex);
    effects.insert_or_assign(effect, SKnown{stream, host});
}

void ForgetEffect(const VST::AEffect* effect) noexcept {
    const std::lock_guard lock(mutex);
    effects.erase(effect);
}

} // namespace KAV::Host
