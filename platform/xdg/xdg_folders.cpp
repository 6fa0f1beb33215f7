#include "platform/xdg/xdg_folders.h"

#include <array>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace KAV::Platform {

std::filesystem::path HomeFolder() {
    return HomeFolder(std::getenv("HOME"));
}

std::filesystem::path HomeFolder(const char* home) {
    if (home != nullptr && home[0] == '/') return home;
    std::array<char, 4096> texts{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr) return {};
    return found->pw_dir != nullptr && found->pw_dir[0] == '/' ? found->pw_dir : "";
}

std::filesystem::path ConfigurationFolder() {
    const char* const folder = std::getenv("XDG_CONFIG_HOME");
    if (folder != nullptr && folder[0] == '/') return folder;
    const auto home = HomeFolder();
    return home.empty() ? home : home / ".config";
}

} // namespace KAV::Platform
