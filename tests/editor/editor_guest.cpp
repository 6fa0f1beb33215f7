// A host in a process of its own that opens an editor in another process's window, and then:
//   exit     ends while the editor draws, after SIGTERM
//   dlclose  the same, but unloads the library first
//   glance   ends after fifty idle calls
//   memory   closes the editor after SIGTERM, and prints what memory the open and the closed one have taken
// It returns 0, or 3 if the editor didn't open.

#include "tests/support/process_memory.h"
#include "vst/vst2.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string_view>
#include <thread>

namespace {

using namespace KAV::VST;

std::intptr_t Answer(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

volatile std::sig_atomic_t isToEnd = 0;

AEffect* effect = nullptr; // still in use when the process ends

/// Turns a parameter to and fro, so that every frame has something to draw.
void Idle(int call) {
    effect->setParameter(effect, 0, static_cast<float>(call % 20) / 20.0f);
    effect->dispatcher(effect, effEditIdle, 0, 0, nullptr, 0.0f);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

/// Bytes of this process, and those that no other one can share.
struct SMemory {
    std::size_t resident = KAV::Tests::ResidentBytes();
    std::size_t anonymous = KAV::Tests::AnonymousBytes();
};

void Print(const SMemory& before, const SMemory& after) {
    std::printf("%zd %zd\n", static_cast<ssize_t>(after.resident - before.resident),
        static_cast<ssize_t>(after.anonymous - before.anonymous));
}

} // namespace

int main(int count, char** arguments) {
    constexpr int couldNotLoad = 2;
    constexpr int didNotOpen = 3;
    std::signal(SIGTERM, [](int) { isToEnd = 1; });
    if (count != 4) return couldNotLoad;
    const auto parent = std::strtoull(arguments[2], nullptr, 10);
    const std::string_view mode = arguments[3];
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return couldNotLoad;
    const auto entry = reinterpret_cast<PluginEntry>(dlsym(library, "VSTPluginMain"));
    effect = entry != nullptr ? entry(Answer) : nullptr;
    if (effect == nullptr) return couldNotLoad;
    effect->dispatcher(effect, effOpen, 0, 0, nullptr, 0.0f);
    const SMemory before;
    auto* const window = reinterpret_cast<void*>(static_cast<std::uintptr_t>(parent));
    if (effect->dispatcher(effect, effEditOpen, 0, 0, window, 0.0f) != 1) return didNotOpen;
    for (int call = 0; isToEnd == 0 && (mode != "glance" || call < 50); ++call) Idle(call);
    if (mode == "memory") {
        Print(before, {});
        effect->dispatcher(effect, effEditClose, 0, 0, nullptr, 0.0f);
        Print(before, {});
    }
    if (mode == "dlclose") dlclose(library);
    std::exit(0);
}
