#include "tools/kavhost/play/sdl_library.h"

#include "platform/dl/symbol.h"

#include <dlfcn.h>
#include <optional>

namespace KAV::Host {

namespace {

void Ignore(const char*, int, const char*, int, const char*, ...) {}

/// ALSA, if the library uses it, writes what it doesn't find to the terminal: with us, that there is no
/// device is one line.
void SilenceAlsa() noexcept {
    using Handler =
        void (*)(const char* file, int line, const char* function, int error, const char* text, ...);
    void* const alsa = dlopen("libasound.so.2", RTLD_NOW | RTLD_LOCAL);
    int (*setHandler)(Handler) = nullptr;
    if (alsa == nullptr || !Platform::FindSymbol(alsa, "snd_lib_error_set_handler", setHandler)) return;
    setHandler(Ignore);
}

std::optional<SSdl> Load() noexcept {
    using Platform::FindSymbol;
    void* const library = dlopen("libSDL2-2.0.so.0", RTLD_NOW | RTLD_LOCAL);
    SSdl sdl{};
    if (library == nullptr || !FindSymbol(library, "SDL_InitSubSystem", sdl.initSubSystem) ||
        !FindSymbol(library, "SDL_QuitSubSystem", sdl.quitSubSystem) ||
        !FindSymbol(library, "SDL_SetHint", sdl.setHint) ||
        !FindSymbol(library, "SDL_GetError", sdl.getError) ||
        !FindSymbol(library, "SDL_OpenAudioDevice", sdl.openAudioDevice) ||
        !FindSymbol(library, "SDL_PauseAudioDevice", sdl.pauseAudioDevice) ||
        !FindSymbol(library, "SDL_CloseAudioDevice", sdl.closeAudioDevice))
        return std::nullopt;
    SilenceAlsa();
    return sdl;
}

} // namespace

const SSdl* Sdl() {
    static const std::optional<SSdl> sdl = Load();
    return sdl ? &*sdl : nullptr;
}

} // namespace KAV::Host
