#include "platform/terminal.h"

#include <windows.h>

namespace KAV::Platform {

void PrepareTerminal() noexcept {
    SetConsoleOutputCP(CP_UTF8);
}

bool ErrorStreamIsTerminal() noexcept {
    DWORD mode = 0; // only a console has one; the null device counts as a character device, too
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace KAV::Platform
