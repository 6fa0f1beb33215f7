#include "tests/support/display.h"

#include <gtest/gtest.h>

#if defined(_WIN32)

namespace KAV::Tests {

CDisplay::CDisplay(const char*, const char*) {
    EXPECT_EQ(_server, -1);
}
CDisplay::~CDisplay() = default;
void CDisplay::Kill() {}

} // namespace KAV::Tests

#else

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Tests {

CDisplay::CDisplay(const char* without, const char* screen) {
    int tell[2] = {-1, -1};
    if (pipe(tell) != 0) return;
    _server = fork();
    if (_server == 0) {
        close(tell[0]);
        prctl(PR_SET_PDEATHSIG, SIGKILL); // a test that crashes leaves no server, not even a stopped one
        // The server takes the first free number and writes it there once it accepts connections. Without
        // -noreset it restarts, and is briefly unavailable, each time its last client disconnects.
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(tell[1]).c_str(), "-screen", "0", screen,
            "-noreset", "-nolisten", "tcp", without != nullptr ? "-extension" : nullptr, without,
            static_cast<char*>(nullptr));
        _exit(127);
    }
    close(tell[1]);
    std::string number;
    for (char digit = 0; read(tell[0], &digit, 1) == 1 && digit != '\n';) number += digit;
    close(tell[0]);
    EXPECT_FALSE(number.empty()) << "Xvfb did not start";
    _number = number;
    setenv("DISPLAY", (":" + number).c_str(), 1);
}

void CDisplay::Kill() {
    kill(_server, SIGKILL);
    waitpid(_server, nullptr, 0);
    _server = -1;
    // A server takes the first number whose socket is free.
    const auto name = "/tmp/.X11-unix/X" + _number;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(name.begin(), name.end(), address.sun_path + 1); // a name that begins with 0 is no file
    _held = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    EXPECT_EQ(bind(_held, reinterpret_cast<const sockaddr*>(&address), size), 0);
}

CDisplay::~CDisplay() {
    if (_held >= 0) close(_held);
    if (_server < 0) return;
    kill(_server, SIGTERM);
    waitpid(_server, nullptr, 0);
}

} // namespace KAV::Tests

#endif
