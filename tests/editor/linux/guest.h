#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace KAV::Tests {

/// The guest program, which opens an editor in a window of the test.
class CGuest final {
public:
    /// What it prints goes to `output`, if there is one.
    CGuest(xcb_window_t parent, const std::string& mode, const std::string& output = {},
        const char* library = KAV_PLUGIN_PATH) {
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        if (!output.empty())
            posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
        const std::string window = std::to_string(parent);
        const char* const arguments[] = {KAV_EDITOR_GUEST, library, window.c_str(), mode.c_str(), nullptr};
        EXPECT_EQ(posix_spawn(&_process, KAV_EDITOR_GUEST, &actions, nullptr,
                      const_cast<char* const*>(arguments), environ),
            0);
        posix_spawn_file_actions_destroy(&actions);
    }
    ~CGuest() {
        if (!_hasEnded) Kill();
    }
    CGuest(const CGuest&) = delete;
    CGuest& operator=(const CGuest&) = delete;

    bool HasEnded() {
        if (!_hasEnded) _hasEnded = waitpid(_process, &_status, WNOHANG) == _process;
        return _hasEnded;
    }
    pid_t Process() const noexcept { return _process; }
    void AskToEnd() { kill(_process, SIGTERM); }
    void Kill() {
        kill(_process, SIGKILL);
        _hasEnded = waitpid(_process, &_status, 0) == _process;
    }
    /// What it returned once it has ended; below 0: the signal that ended it.
    int Result() const { return WIFEXITED(_status) ? WEXITSTATUS(_status) : -WTERMSIG(_status); }

private:
    pid_t _process = -1;
    int _status = 0;
    bool _hasEnded = false;
};

/// A variable of the environment during its lifetime; without a value it isn't set.
class CVariable final {
public:
    CVariable(const char* name, const std::optional<std::string>& value) : _name(name) {
        if (const char* const before = std::getenv(name)) _before = before;
        Set(value);
    }
    ~CVariable() { Set(_before); }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    void Set(const std::optional<std::string>& value) {
        if (value) {
            setenv(_name, value->c_str(), 1);
        } else {
            unsetenv(_name);
        }
    }

    const char* _name;
    std::optional<std::string> _before;
};

} // namespace KAV::Tests
