#include "platform/terminal.h"

#include <unistd.h>

namespace KAV::Platform {

void PrepareTerminal() noexcept {} // terminals accept UTF-8 as it is

bool ErrorStreamIsTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

} // namespace KAV::Platform
