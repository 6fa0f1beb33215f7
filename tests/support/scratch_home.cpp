#include "tests/support/scratch_home.h"

#include <cstdlib>
#include <random>
#include <string>

namespace KAV::Tests {

namespace {

void SetVariable(const char* name, const std::filesystem::path& value) {
#if defined(_WIN32)
    _putenv_s(name, value.string().c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

} // namespace

CScratchHome::CScratchHome() {
    const auto base = std::filesystem::temp_directory_path();
    std::random_device random;
    do {
        _folder = base / ("kav-test-" + std::to_string(random()) + std::to_string(random()));
    } while (!std::filesystem::create_directories(_folder));
    for (const char* folder : {"home", "config", "data", "cache", "state", "tmp"}) {
        std::filesystem::create_directory(_folder / folder);
    }
    for (const char* name : {"HOME", "USERPROFILE"}) SetVariable(name, _folder / "home");
    for (const char* name : {"TMPDIR", "TEMP", "TMP"}) SetVariable(name, _folder / "tmp");
    SetVariable("XDG_CONFIG_HOME", _folder / "config");
    SetVariable("APPDATA", _folder / "config");
    SetVariable("XDG_DATA_HOME", _folder / "data");
    SetVariable("LOCALAPPDATA", _folder / "data");
    SetVariable("XDG_CACHE_HOME", _folder / "cache");
    SetVariable("XDG_STATE_HOME", _folder / "state");
}

CScratchHome::~CScratchHome() {
    std::error_code ignored; // a leftover in the temporary folder isn't a failure
    std::filesystem::remove_all(_folder, ignored);
}

std::filesystem::path ScratchFolder() {
    auto folder = std::filesystem::temp_directory_path() / "files";
    std::filesystem::create_directories(folder);
    return folder;
}

} // namespace KAV::Tests
