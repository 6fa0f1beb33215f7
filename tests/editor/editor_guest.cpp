// A host in a process of its own that opens an editor in another process's window, and then:
//   exit     ends while the editor draws, after SIGTERM
//   dlclose  the same, but unloads the library first
//   glance   ends after fifty idle calls
//   memory   closes the editor after SIGTERM, and prints what memory the open and the closed one have taken
//   use      leaves the parameters to the user, and closes all after SIGTERM; its output shows, at any time,
//   the number of
//            edits that have ended and the state, up to a zero
// It returns 0, or 3 if the editor didn't open. If KAV_GUEST_USER is set, it gives up its rights first and
// becomes the user of that number.

#include "tests/support/process_memory.h"
#include "vst/vst2.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <grp.h>
#include <optional>
#include <string_view>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace KAV::VST;

std::atomic<int> endedEdits = 0;

std::intptr_t Answer(AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    if (opcode == audioMasterEndEdit) ++endedEdits;
    return opcode == audioMasterVersion ? kVstVersion : 0;
}

volatile std::sig_atomic_t isToEnd = 0;

AEffect* effect = nullptr; // still in use when the process ends

/// The output, which shows the edits and the state of this moment. It is mapped, because the test may forbid
/// this process to write files.
class CShownState final {
public:
    CShownState() {
        if (ftruncate(STDOUT_FILENO, Size) != 0) return;
        void* const map = mmap(nullptr, Size, PROT_READ | PROT_WRITE, MAP_SHARED, STDOUT_FILENO, 0);
        if (map != MAP_FAILED) _text = static_cast<char*>(map);
    }
    void Renew() {
        void* chunk = nullptr;
        effect->dispatcher(effect, effGetChunk, 0, 0, &chunk, 0.0f);
        if (_text == nullptr || chunk == nullptr) std::abort();
        std::snprintf(_text, Size, "%d\n%s", endedEdits.load(), static_cast<const char*>(chunk));
    }

private:
    static constexpr std::size_t Size = 1 << 16;

    char* _text = nullptr;
};

/// What this user may not do, root may.
bool BecomeUser(const char* number) {
    if (number == nullptr || getuid() != 0) return true;
    const auto user = static_cast<uid_t>(std::strtoul(number, nullptr, 10));
    return setgroups(0, nullptr) == 0 && setgid(user) == 0 && setuid(user) == 0;
}

/// Turns a parameter to and fro, so that every frame has something to draw, unless the user does that.
void Idle(int call, CShownState* state) {
    if (state == nullptr) effect->setParameter(effect, 0, static_cast<float>(call % 20) / 20.0f);
    effect->dispatcher(effect, effEditIdle, 0, 0, nullptr, 0.0f);
    if (state != nullptr && call % 4 == 0) state->Renew();
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
    std::signal(SIGXFSZ, SIG_IGN); // where the disk is to be full, writing fails and nothing more
    if (count != 4 || !BecomeUser(std::getenv("KAV_GUEST_USER"))) return couldNotLoad;
    const auto parent = std::strtoull(arguments[2], nullptr, 10);
    const std::string_view mode = arguments[3];
    void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return couldNotLoad;
    const auto entry = reinterpret_cast<PluginEntry>(dlsym(library, "VSTPluginMain"));
    effect = entry != nullptr ? entry(Answer) : nullptr;
    if (effect == nullptr) return couldNotLoad;
    effect->dispatcher(effect, effOpen, 0, 0, nullptr, 0.0f);
    const SMemory before;
    std::optional<CShownState> state;
    if (mode == "use") state.emplace();
    auto* const window = reinterpret_cast<void*>(static_cast<std::uintptr_t>(parent));
    if (effect->dispatcher(effect, effEditOpen, 0, 0, window, 0.0f) != 1) return didNotOpen;
    for (int call = 0; isToEnd == 0 && (mode != "glance" || call < 50); ++call)
        Idle(call, state ? &*state : nullptr);
    if (mode == "memory") {
        Print(before, {});
        effect->dispatcher(effect, effEditClose, 0, 0, nullptr, 0.0f);
        Print(before, {});
    }
    if (mode == "use") effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    if (mode == "dlclose") dlclose(library);
    std::exit(0);
}
