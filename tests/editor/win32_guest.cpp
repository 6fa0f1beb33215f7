// A host in a process of its own: it is aware of the display's density or not, and returns the width of an
// editor that it hasn't opened.

#include "platform/winapi/windows_header.h"
#include "vst/vst2.h"

#include <string_view>

using namespace KAV::VST;

int main(int argc, char** argv) {
    if (argc > 1 && std::string_view(argv[1]) == "aware") SetProcessDPIAware();
    const HMODULE library = LoadLibraryA(KAV_PLUGIN_PATH);
    if (library == nullptr) return 1;
    const auto entry =
        reinterpret_cast<PluginEntry>(reinterpret_cast<void*>(GetProcAddress(library, "VSTPluginMain")));
    auto* const effect =
        entry([](AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float) -> std::intptr_t {
            return opcode == audioMasterVersion ? kVstVersion : 0;
        });
    if (effect == nullptr) return 2;
    ERect* rect = nullptr;
    effect->dispatcher(effect, effEditGetRect, 0, 0, &rect, 0.0f);
    const int width = rect != nullptr ? rect->right - rect->left : 3;
    effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    return width;
}
