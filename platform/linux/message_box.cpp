#include "platform/message_box.h"

#include "platform/xdg/detached_program.h"

#include <cstdlib>
#include <vector>

namespace KAV::Platform {

namespace {

bool HasDisplay() noexcept {
    const auto isSet = [](const char* name) {
        const char* const value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

} // namespace

bool ShowErrorBox(const std::string& title, const std::string& text) noexcept {
    try {
        if (!HasDisplay()) return false;
        // The first program that is installed: for GNOME and its relatives, for KDE, for any X server.
        if (const auto box = FindProgram("zenity"); !box.empty())
            return StartDetached(box, {"--error", "--no-markup", "--title=" + title, "--text=" + text});
        if (const auto box = FindProgram("kdialog"); !box.empty())
            return StartDetached(box, {"--title", title, "--error", text});
        const auto box = FindProgram("xmessage");
        return !box.empty() && StartDetached(box, {"-center", "-title", title, text});
    } catch (...) { // no memory
        return false;
    }
}

bool ErrorBoxWaits() noexcept {
    return false;
}

} // namespace KAV::Platform
