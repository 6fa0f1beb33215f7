#include "platform/xdg/detached_program.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace KAV::Platform {

namespace {

/// The environment without what the host may have set for the loader of its own libraries.
std::vector<char*> Environment() {
    std::vector<char*> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        if (std::strncmp(*variable, "LD_", 3) != 0) variables.push_back(*variable);
    }
    variables.push_back(nullptr);
    return variables;
}

/// All that the new process needs, made before it exists: a copy of a process with threads may not allocate.
struct SLaunch {
    std::string program;
    std::vector<std::string> texts; // the program's arguments
    std::vector<char*> environment;
    std::vector<char*> arguments; // the program and its arguments, ended by null
};

/// The descriptor by which the new process tells why it failed: the first one behind the standard ones.
constexpr int Report = 3;

/// Leaves nothing of the host behind: terminal, descriptors, signals, priority. Calls only what is allowed
/// between fork() and exec().
void ForgetHost(int report) noexcept {
    const int kept = fcntl(report, F_DUPFD, Report); // it may be a standard one that the host has closed
    setsid(); // NOLINT(concurrency-mt-unsafe): a copy of a process has one thread
    const int nothing = open("/dev/null", O_RDWR);
    for (int standard = 0; standard < 3; ++standard) dup2(nothing, standard);
    if (kept != Report) dup2(kept, Report);
    fcntl(Report, F_SETFD, FD_CLOEXEC);
    closefrom(Report + 1);
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    const sched_param ordinary{};
    sched_setscheduler(0, SCHED_OTHER, &ordinary);
    if (getpriority(PRIO_PROCESS, 0) < 0) setpriority(PRIO_PROCESS, 0, 0);
}

/// In a copy of the host's process: starts the program in a process of its own that nobody waits for.
[[noreturn]] void Detach(const SLaunch& launch, int report) noexcept {
    ForgetHost(report);
    const pid_t child = fork();
    if (child == 0) {
        execve(launch.program.c_str(), launch.arguments.data(), launch.environment.data());
    }
    if (child <= 0) {
        const int error = errno;
        if (write(Report, &error, sizeof(error)) != sizeof(error)) _exit(2);
    }
    _exit(child > 0 ? 0 : 1);
}

/// True when the program runs: its image has replaced ours, which closed the pipe with nothing in it.
bool Start(const SLaunch& launch) noexcept {
    std::array<int, 2> pipe{-1, -1};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) return false;
    const pid_t copy = fork();
    if (copy == 0) Detach(launch, pipe[1]);
    close(pipe[1]);
    bool started = false;
    if (copy > 0) {
        int error = 0;
        ssize_t length = 0;
        do length = read(pipe[0], &error, sizeof(error));
        while (length < 0 && errno == EINTR);
        started = length == 0;
        // Its own copy ends at once and leaves no zombie. A host that ignores its children has none to wait
        // for.
        while (waitpid(copy, nullptr, 0) < 0 && errno == EINTR) {}
    }
    close(pipe[0]);
    return started;
}

} // namespace

std::string FindProgram(std::string_view name) {
    const char* const variable = std::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const auto end = folders.find(':');
        const auto folder = folders.substr(0, end);
        folders.remove_prefix(end == std::string_view::npos ? folders.size() : end + 1);
        if (!folder.starts_with('/')) continue; // "here" is wherever the host happens to be
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
