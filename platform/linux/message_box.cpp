#include "platform/message_box.h"

#include "platform/xdg/detached_program.h"

#include <utility>
#include <vector>

namespace KAV::Platform {

namespace {

bool HasDisplay(const CEnvironment& environment) noexcept {
    const auto isSet = [&environment](const char* name) {
        const char* const value = environment.Value(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

} // namespace

bool ShowErrorBox(const std::string& title, const std::string& text) noexcept {
    try {
        CEnvironment environment;
        if (!HasDisplay(environment)) return false;
        // The first program that is installed: for GNOME and its relatives, for KDE, for any X server.
        if (const auto box = FindProgram("zenity", environment); !box.empty())
            return StartDetached(box, {"--error", "--no-markup", "--title=" + title, "--text=" + text},
                std::move(environment));
        if (const auto box = FindProgram("kdialog", environment); !box.empty())
            return StartDetached(box, {"--title", title, "--error", text}, std::move(environment));
        const auto box = FindProgram("xmessage", environment);
        return !box.empty() && StartDetached(box, {"-center", "-title", title, text}, std::move(environment));
    } catch (...) { // no memory
        return false;
    }
}

bool ErrorBoxWaits() noexcept {
    return false;
}

} // namespace KAV::Platform
