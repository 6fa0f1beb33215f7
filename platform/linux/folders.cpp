#include "platform/folders.h"

#include "platform/shell_variable.h"
#include "platform/whole_file.h"
#include "platform/xdg/xdg_folders.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace KAV::Platform {

std::filesystem::path DocumentsFolder() {
    const auto home = HomeFolder();
    if (home.empty()) return {};
    const SBytes choices = ReadWholeFile(ConfigurationFolder() / "user-dirs.dirs");
    const auto chosen =
        ShellVariable(std::string_view(choices.data.get(), choices.size), "XDG_DOCUMENTS_DIR");
    constexpr std::string_view variable = "$HOME";
    std::filesystem::path folder = home / "Documents";
    if (chosen.starts_with('/')) {
        folder = chosen;
    } else if (chosen == variable || chosen.starts_with("$HOME/")) {
        folder = home.string() + chosen.substr(variable.size());
    }
    return folder.has_filename() || folder == folder.root_path() ? folder : folder.parent_path();
}

std::filesystem::path TemporaryFolder() {
    const char* const folder = std::getenv("TMPDIR");
    return folder != nullptr && folder[0] == '/' ? folder : "/tmp";
}

} // namespace KAV::Platform
