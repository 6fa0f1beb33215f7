#include "tools/kavhost/editor/scratch_settings.h"

#include "tools/kavhost/base/errors.h"

#include <cstdlib>
#include <string>
#include <system_error>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

constexpr const char* Variable = "XDG_CONFIG_HOME";

fs::path UsersFolder() {
    if (const char* const folder = std::getenv(Variable); folder != nullptr && fs::path(folder).is_absolute())
        return folder;
    const char* const home = std::getenv("HOME");
    return home != nullptr ? fs::path(home) / ".config" : fs::path();
}

} // namespace

CScratchSettings::CScratchSettings() {
    std::error_code error;
    auto name = (fs::temp_directory_path(error) / "kavhost-XXXXXX").string();
    if (error || mkdtemp(name.data()) == nullptr) throw CFailure("no temporary folder can be created");
    _name = name;
    // It says where the user's documents are.
    if (const auto folders = UsersFolder() / "user-dirs.dirs"; fs::exists(folders, error))
        fs::create_symlink(folders, _name / folders.filename(), error);
    setenv(Variable, name.c_str(), 1); // NOLINT(concurrency-mt-unsafe): there is no other thread yet
}

CScratchSettings::~CScratchSettings() {
    std::error_code ignored;
    fs::remove_all(_name, ignored);
}

} // namespace KAV::Host
