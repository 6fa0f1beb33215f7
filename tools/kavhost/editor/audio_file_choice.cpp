#include "tools/kavhost/editor/audio_file_choice.h"

#include "platform/file_dialog.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/effect/blocks.h"
#include "tools/kavhost/screen/users_display.h"

#include <chrono>
#include <future>
#include <memory>

namespace KAV::Host {

namespace {

constexpr auto LookInterval = std::chrono::milliseconds(50); ///< how often an interruption is looked for

Platform::SFileRequest Request() {
    Platform::SFileRequest request;
    request.title = "Choose an audio file";
    request.filters = {
        {"Audio files", {"*.wav", "*.flac", "*.aif", "*.aiff", "*.ogg", "*.oga", "*.opus", "*.mp3"}},
        {"All files", {"*"}}};
    return request;
}

[[noreturn]] void RefuseWithout(const std::string& missing) {
    throw CUsageError("edit: name an audio file; there is " + missing + " to choose one in");
}

} // namespace

std::filesystem::path ChooseAudioFile() {
    try {
        PrepareUsersDisplay();
    } catch (const CFailure&) {
        RefuseWithout("no display");
    }
    const auto answered = std::make_shared<std::promise<Platform::SFileAnswer>>(); // outlives an interruption
    auto coming = answered->get_future();
    const Platform::CFileDialog dialog(
        Request(), [answered](const auto& answer) { answered->set_value(answer); });
    while (coming.wait_for(LookInterval) != std::future_status::ready) CheckInterrupt();
    const auto answer = coming.get();
    switch (answer.kind) {
    case Platform::EFileAnswer::Chosen:
        return PathOf(answer.path);
    case Platform::EFileAnswer::Unusable:
        throw CFailure("the name of the chosen file can't be used");
    case Platform::EFileAnswer::NotAsked:
        RefuseWithout("no dialog for files");
    case Platform::EFileAnswer::Cancelled:
        break;
    }
    return {};
}

} // namespace KAV::Host
