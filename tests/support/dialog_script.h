#pragma once

#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>

namespace KAV::Tests {

/// Waits until `condition` holds; false if that takes longer than any machine needs.
template<typename Condition>
bool Eventually(const Condition& condition) {
    for (int n = 0; n < 6000; ++n) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

/// A desktop without a session bus, whose programs are scripts: those of Put(), and no others. Each object
/// has a folder of its own, because a dialog that was ended may still be starting its program.
class CDialogScripts final {
public:
    CDialogScripts() {
        std::filesystem::create_directories(_folder);
        setenv("PATH", _folder.c_str(), 1);
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
        unsetenv("XDG_RUNTIME_DIR");
        unsetenv("KAV_FILE_DIALOG");
    }
    ~CDialogScripts() { setenv("PATH", _path.c_str(), 1); }
    CDialogScripts(const CDialogScripts&) = delete;
    CDialogScripts& operator=(const CDialogScripts&) = delete;

    /// A program that records its arguments, one a line, and its process number, and then does `rest`.
    void Put(const std::string& name, const std::string& rest) const {
        const auto said = "'" + Said(name).string() + "'";
        const auto number = "'" + (_folder / (name + ".number")).string() + "'";
        WriteText(_folder / name, "#!/bin/sh\nfor a; do echo \"$a\"; done >" + said + "\necho $$ >" + number +
                                      ".new\n/bin/mv " + number + ".new " + number + "\n" + rest + "\n");
        chmod((_folder / name).c_str(), 0755);
    }
    /// Whether the program was started.
    bool WasRun(const std::string& name) const { return std::filesystem::exists(Said(name)); }
    std::string Arguments(const std::string& name) const { return ReadText(Said(name)); }
    /// Its process number, once it has started.
    pid_t Process(const std::string& name) const {
        const auto file = _folder / (name + ".number");
        Eventually([&] { return std::filesystem::exists(file); });
        return static_cast<pid_t>(std::atoi(ReadText(file).c_str()));
    }
    const std::filesystem::path& Folder() const noexcept { return _folder; }

private:
    std::filesystem::path Said(const std::string& name) const { return _folder / (name + ".said"); }

    std::string _path = std::getenv("PATH");
    std::filesystem::path _folder = ScratchFolder() / ("programs-" + std::to_string(++_count));

    static inline int _count = 0;
};

} // namespace KAV::Tests
