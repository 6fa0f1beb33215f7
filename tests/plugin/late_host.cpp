// A host that closes its instances in an exit handler, after the static objects of its libraries have been
// destroyed. It exits with 0 if its own files contain what it has written.

#include "platform/library.h"
#include "vst/vst2.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

using namespace KAV;

namespace {

VST::AEffect* effect = nullptr;
std::string* folder = nullptr; // for the temporary files; outlives every static object

std::intptr_t Answer(VST::AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) {
    return opcode == VST::audioMasterVersion ? VST::kVstVersion : 0;
}

constexpr std::size_t Files = 16; // they get every number that has become free
constexpr const char* Own = "the host's own\n";

bool HoldsItsOwn(int file) {
    std::array<char, 4096> text{};
    const auto size = pread(file, text.data(), text.size(), 0);
    const std::string held(text.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    if (held == Own) return true;
    std::fprintf(stderr, "a file of the host's holds: %s\n", held.c_str());
    return false;
}

void CloseLate() {
    std::array<int, Files> files{};
    const std::string own = Own;
    for (std::size_t i = 0; i < Files; ++i) {
        files[i] = open((*folder + "/own" + std::to_string(i)).c_str(), O_RDWR | O_CREAT | O_APPEND, 0600);
        if (write(files[i], own.data(), own.size()) != static_cast<ssize_t>(own.size())) _exit(3);
    }
    effect->dispatcher(effect, VST::effClose, 0, 0, nullptr, 0.0f);
    for (const int file : files) {
        if (!HoldsItsOwn(file)) _exit(1);
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) return 2;
    folder = new std::string(arguments[2]);
    std::atexit(CloseLate); // registered before anything of the library, so it runs after all of it
    std::string reason;
    void* const library = Platform::OpenLibrary(arguments[1], reason);
    if (library == nullptr) return 2;
    const auto entry = reinterpret_cast<VST::PluginEntry>(Platform::FindSymbol(library, "VSTPluginMain"));
    effect = entry(Answer);
    return effect != nullptr ? 0 : 2;
}
