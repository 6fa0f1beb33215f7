#include "platform/xdg/spawned_program.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace KAV::Platform {

namespace {

/// The standard streams are /dev/null, but for the output if there is a descriptor for it. No other
/// descriptor of the host is inherited.
class CNoDescriptors final {
public:
    explicit CNoDescriptors(int output) noexcept
        : _ready(posix_spawn_file_actions_init(&_actions) == 0),
          _complete(_ready && posix_spawn_file_actions_addopen(&_actions, 0, "/dev/null", O_RDWR, 0) == 0 &&
                    posix_spawn_file_actions_adddup2(&_actions, output < 0 ? 0 : output, 1) == 0 &&
                    posix_spawn_file_actions_adddup2(&_actions, 0, 2) == 0 &&
                    posix_spawn_file_actions_addclosefrom_np(&_actions, 3) == 0) {}
    ~CNoDescriptors() {
        if (_ready) posix_spawn_file_actions_destroy(&_actions);
    }
    CNoDescriptors(const CNoDescriptors&) = delete;
    CNoDescriptors& operator=(const CNoDescriptors&) = delete;
    const posix_spawn_file_actions_t* Get() const noexcept { return _complete ? &_actions : nullptr; }

private:
    posix_spawn_file_actions_t _actions{};
    bool _ready;
    bool _complete;
};

/// Its own session, and every signal as a new program expects it.
class CNoSignals final {
public:
    CNoSignals() noexcept : _ready(posix_spawnattr_init(&_attributes) == 0) {
        // sigfillset() would leave out the two signals that the C library reserves, and the program would
        // start with those ignored.
        sigset_t all;
        std::memset(&all, 0xFF, sizeof(all));
        sigset_t none;
        sigemptyset(&none);
        _complete = _ready && posix_spawnattr_setsigdefault(&_attributes, &all) == 0 &&
                    posix_spawnattr_setsigmask(&_attributes, &none) == 0 &&
                    posix_spawnattr_setflags(&_attributes,
                        POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK) == 0;
    }
    ~CNoSignals() {
        if (_ready) posix_spawnattr_destroy(&_attributes);
    }
    CNoSignals(const CNoSignals&) = delete;
    CNoSignals& operator=(const CNoSignals&) = delete;
    const posix_spawnattr_t* Get() const noexcept { return _complete ? &_attributes : nullptr; }

private:
    posix_spawnattr_t _attributes{};
    bool _ready;
    bool _complete = false;
};

} // namespace

std::string FindProgram(std::string_view name, const CEnvironment& environment) {
    const char* const variable = environment.Value("PATH");
    std::string_view folders = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const auto end = folders.find(':');
        const auto folder = folders.substr(0, end);
        folders.remove_prefix(end == std::string_view::npos ? folders.size() : end + 1);
        if (!folder.starts_with('/')) continue; // relative to whatever folder the host happens to be in
        auto program = std::string(folder).append("/").append(name);
        if (access(program.c_str(), X_OK) == 0) return program;
    }
    return {};
}

pid_t SpawnProgram(
    const std::string& program, std::vector<std::string> arguments, CEnvironment environment, int output) {
    const auto variables = environment.ForProgram();
    std::string path = program;
    std::vector<char*> texts{path.data()};
    for (auto& argument : arguments) texts.push_back(argument.data());
    texts.push_back(nullptr);
    const CNoDescriptors descriptors(output);
    const CNoSignals signals;
    if (descriptors.Get() == nullptr || signals.Get() == nullptr) return -1;
    // Unlike fork(), this doesn't write-protect the host's memory to share it with a copy. That would cost
    // the audio thread a page fault for each page that it writes next.
    pid_t started = -1;
    const int error =
        posix_spawn(&started, path.c_str(), descriptors.Get(), signals.Get(), texts.data(), variables.data());
    return error == 0 ? started : -1;
}

void TakeOrdinaryPriority() noexcept {
    const sched_param ordinary{};
    sched_setscheduler(0, SCHED_OTHER, &ordinary);
    if (getpriority(PRIO_PROCESS, 0) < 0) setpriority(PRIO_PROCESS, 0, 0); // on Linux this is the thread's
}

int Reap(pid_t program) noexcept {
    int status = -1;
    pid_t ended = -1;
    do {
        ended = waitpid(program, &status, 0);
    } while (ended < 0 && errno == EINTR);
    // A host that ignores its children, or waits for all of them, leaves nothing to wait for.
    return ended == program ? status : -1;
}

} // namespace KAV::Platform
