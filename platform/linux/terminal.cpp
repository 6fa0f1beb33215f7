#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace KAV::Platform {

namespace {

constexpr int UsualColumns = 80; // of a terminal that doesn't know its size

}

void PrepareTerminal() noexcept {} // terminals accept UTF-8 as it is

int ErrorStreamColumns() noexcept {
    if (isatty(STDERR_FILENO) != 1) return 0;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : UsualColumns;
}

bool OutputStreamIsTerminal() noexcept {
    return isatty(STDOUT_FILENO) == 1;
}

} // namespace KAV::Platform
