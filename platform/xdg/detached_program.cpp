#include "platform/xdg/detached_program.h"

#include "platform/quiet_signals.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <sched.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace KAV::Platform {

namespace {

/// The environment without the variables that the host may have set for loading its own libraries.
std::vector<char*> Environment() {
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (std::strncmp(*variable, "LD_", 3) != 0) variables.push_back(*variable);
    }
    variables.push_back(nullptr);
    return variables;
}

/// Everything that is needed to start a process.
struct SLaunch {
    std::string program;
    std::vector<std::string> texts; // the program's arguments
    std::vector<char*> environment;
    std::vector<char*> arguments; // the program and its arguments, ended by null
};

/// The standard streams are /dev/null, and no other descriptor of the host is inherited.
class CNoDescriptors final {
public:
    CNoDescriptors() noexcept
        : _ready(posix_spawn_file_actions_init(&_actions) == 0),
          _complete(_ready && posix_spawn_file_actions_addopen(&_actions, 0, "/dev/null", O_RDWR, 0) == 0 &&
                    posix_spawn_file_actions_adddup2(&_actions, 0, 1) == 0 &&
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

/// The process number of the new program; -1 when it can't be started. Unlike fork(), this doesn't
/// write-protect the host's memory to share it with a copy. That would cost the audio thread a page fault
/// for each page that it writes next.
pid_t Spawn(const SLaunch& launch) noexcept {
    const CNoDescriptors descriptors;
    const CNoSignals signals;
    if (descriptors.Get() == nullptr || signals.Get() == nullptr) return -1;
    pid_t program = -1;
    const int error = posix_spawn(&program, launch.program.c_str(), descriptors.Get(), signals.Get(),
        launch.arguments.data(), launch.environment.data());
    return error == 0 ? program : -1;
}

/// Gives up a raised priority that this thread may have inherited from the one that started it, so that the
/// programs it starts don't inherit it in turn.
void TakeOrdinaryPriority() noexcept {
    const sched_param ordinary{};
    sched_setscheduler(0, SCHED_OTHER, &ordinary);
    if (getpriority(PRIO_PROCESS, 0) < 0) setpriority(PRIO_PROCESS, 0, 0); // on Linux this is the thread's
}

/// Waits for the end of one program and for no other child, because those are the host's. If the host ignores
/// its children or waits for all of them, there is nothing left to wait for.
void Reap(pid_t program) noexcept {
    while (waitpid(program, nullptr, 0) < 0 && errno == EINTR) {}
}

/// Starts the program from a new thread, which stays until the program ends: a program whose parent doesn't
/// wait for it would remain as a zombie.
bool Start(const SLaunch& launch) {
    std::promise<bool> promise;
    auto started = promise.get_future();
    const CQuietSignals quiet;
    std::thread([&launch, promise = std::move(promise)]() mutable {
        TakeOrdinaryPriority();
        const pid_t program = Spawn(launch);
        promise.set_value(program > 0); // `launch` must not be used after this
        if (program > 0) Reap(program);
    }).detach();
    return started.get();
}

} // namespace

std::string FindProgram(std::string_view name) {
    const char* const variable = std::getenv("PATH");
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

bool StartDetached(const std::string& program, std::vector<std::string> arguments) {
    SLaunch launch{program, std::move(arguments), Environment(), {}};
    launch.arguments.push_back(launch.program.data());
    for (auto& text : launch.texts) launch.arguments.push_back(text.data());
    launch.arguments.push_back(nullptr);
    return Start(launch);
}

} // namespace KAV::Platform
