#pragma once

#include <SDL2/SDL_audio.h>
#include <SDL2/SDL_error.h>
#include <SDL2/SDL_hints.h>
#include <SDL2/SDL_stdinc.h>

/// The library that finds the desktop's audio device, loaded when it is first needed, so that kavhost works
/// where it is missing. Any thread.
namespace KAV::Host {

/// The library's functions.
struct SSdl {
    int (*initSubSystem)(Uint32 flags);
    void (*quitSubSystem)(Uint32 flags);
    decltype(&SDL_SetHint) setHint;
    decltype(&SDL_GetError) getError;
    decltype(&SDL_OpenAudioDevice) openAudioDevice;
    decltype(&SDL_PauseAudioDevice) pauseAudioDevice;
    decltype(&SDL_CloseAudioDevice) closeAudioDevice;
};

inline constexpr Uint32 SdlAudio = 0x10; ///< the library's audio, for initSubSystem()

/// The functions, for the life of the process; null if the library is missing or incomplete.
const SSdl* Sdl();

} // namespace KAV::Host
