#include "tools/kavhost/screen/virtual_display.h"

#include "tools/kavhost/base/errors.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Host {

namespace {

constexpr int StartMs = 30'000;

/// The program in the folders of PATH; empty if there is none.
std::string FindServer() {
    const char* const path = std::getenv("PATH");
    std::string_view folders = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const auto end = folders.find(':');
        auto program = std::string(folders.substr(0, end)).append("/Xvfb");
        if (access(program.c_str(), X_OK) == 0) return program;
        folders.remove_prefix(end == std::string_view::npos ? folders.size() : end + 1);
    }
    return {};
}

/// In the child: becomes the server. Only calls that are safe between fork() and exec().
[[noreturn]] void BecomeServer(char* const* arguments, pid_t parent) noexcept {
    prctl(PR_SET_PDEATHSIG, SIGTERM); // however kavhost ends, no server is left over
    if (getppid() != parent) _exit(127);
    setpgid(0, 0); // Ctrl-C is for kavhost, which then ends the server
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO); // its remarks about the keyboard
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_DFL);
    execv(arguments[0], arguments);
    _exit(127);
}

/// What the server writes once it accepts connections: the number of its display. Empty if it ends first.
std::string ReadNumber(int descriptor) {
    std::string number;
    for (;;) {
        pollfd waits{descriptor, POLLIN, 0};
        const int ready = poll(&waits, 1, StartMs);
        if (ready < 0 && errno == EINTR) continue;
        std::array<char, 16> bytes{};
        const auto count = ready > 0 ? read(descriptor, bytes.data(), bytes.size()) : 0;
        if (count <= 0) return {};
        number.append(bytes.data(), static_cast<std::size_t>(count));
        if (const auto end = number.find('\n'); end != std::string::npos) return number.substr(0, end);
    }
}

} // namespace

CVirtualDisplay::CVirtualDisplay(int width, int height) {
    auto program = FindServer();
    if (program.empty()) throw CFailure("there is no display: DISPLAY is not set, and Xvfb is not installed");
    int tell[2] = {};
    if (pipe(tell) != 0) throw CFailure("Xvfb cannot be started");
    fcntl(tell[0], F_SETFD, FD_CLOEXEC);
    // The server takes the first free number. Without -noreset it would start anew when its last client left.
    std::array<std::string, 10> texts{program, "-displayfd", std::to_string(tell[1]), "-screen", "0",
        std::to_string(width) + "x" + std::to_string(height) + "x24", "-noreset", "-nolisten", "tcp",
        "-nocursor"};
    std::array<char*, texts.size() + 1> arguments{};
    for (std::size_t i = 0; i < texts.size(); ++i) arguments[i] = texts[i].data();
    const pid_t parent = getpid();
    _server = fork();
    if (_server == 0) BecomeServer(arguments.data(), parent);
    close(tell[1]);
    const auto number = _server > 0 ? ReadNumber(tell[0]) : std::string();
    close(tell[0]);
    if (!number.empty()) {
        _name = ":" + number;
        return;
    }
    if (_server > 0) {
        kill(_server, SIGKILL);
        waitpid(_server, nullptr, 0);
    }
    throw CFailure("Xvfb does not start");
}

CVirtualDisplay::~CVirtualDisplay() {
    kill(_server, SIGTERM);
    while (waitpid(_server, nullptr, 0) < 0 && errno == EINTR) {}
}

} // namespace KAV::Host
