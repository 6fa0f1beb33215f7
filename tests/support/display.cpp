#include "tests/support/display.h"

#include <gtest/gtest.h>

#if defined(_WIN32)

namespace KAV::Tests {

CDisplay::CDisplay(const char*) {
    EXPECT_EQ(_server, -1);
}
CDisplay::~CDisplay() = default;

} // namespace KAV::Tests

#else

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KAV::Tests {

CDisplay::CDisplay(const char* without) {
    int tell[2] = {-1, -1};
    if (pipe(tell) != 0) return;
    _server = fork();
    if (_server == 0) {
        close(tell[0]);
        prctl(PR_SET_PDEATHSIG, SIGKILL); // a test that crashes leaves no server, not even a stopped one
        // The server takes the first free number and writes it there once it accepts connections. Without
        // -noreset it restarts, and is briefly unavailable, each time its last client disconnects.
        execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(tell[1]).c_str(), "-screen", "0", "1280x720x24",
            "-noreset", "-nolisten", "tcp", without != nullptr ? "-extension" : nullptr, without,
            static_cast<char*>(nullptr));
        _exit(127);
    }
    close(tell[1]);
    std::string number;
    for (char digit = 0; read(tell[0], &digit, 1) == 1 && digit != '\n';) number += digit;
    close(tell[0]);
    EXPECT_FALSE(number.empty()) << "Xvfb did not start";
    setenv("DISPLAY", (":" + number).c_str(), 1);
}

CDisplay::~CDisplay() {
    kill(_server, SIGTERM);
    waitpid(_server, nullptr, 0);
}

} // namespace KAV::Tests

#endif
