#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

/// Queries of the X11 display. If a display has stopped responding, the library waits for it for ever, in
/// calls that can't be interrupted. So each query runs on its own thread, which is abandoned if the display
/// takes too long. Only for the Linux part of this folder.
namespace KAV::Platform {

inline constexpr std::chrono::milliseconds LongestDisplayWait{3000};

/// Runs `work` on its own thread, with the name of the display from DISPLAY. True if it has ended within
/// `limit`. Otherwise it keeps running and may outlive its caller, so it must own everything that it
/// touches; until it ends, no further work is begun for that display. False at once if there is no display on
/// this machine (a remote one could block for minutes) or no client library. Any thread. Throws
/// std::bad_alloc, or std::system_error if the thread can't be created.
bool RunOnDisplayThread(std::function<void(const std::string& display)> work,
    std::chrono::milliseconds limit = LongestDisplayWait);
/// The same with the name of the display (null: there is none), for a thread that must not read the
/// environment.
bool RunOnDisplayThread(const char* display, std::function<void(const std::string& display)> work,
    std::chrono::milliseconds limit = LongestDisplayWait);

/// The result of a query that runs as above; nothing if there is none in time or it has thrown.
template<typename TAnswer>
std::optional<TAnswer> AskDisplay(std::function<TAnswer(const std::string& display)> question,
    std::chrono::milliseconds limit = LongestDisplayWait) {
    const auto answer = std::make_shared<std::optional<TAnswer>>();
    const bool ended =
        RunOnDisplayThread([answer, question = std::move(question)](
                               const std::string& display) { answer->emplace(question(display)); },
            limit);
    return ended ? std::move(*answer) : std::nullopt;
}

} // namespace KAV::Platform
