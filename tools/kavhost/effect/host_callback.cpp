#include "tools/kavhost/effect/host_callback.h"

#include "utils/product.h"
#include "utils/text.h"

#include <cmath>
#include <map>
#include <mutex>
#include <string_view>

namespace KAV::Host {

namespace {

constexpr std::intptr_t ProcessLevelOffline = 4;
constexpr std::intptr_t LanguageEnglish = 1;
constexpr std::intptr_t VendorVersion = Utils::VersionDigits(KAV_VERSION);

std::mutex mutex; // an effect may call from threads of its own
std::map<const VST::AEffect*, SStream> streams;
thread_local const SStream* entryStream = nullptr;

SStream StreamOf(const VST::AEffect* effect) {
    const std::lock_guard lock(mutex);
    if (const auto known = streams.find(effect); known != streams.end()) return known->second;
    return entryStream != nullptr ? *entryStream : SStream{44100, 512};
}

std::intptr_t Answer(void* buffer, std::string_view text, std::size_t capacity) noexcept {
    if (buffer == nullptr) return 0;
    Utils::CopyText(text, {static_cast<char*>(buffer), capacity});
    return 1;
}

/// What this host does of what an effect may ask for.
bool CanDo(const char* feature) noexcept {
    if (feature == nullptr) return false;
    const std::string_view name(feature);
    return name == "startStopProcess" || name == "acceptIOChanges" || name == "offline";
}

} // namespace

std::intptr_t HostCallback(
    VST::AEffect* effect, std::int32_t opcode, std::int32_t, std::intptr_t, void* pointer, float) {
    switch (opcode) {
    case VST::audioMasterVersion:
        return VST::kVstVersion;
    case VST::audioMasterGetSampleRate:
        return std::lround(StreamOf(effect).rateHz);
    case VST::audioMasterGetBlockSize:
        return StreamOf(effect).blockSize;
    case VST::audioMasterGetCurrentProcessLevel:
        return ProcessLevelOffline;
    case VST::audioMasterGetVendorString:
        return Answer(pointer, KAV_VENDOR, VST::kVstMaxVendorStrLen);
    case VST::audioMasterGetProductString:
        return Answer(pointer, "kavhost", VST::kVstMaxProductStrLen);
    case VST::audioMasterGetVendorVersion:
        return VendorVersion;
    case VST::audioMasterCanDo:
        return CanDo(static_cast<const char*>(pointer)) ? 1 : 0;
    case VST::audioMasterGetLanguage:
        return LanguageEnglish;
    case VST::audioMasterIOChanged:
        return 1; // the counts are read again before they are used
    default:
        return 0; // no automation is recorded, no window is there
    }
}

CEntryScope::CEntryScope(const SStream& stream) noexcept : _outer(entryStream) {
    entryStream = &stream;
}

CEntryScope::~CEntryScope() {
    entryStream = _outer;
}

void RememberEffect(const VST::AEffect* effect, const SStream& stream) {
    const std::lock_guard lock(mutex);
    streams.insert_or_assign(effect, stream);
}

void ForgetEffect(const VST::AEffect* effect) noexcept {
    const std::lock_guard lock(mutex);
    streams.erase(effect);
}

} // namespace KAV::Host
