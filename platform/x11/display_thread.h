#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

/// Questions to the X11 display. A display that has stopped answers nothing, and the library waits for it for
/// ever, in calls that nothing can interrupt. So each question runs on a thread of its own, which is left to
/// itself when the display takes too long. For the Linux part of this folder alone.
namespace KAV::Platform {

/// Runs `work` on a thread of its own, with the name of the display that DISPLAY names. True when it has
/// ended within three seconds. Otherwise it goes on alone and may outlive its caller, so it has to own all
/// that it touches; until it ends, no further work is begun for that display. False at once when there is no
/// display on this machine (one elsewhere could let us wait for minutes) or no client library. Any thread.
/// Throws std::bad_alloc, or std::system_error when there is no thread.
bool RunOnDisplayThread(std::function<void(const std::string& display)> work);

/// The answer to a question that runs as above; nothing when there is none in time, or it has thrown.
template<typename TAnswer>
std::optional<TAnswer> AskDisplay(std::function<TAnswer(const std::string& display)> question) {
    const auto answer = std::make_shared<std::optional<TAnswer>>();
    const bool ended =
        RunOnDisplayThread([answer, question = std::move(question)](
                               const std::string& display) { answer->emplace(question(display)); });
    return ended ? std::move(*answer) : std::nullopt;
}

} // namespace KAV::Platform
